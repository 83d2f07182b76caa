#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "measuring/measurement_observer.h"
#include "platform/main_queue.h"

namespace veyla {

/// Counts what happens in a measurement and when, and hands every estimate on to `trace`.
class MeasurementTally : public MeasurementObserver {
 public:
  /// One estimate with all its figures; a heart-rate one has a `heartrate`, an SpO2 one figures.
  struct Estimate {
    double seconds = 0;
    std::int32_t counter = 0;
    EstimateVerdict verdict{};
    const HeartrateResult* heartrate = nullptr;
    float spo2 = 0;
    const Spo2Figures* spo2Figures = nullptr;
  };

  explicit MeasurementTally(const MainQueue& queue) : queue_(queue) {}

  /// May be empty.
  std::function<void(const Estimate&)> trace;
  /// Called at the end of the measurement; may be empty.
  std::function<void()> ended;

  void frameStored(std::int32_t counter) override;
  void heartrateEstimated(std::int32_t counter, const HeartrateResult& result,
                          EstimateVerdict verdict) override;
  void spo2Estimated(std::int32_t counter, float spo2, const Spo2Figures& figures,
                     EstimateVerdict verdict) override;
  void measurementEnded(std::int32_t counter, MeasurementEnd end) override;

  const EstimateCounts& heartrateEstimates() const { return heartrateEstimates_; }
  const EstimateCounts& spo2Estimates() const { return spo2Estimates_; }
  /// From the first stored frame to the last, in the recording's time.
  double seconds() const { return firstFrame_ ? lastFrame_ - *firstFrame_ : 0; }
  /// From the first stored frame to the newest accepted estimate of each value.
  double heartrateSeconds() const { return heartrateSeconds_; }
  double spo2Seconds() const { return spo2Seconds_; }
  /// Nothing before the measurement has ended.
  std::optional<MeasurementEnd> end() const { return end_; }

 private:
  const MainQueue& queue_;
  EstimateCounts heartrateEstimates_;
  EstimateCounts spo2Estimates_;
  std::optional<double> firstFrame_;
  double lastFrame_ = 0;
  double heartrateSeconds_ = 0;
  double spo2Seconds_ = 0;
  std::optional<MeasurementEnd> end_;
};

}  // namespace veyla
