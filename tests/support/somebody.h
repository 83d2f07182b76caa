#pragma once

#include <string>
#include <vector>

#include "measuring/measurement_observer.h"
#include "tests/support/measuring_rig.h"

namespace veyla {

/// Somebody with a phone. What happens is written as words and seconds that pass, such as
/// "START 0.5 STOP 0.5 START 2.5 good*3".
class Somebody : private MeasurementObserver {
 public:
  Somebody();

  /// What is seen after it.
  std::string after(const std::string& happenings) {
    live(happenings);
    return rig.seen();
  }

  void live(const std::string& happenings);

  std::size_t entries() const;

  MeasuringRig rig;
  MainViewController& screen = rig.screen;
  ScriptedCamera& camera = rig.platform.camera;
  std::vector<MeasurementEnd> ends;

 private:
  void happen(const std::string& word);
  void measurementEnded(std::int32_t, MeasurementEnd end) override { ends.push_back(end); }
};

}  // namespace veyla
