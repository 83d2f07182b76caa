#pragma once

#include <string>
#include <vector>

#include "measuring/main_view_controller.h"
#include "measuring/measurement_observer.h"
#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {

/// The measuring screen on a test platform, with settings under which every second frame asks each
/// estimator for a value that the test chooses.
class MeasuringRig {
 public:
  MeasuringRig();

  TestPlatform platform;
  MainViewController& screen = MainViewController::instance();

  /// Replaces single settings.
  void heartrateSetting(const char* key, Value value);
  void spo2Setting(const char* key, Value value);

  /// Loads the screen and shows it.
  void appear();
  /// Taps START and lets the countdown run out; the journal and the log begin anew after it.
  void startMeasuring();

  /// The frame source delivers one frame.
  void frame(FrameSample sample = lowFrame);
  void frames(int count, FrameSample sample = lowFrame);

  /// The next heart-rate estimates give the beats per minute of this bin, clear of rivals; or
  /// are rejected.
  void heartrateBin(std::size_t bin) { platform.fft.peaks = {{bin, 1}}; }
  void heartrateAmbiguous() { platform.fft.peaks = {{80, 1}, {200, 1}}; }

  /// Two frames, at whose second the SpO2 estimate is this (0: no value). The heart rate is
  /// estimated there too.
  void spo2(float percent);

  /// What a person sees, from the buttons to the alerts in front, such as "START | Tap START to
  /// begin
  /// - don't cover camera | last 70 -- | now -- -- | dials 50 93, rings 0 0 | checkboxes". What
  /// comes or goes has its animation behind it, a final value a "=" before it.
  std::string seen() const;

  /// A trough of the pulse; at the crest that gives a saturation, red is higher by what the
  /// saturation falls short of 100.
  static constexpr FrameSample lowFrame{100, 80, 40, 100};

 private:
  Value::Dictionary heartrateSettings_;
  Value::Dictionary spo2Settings_;
};

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
