#include "measuring/measurement.h"

#include <cmath>
#include <utility>

#include "analysis/vector_utils.h"

namespace veyla {

namespace {

constexpr std::size_t medianWindow = 11;
constexpr float lowestAcceptedSpo2 = 93.0F;
constexpr std::uint64_t lowSignalLimit = 60;
// A saturation may be missing once more often than a heart rate.
constexpr std::int32_t heartrateFailuresToBlank = 30;
constexpr std::int32_t spo2FailuresToBlank = 31;

float medianOfLast(const std::vector<float>& values, std::size_t count) {
  return static_cast<float>(VectorUtils::medianOf(VectorUtils::lastObjectsOf(values, count)));
}

}  // namespace

std::shared_ptr<Measurement> Measurement::accepted() {
  auto measurement = std::make_shared<Measurement>();
  measurement->isRunning = true;
  return measurement;
}

bool Measurement::end(MeasurementEnd how) {
  const bool ends = isUnderWay();
  if (ends) end_ = how;
  isDone = true;
  canBegin = false;
  isRunning = false;
  cameraWait.reset();
  return ends;
}

std::function<void()> Measurement::whileItLasts(std::function<void()> work) {
  return [weak = weak_from_this(), work = std::move(work)] {
    const auto measurement = weak.lock();
    if (measurement && !measurement->hasEnded()) work();
  };
}

EstimateVerdict Measurement::judgeHeartrate(const HeartrateResult& result, int validPercent) {
  if (result.diffPercent >= static_cast<float>(validPercent)) {
    failedHeartratesCounter = 0;
    return EstimateVerdict::accepted;
  }
  if (!isHeartrateDone) ++failedHeartratesCounter;
  return std::isnan(result.diffPercent) ? EstimateVerdict::none : EstimateVerdict::rejected;
}

EstimateVerdict Measurement::judgeSpo2(float spo2) {
  if (spo2 >= lowestAcceptedSpo2) {
    framesWhereLowSig = 0;
    failedSpo2Counter = 0;
    return EstimateVerdict::accepted;
  }
  if (spo2 > 0) {
    ++framesWhereLowSig;
    return EstimateVerdict::low;
  }
  // A not-a-number counts for nothing.
  if (spo2 <= 0) ++failedSpo2Counter;
  return EstimateVerdict::none;
}

bool Measurement::hasLostHeartrate() const {
  return failedHeartratesCounter >= heartrateFailuresToBlank;
}

bool Measurement::hasLostSpo2() const { return failedSpo2Counter >= spo2FailuresToBlank; }

bool Measurement::hasLowSignal() const { return framesWhereLowSig >= lowSignalLimit; }

float Measurement::runningMedian(const std::vector<float>& accepted) {
  return medianOfLast(accepted, medianWindow);
}

void Measurement::finishHeartrate(const std::vector<float>& accepted) {
  isHeartrateDone = true;
  finalHeartrate = runningMedian(accepted);
}

void Measurement::finishSpo2(const std::vector<float>& accepted) {
  isSpo2Done = true;
  finalSpo2 = medianOfLast(accepted, accepted.size());
}

}  // namespace veyla
