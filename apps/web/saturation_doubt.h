#pragma once

#include "measuring/main_view_controller.h"
#include "measuring/measurement_observer.h"
#include "shell/alerts.h"

namespace veyla {

/// Tells whoever has measured with a camera that sees next to no blue light that the saturation on
/// the screen means nothing.
class SaturationDoubt : public MeasurementObserver {
 public:
  void measurementEnded(std::int32_t, MeasurementEnd end) override {
    const MainViewController& screen = MainViewController::instance();
    if (end != MeasurementEnd::finished || !screen.isSpo2Done()) return;
    if (!screen.spo2Processing()->lacksBlue()) return;
    Utils::showAlertWithTitle(
        "Do not rely on this SpO2 value",
        "This camera sees next to no blue light, without which the value says nothing about the "
        "blood. Untick SpO2 to measure the heart rate alone.",
        "warning");
  }
};

}  // namespace veyla
