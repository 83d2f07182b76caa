#include "benchmarks/tuning/replay.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "analysis/heartrate_processing.h"
#include "measuring/measurement.h"
#include "platform/capture.h"

namespace veyla::tuning {

namespace {

/// Frames of the countdown, which count but are not stored.
constexpr std::int32_t countdownFrames =
    Measurement::countdownSeconds * VideoDataOutput::framesPerSecond;
/// Accepted values behind the one shown.
constexpr std::size_t shownValues = 11;

std::int16_t binOf(const Estimate& estimate, int lowBin, const Thresholds& thresholds) {
  const Estimate::Bin* top = nullptr;
  for (const Estimate::Bin& bin : estimate.bins) {
    if (bin.index < lowBin) continue;
    if (!top) {
      top = &bin;
      if (!(top->strength > 0)) return rejected;
      continue;
    }
    const float diffPercent = (1.0F - bin.strength / top->strength) * 100.0F;
    if (diffPercent >= static_cast<float>(thresholds.validPercent)) {
      return static_cast<std::int16_t>(top->index);
    }
    if (std::abs(bin.index - top->index) > thresholds.maxDistance) return rejected;
  }
  return rejected;
}

float medianOf(std::span<const std::int16_t> bins) {
  std::array<std::int16_t, shownValues> sorted{};
  const auto end = std::copy(bins.begin(), bins.end(), sorted.begin());
  const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(bins.size() / 2);
  std::nth_element(sorted.begin(), middle, end);
  return HeartrateProcessing::calcBPM(*middle);
}

}  // namespace

std::vector<std::int16_t> judge(const Estimates& estimates, const Thresholds& thresholds) {
  const double bpmPerBin = static_cast<double>(HeartrateProcessing::calcBPM(1));
  const int lowBin = static_cast<int>(std::round(thresholds.minimumBpm / bpmPerBin));
  std::vector<std::int16_t> bins(estimates.perFrame.size());
  std::transform(estimates.perFrame.begin(), estimates.perFrame.end(), bins.begin(),
                 [&](const Estimate& estimate) { return binOf(estimate, lowBin, thresholds); });
  return bins;
}

void replay(const Estimates& estimates, std::span<const std::int16_t> bins, std::int32_t startFrame,
            std::int32_t lastCounter, int skip, std::span<const int> needed,
            std::vector<std::optional<Finish>>& finishes) {
  finishes.assign(needed.size(), std::nullopt);
  static thread_local std::vector<std::int16_t> accepted;
  accepted.clear();
  std::size_t next = 0;
  const std::int32_t first = (estimates.firstCounter + skip - 1) / skip * skip;
  for (std::int32_t counter = first; counter <= lastCounter; counter += skip) {
    const auto position = static_cast<std::size_t>(startFrame + counter - estimates.firstCounter);
    if (position >= bins.size()) return;
    if (bins[position] == rejected) continue;
    accepted.push_back(bins[position]);
    if (static_cast<int>(accepted.size()) != needed[next]) continue;
    const std::size_t shown = std::min(shownValues, accepted.size());
    finishes[next] = Finish{medianOf(std::span(accepted).last(shown)), counter - countdownFrames};
    if (++next == needed.size()) return;
  }
}

}  // namespace veyla::tuning
