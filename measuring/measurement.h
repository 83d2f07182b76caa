#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "acquisition/heartrate_result.h"
#include "measuring/measurement_observer.h"

namespace veyla {

/// One measurement, from an accepted START to its only end: what it has counted and found, and what
/// waits for it. It judges estimates and shows nothing.
class Measurement : public std::enable_shared_from_this<Measurement> {
 public:
  static constexpr std::int32_t countdownSeconds = 2;

  /// Before the first START there is one that does not run and never ends.
  Measurement() = default;
  static std::shared_ptr<Measurement> accepted();

  // Its state, which the screen lets others set.

  /// From START on until it ends; where the camera did not start, until STOP, the background,
  /// another screen or the next START.
  bool isRunning = false;
  bool canBegin = false;
  bool isDone = false;
  bool isHeartrateDone = false;
  bool isSpo2Done = false;
  float finalHeartrate = 0;
  float finalSpo2 = 0;
  std::int32_t failedHeartratesCounter = 0;
  std::int32_t failedSpo2Counter = 0;
  std::int32_t countDown = countdownSeconds;
  std::uint64_t framesWhereLowSig = 0;
  /// Finished, and stored as an entry of the history.
  bool isKept = false;

  // Its life.

  /// It runs and has not ended. A camera that did not start is an end, too.
  bool isUnderWay() const { return isRunning && !hasEnded(); }
  bool hasEnded() const { return end_.has_value(); }
  bool takesFrames() const { return canBegin && !isDone; }
  /// Nothing before its end.
  std::optional<MeasurementEnd> howEnded() const { return end_; }

  /// It stops, by the first `how` alone; false when it had ended before or never ran.
  bool end(MeasurementEnd how);
  /// The camera did not start. The state stays as it is: STOP is shown, and leads back to START.
  void fail() { end_ = MeasurementEnd::failed; }

  /// `work` for later, which belongs to this measurement: nothing happens once that has ended or
  /// gone.
  std::function<void()> whileItLasts(std::function<void()> work);

  /// The wait for the camera to open, given up at the end.
  std::shared_ptr<void> cameraWait;
  /// The number of the alert that stands for its countdown; nothing without one.
  std::optional<int> startingAlert;
  /// An interruption has brought START back in place of STOP, although the measurement goes on.
  bool isInterrupted = false;

  // What becomes of estimates.

  /// `validPercent` is what the `diffPercent` of an accepted one reaches.
  EstimateVerdict judgeHeartrate(const HeartrateResult& result, int validPercent);
  EstimateVerdict judgeSpo2(float spo2);
  /// So many estimates have failed that a value from before them is not shown any more.
  bool hasLostHeartrate() const;
  bool hasLostSpo2() const;
  /// So many saturations were too low that it must end.
  bool hasLowSignal() const;

  /// What is shown of the accepted values so far.
  static float runningMedian(const std::vector<float>& accepted);
  /// The value is final: for the heart rate the running one, for the saturation the median of all.
  void finishHeartrate(const std::vector<float>& accepted);
  void finishSpo2(const std::vector<float>& accepted);

 private:
  std::optional<MeasurementEnd> end_;
};

}  // namespace veyla
