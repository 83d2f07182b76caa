#include "analysis/heartrate_processing.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
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

/// Magnitudes as whole numbers in the same order, by their bits, with not-a-numbers below all: the
/// largest of many is then found some at a time.
using Ranks = std::array<std::int32_t, binCount>;
constexpr std::int32_t noRank = -1;

std::int32_t rankOf(float magnitude) {
  std::int32_t bits;
  std::memcpy(&bits, &magnitude, sizeof bits);
  constexpr std::int32_t infinity = 0x7F800000;
  return bits > infinity ? noRank : bits;
}

/// The bin of the highest rank from `begin` up to `end`, which must be one at least.
std::size_t strongest(const Ranks& ranks, std::size_t begin, std::size_t end) {
  std::int32_t highest = noRank;
  for (std::size_t k = begin; k < end; ++k) highest = std::max(highest, ranks[k]);
  const auto first = ranks.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto last = ranks.begin() + static_cast<std::ptrdiff_t>(end);
  return static_cast<std::size_t>(std::find(first, last, highest) - ranks.begin());
}

/// The bins that may decide by how far the strongest one is ahead, strongest first: those within
/// `maxDistance` of it and the strongest of the others, at which a walk down to the weakest ends at
/// the latest.
std::vector<std::size_t> rivalsOf(const Ranks& ranks, std::size_t top, int maxDistance) {
  const auto reach = static_cast<std::size_t>(std::clamp<int>(maxDistance, 0, binCount));
  const std::size_t begin = top - std::min(top, reach);
  const std::size_t end = std::min(top + reach + 1, binCount);
  std::vector<std::size_t> rivals;
  for (std::size_t k = begin; k < end; ++k) {
    if (k != top) rivals.push_back(k);
  }
  const std::size_t below = begin > 0 ? strongest(ranks, 0, begin) : binCount;
  const std::size_t above = end < binCount ? strongest(ranks, end, binCount) : binCount;
  if (above < binCount && (below == binCount || ranks[above] > ranks[below])) {
    rivals.push_back(above);
  } else if (below < binCount) {
    rivals.push_back(below);
  }
  std::sort(rivals.begin(), rivals.end(),
            [&](std::size_t a, std::size_t b) { return ranks[a] > ranks[b]; });
  return rivals;
}

/// Walks from the strongest bin down past the rivals that belong to the same peak, and returns by
/// how many per cent the first one that does not falls short of the top.
float distanceToRival(std::span<const FFTValue, binCount> bins, const FFTValue& top,
                      const std::vector<std::size_t>& rivals, int validPercent, int maxDistance) {
  float diffPercent = 0;
  for (const std::size_t rival : rivals) {
    const FFTValue& current = bins[rival];
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

  auto& bins = buffers_->bins;
  Ranks ranks;
  for (std::size_t k = 0; k < binCount; ++k) {
    const auto magnitude = static_cast<float>(std::abs(buffers_->real[k]) * magnitudeScale);
    bins[k] = {static_cast<std::int64_t>(k), magnitude};
    ranks[k] = rankOf(magnitude);
  }

  HeartrateResult result;
  const auto afterCut =
      static_cast<std::size_t>(std::clamp(lowBin + 1, 0.0F, static_cast<float>(binCount)));
  result.min = largestMinimum;
  for (std::size_t k = afterCut; k < binCount; ++k) {
    result.min = std::min(result.min, bins[k].value);
  }
  if (afterCut < binCount) {
    result.max = std::max(result.max, bins[strongest(ranks, afterCut, binCount)].value);
  }

  const FFTValue& top = bins[strongest(ranks, 0, binCount)];
  result.index = top.index;
  result.heartrate = calcBPM(top.index);
  const auto rivals = rivalsOf(ranks, static_cast<std::size_t>(top.index), maxDistance);
  result.diffPercent = distanceToRival(bins, top, rivals, validPercent, maxDistance);

  const std::size_t last = std::min(afterCut + reportedBins, binCount);
  result.values.assign(bins.begin() + static_cast<std::ptrdiff_t>(afterCut),
                       bins.begin() + static_cast<std::ptrdiff_t>(last));
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
