#pragma once

#include <emscripten/val.h>

#include <cstdint>
#include <string>
#include <utility>

#include "measuring/measurement_observer.h"

namespace veyla {

/// Tells the page when a measurement begins and how it ends, to be heard and felt there.
class PageEnding : public MeasurementObserver {
 public:
  /// `page` answers `measurementBegan()`, and `measurementEnded(end)` with "finished", "failed" for
  /// what the user did not want, or "".
  explicit PageEnding(emscripten::val page) : page_(std::move(page)) {}

  void measurementBegan() override { page_.call<void>("measurementBegan"); }

  void measurementEnded(std::int32_t /*counter*/, MeasurementEnd end) override {
    page_.call<void>("measurementEnded", std::string(nameOf(end)));
  }

 private:
  static const char* nameOf(MeasurementEnd end) {
    switch (end) {
      case MeasurementEnd::finished:
        return "finished";
      case MeasurementEnd::lowSignal:
      case MeasurementEnd::cameraLost:
      case MeasurementEnd::refused:
      case MeasurementEnd::failed:
        return "failed";
      case MeasurementEnd::stopped:
      case MeasurementEnd::background:
      case MeasurementEnd::left:
      case MeasurementEnd::replaced:
        return "";
    }
    return "";
  }

  emscripten::val page_;
};

}  // namespace veyla
