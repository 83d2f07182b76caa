#include "analysis/pulse_clarity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>
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
    const std::size_t from = i - std::min(i, half);
    const std::size_t to = std::min(i + half + 1, series.size());
    means[i] = (sums[to] - sums[from]) / static_cast<double>(to - from);
  }
  return means;
}

std::size_t oddWidth(double frames) {
  const auto width = static_cast<std::size_t>(std::lround(frames));
  return width % 2 == 0 ? width + 1 : width;
}

/// A series that is compared with itself, some frames later.
class Autocorrelation {
 public:
  explicit Autocorrelation(std::vector<double> series)
      : series_(std::move(series)), energy_(series_.size() + 1) {
    for (std::size_t i = 0; i < series_.size(); ++i) {
      energy_[i + 1] = energy_[i] + series_[i] * series_[i];
    }
  }

  /// The best one at about `period` frames; 0 where the series is too short for it.
  double around(double period) const {
    // Within the tolerance, and the two beside the period in any case.
    const double least = std::min(std::ceil(period * (1 - lagTolerance)), std::floor(period));
    const double most = std::max(std::floor(period * (1 + lagTolerance)), std::ceil(period));
    const auto shortest = static_cast<std::size_t>(std::max(1.0, least));
    const auto longest = static_cast<std::size_t>(most);
    if (longest + fewestProducts > series_.size()) return 0;
    double best = -1;
    for (std::size_t lag = shortest; lag <= longest; ++lag) best = std::max(best, at(lag));
    return best;
  }

 private:
  double at(std::size_t lag) const {
    const std::size_t count = series_.size() - lag;
    const double product =
        std::inner_product(series_.begin(), series_.begin() + static_cast<std::ptrdiff_t>(count),
                           series_.begin() + static_cast<std::ptrdiff_t>(lag), 0.0);
    const double energy = std::sqrt(energy_[count] * (energy_.back() - energy_[lag]));
    return energy > leastEnergy ? product / energy : 0;
  }

  std::vector<double> series_;
  /// Of the values before each one.
  std::vector<double> energy_;
};

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
  const Autocorrelation beats(std::move(pulse));
  return {beats.around(period), beats.around(2 * period), beats.around(period / 2)};
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
    const std::size_t from = i - std::min(i, half);
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
