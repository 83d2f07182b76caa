#include "apps/cli/measurement_tally.h"

namespace veyla {

void MeasurementTally::frameStored(std::int32_t /*counter*/) {
  lastFrame_ = queue_.elapsed();
  if (!firstFrame_) firstFrame_ = lastFrame_;
}

void MeasurementTally::heartrateEstimated(std::int32_t counter, const HeartrateResult& result,
                                          EstimateVerdict verdict) {
  heartrateEstimates_.add(verdict);
  if (verdict == EstimateVerdict::accepted) heartrateSeconds_ = seconds();
  if (trace) {
    trace({.seconds = seconds(), .counter = counter, .verdict = verdict, .heartrate = &result});
  }
}

void MeasurementTally::spo2Estimated(std::int32_t counter, float spo2, const Spo2Figures& figures,
                                     EstimateVerdict verdict) {
  spo2Estimates_.add(verdict);
  if (verdict == EstimateVerdict::accepted) spo2Seconds_ = seconds();
  if (trace) {
    trace({.seconds = seconds(),
           .counter = counter,
           .verdict = verdict,
           .spo2 = spo2,
           .spo2Figures = &figures});
  }
}

void MeasurementTally::measurementEnded(std::int32_t /*counter*/, MeasurementEnd end) {
  end_ = end;
  if (ended) ended();
}

}  // namespace veyla
