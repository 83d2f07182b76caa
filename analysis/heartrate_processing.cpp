#include "analysis/heartrate_processing.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>

#include "acquisition/settings.h"
#include "analysis/vector_utils.h"
#include "platform/capture.h"
#include "platform/platform.h"

namespace veyla {

namespace {

constexpr std::size_t binCount = RealFft::binCount;
/// A transform takes twice as many frames as it has bins.
constexpr double bpmPerBin = VideoDataOutput::framesPerSecond * 60.0 / (2.0 * binCount);

/// Bins that span 180 beats per minute.
constexpr std::size_t reportedBins = 205;

/// Magnitudes are reported on the scale of a transform that doubles (2), followed by an unscaled
/// inverse and forward pair over twice its length (2048). The pair changes nothing but the scale,
/// so only the scale is applied.
constexpr double magnitudeScale = 2.0 * 2048.0;

/// No magnitude above this is taken for the smallest one.
constexpr float largestMinimum = 10000.0F;

/// Weakest first; a not-a-number is weaker than everything.
bool weaker(const FFTValue& a, const FFTValue& b) {
  if (std::isnan(a.value) || std::isnan(b.value)) {
    return std::isnan(a.value) && !std::isnan(b.value);
  }
  return a.value < b.value;
}

/// Walks from the strongest bin down past the rivals that belong to the same peak, and returns by
/// how many per cent the first one that does not falls short of the top. Reorders `bins`.
float distanceToRival(std::span<FFTValue> bins, const FFTValue& top, int validPercent,
                      int maxDistance) {
  // Few steps are usual, so the bins are not sorted: a heap yields the next strongest one at a
  // time.
  float diffPercent = 0;
  for (auto remaining = bins.end(); remaining != bins.begin(); --remaining) {
    std::pop_heap(bins.begin(), remaining, weaker);
    const FFTValue& current = *(remaining - 1);
    if (current.index == top.index) continue;

    diffPercent = (1.0F - current.value / top.value) * 100.0F;
    const std::int64_t diffIndex = std::abs(current.index - top.index);
    logLine(
        "diffPercent: %.2f, diffIndex: %li, maxIndex: %li, curIndex: %li, maxValue: %f, "
        "currValue: %f",
        static_cast<double>(diffPercent), static_cast<long>(diffIndex),
        static_cast<long>(top.index), static_cast<long>(current.index),
        static_cast<double>(top.value), static_cast<double>(current.value));
    const bool samePeak =
        diffPercent < static_cast<float>(validPercent) && diffIndex <= maxDistance;
    if (!samePeak) break;
  }
  return diffPercent;
}

}  // namespace

HeartrateProcessing& HeartrateProcessing::instance() {
  return Platform::current().shared<HeartrateProcessing>();
}

HeartrateProcessing::HeartrateProcessing()
    : buffers_(std::make_unique<Buffers>()),
      data_(&Data::instance()),
      spo2Processing_(&Spo2Processing::instance()) {
  const std::string profile = Utils::platformString();
  usingIphone4or4s_ = profile == "iphone4" || profile == "iphone4s";
}

HeartrateResult HeartrateProcessing::calculateHeartrate() {
  const int rawDataSize = Utils::getHeartrateSettings("rawDataSize").intValue();
  const int minimumBpm = Utils::getHeartrateSettings("minimumBpm").intValue();
  const int validPercent = Utils::getHeartrateSettings("TTValidPercent").intValue();
  const int maxDistance = Utils::getHeartrateSettings("TTMaxDistance").intValue();
  const auto lowBin = static_cast<float>(std::round(minimumBpm / bpmPerBin));

  fillInput(static_cast<std::size_t>(std::clamp<int>(rawDataSize, 0, RealFft::length)));
  transform(lowBin);

  HeartrateResult result;
  result.min = largestMinimum;
  for (std::size_t k = 0; k < binCount; ++k) {
    const auto magnitude = static_cast<float>(std::abs(buffers_->real[k]) * magnitudeScale);
    buffers_->byBin[k] = {static_cast<std::int64_t>(k), magnitude};
    if (static_cast<float>(k) > lowBin) {
      result.max = std::max(result.max, magnitude);
      result.min = std::min(result.min, magnitude);
    }
  }

  buffers_->byStrength = buffers_->byBin;
  std::make_heap(buffers_->byStrength.begin(), buffers_->byStrength.end(), weaker);
  const FFTValue top = buffers_->byStrength.front();
  result.index = top.index;
  result.heartrate = calcBPM(top.index);
  result.diffPercent = distanceToRival(buffers_->byStrength, top, validPercent, maxDistance);

  const auto first =
      static_cast<std::size_t>(std::clamp(lowBin + 1, 0.0F, static_cast<float>(binCount)));
  const std::size_t last = std::min(first + reportedBins, binCount);
  result.values.assign(buffers_->byBin.begin() + static_cast<std::ptrdiff_t>(first),
                       buffers_->byBin.begin() + static_cast<std::ptrdiff_t>(last));
  return result;
}

void HeartrateProcessing::fillInput(std::size_t n) {
  const auto series = VectorUtils::lastObjectsOf(*data_->rawHRValues(), n);
  const auto detrended = VectorUtils::detrend(series, true);
  const auto end = std::copy(detrended.begin(), detrended.end(), buffers_->input.begin());
  std::fill(end, buffers_->input.end(), 0.0);
}

void HeartrateProcessing::transform(float lowBin) {
  auto& real = buffers_->real;
  services().realFft.forward(buffers_->input, std::span(real).first<binCount>(),
                             buffers_->imaginary);

  // Both ends of the packed spectrum are cut as if it were two-sided. Imaginary parts stay: they
  // take no part in the magnitudes.
  const auto cut = static_cast<std::size_t>(std::clamp(lowBin, 0.0F, static_cast<float>(binCount)));
  std::fill_n(real.begin(), cut, 0.0);
  std::fill_n(real.rbegin(), cut, 0.0);
}

float HeartrateProcessing::calcBPM(std::int64_t bin) {
  return static_cast<float>(static_cast<double>(bin) * bpmPerBin);
}

bool HeartrateProcessing::isDone() const {
  const int needed = Utils::getHeartrateSettings("neededValidHeartrate").intValue();
  return static_cast<std::int64_t>(data_->fourierValues()->size()) == needed;
}

float HeartrateProcessing::diffHeartrates() const {
  const int needed = Utils::getHeartrateSettings("neededValidHeartrate").intValue();
  const auto last = VectorUtils::lastObjectsOf(*data_->heartrateValues(),
                                               static_cast<std::size_t>(std::max(needed, 0)));
  return static_cast<float>(VectorUtils::standardDeviationOf(last).value_or(0));
}

}  // namespace veyla
