#include "analysis/pulse_clarity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "platform/capture.h"

namespace veyla {

namespace {

constexpr double framesPerMinute = 60.0 * VideoDataOutput::framesPerSecond;
/// A beat's length wavers, and a lag is a whole number of frames.
constexpr double lagTolerance = 0.08;
/// Of an autocorrelation: fewer products say nothing.
constexpr std::size_t fewestProducts = 8;
constexpr double leastEnergy = 1e-9;

/// The mean of the `width` values around each one, of fewer at the ends. `width` is odd.
std::vector<double> movingMean(std::span<const double> series, std::size_t width) {
  const std::size_t half = width / 2;
  std::vector<double> sums(series.size() + 1);
  for (std::size_t i = 0; i < series.size(); ++i) sums[i + 1] = sums[i] + series[i];
  std::vector<double> means(series.size());
  for (std::size_t i = 0; i < series.size(); ++i) {
    const std::size_t from = i < half ? 0 : i - half;
    const std::size_t to = std::min(i + half + 1, series.size());
    means[i] = (sums[to] - sums[from]) / static_cast<double>(to - from);
  }
  return means;
}

std::size_t oddWidth(double frames) {
  const auto width = static_cast<std::size_t>(std::lround(frames));
  return width % 2 == 0 ? width + 1 : width;
}

double correlation(std::span<const double> series, std::size_t lag) {
  double product = 0;
  double early = 0;
  double late = 0;
  for (std::size_t i = 0; i + lag < series.size(); ++i) {
    product += series[i] * series[i + lag];
    early += series[i] * series[i];
    late += series[i + lag] * series[i + lag];
  }
  const double energy = std::sqrt(early * late);
  return energy > leastEnergy ? product / energy : 0;
}

/// The best correlation at about `period` frames; 0 where the series is too short for it.
double correlationAround(std::span<const double> series, double period) {
  const auto shortest =
      static_cast<std::size_t>(std::max(1.0, std::floor(period * (1 - lagTolerance))));
  const auto longest = static_cast<std::size_t>(std::ceil(period * (1 + lagTolerance)));
  if (longest + fewestProducts > series.size()) return 0;
  double best = -1;
  for (std::size_t lag = shortest; lag <= longest; ++lag) {
    best = std::max(best, correlation(series, lag));
  }
  return best;
}

}  // namespace

Periodicity periodicityAt(std::span<const float> series, double bpm) {
  constexpr double fewestFramesPerBeat = 3;
  const double period = framesPerMinute / bpm;
  if (!(bpm > 0) || period < fewestFramesPerBeat ||
      static_cast<double>(series.size()) < 3 * period) {
    return {};
  }
  std::vector<double> pulse(series.begin(), series.end());
  const auto drift = movingMean(pulse, oddWidth(1.5 * period));
  std::transform(pulse.begin(), pulse.end(), drift.begin(), pulse.begin(), std::minus<>());
  pulse = movingMean(pulse, oddWidth(std::floor(period / 4)));
  return {correlationAround(pulse, period), correlationAround(pulse, 2 * period),
          correlationAround(pulse, period / 2)};
}

float pulseIn(std::span<const float> series) {
  constexpr std::size_t longest = 60;
  constexpr std::size_t fewest = 45;
  constexpr std::size_t shortestLag = 4;
  constexpr std::size_t longestLag = 23;
  if (series.size() < fewest) return 0;
  if (series.size() > longest) series = series.last(longest);
  const std::size_t n = series.size();

  // What is slower than a period of the slowest pulse is drift. Zeros behind the end let every sum
  // run over the same places, so that all lags are summed side by side.
  std::array<float, longest + longestLag + 1> pulse{};
  std::array<float, longest + 1> sums{};
  for (std::size_t i = 0; i < n; ++i) sums[i + 1] = sums[i] + (series[i] - series[0]);
  constexpr std::size_t half = longestLag / 2;
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t from = i < half ? 0 : i - half;
    const std::size_t to = std::min(i + half + 1, n);
    pulse[i] = series[i] - series[0] - (sums[to] - sums[from]) / static_cast<float>(to - from);
  }
  std::array<float, longestLag + 2> products{};
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t lag = 0; lag < longestLag + 1; ++lag) {
      products[lag] += pulse[i] * pulse[i + lag];
    }
  }
  if (products[0] < static_cast<float>(leastEnergy)) return 0;
  float best = 0;
  for (std::size_t lag = shortestLag; lag <= longestLag - 1; ++lag) {
    if (products[lag] < products[lag - 1] || products[lag] < products[lag + 1]) continue;
    // As many products as there are, of the energy of as many values.
    const auto share = static_cast<float>(n - lag) / static_cast<float>(n);
    best = std::max(best, products[lag] / (products[0] * share));
  }
  return best;
}

}  // namespace veyla
