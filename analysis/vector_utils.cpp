#include "analysis/vector_utils.h"

#include <algorithm>
#include <cmath>

namespace veyla::VectorUtils {

namespace {

template <class Number>
std::vector<double> tail(std::span<const Number> values, std::size_t size) {
  const auto last = values.last(std::min(values.size(), size));
  return {last.begin(), last.end()};
}

/// A total order also for not-a-numbers, which a sort would otherwise stumble over.
bool ascending(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && !std::isnan(b);
  return a < b;
}

}  // namespace

double meanOf(std::span<const double> values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

std::optional<double> standardDeviationOf(std::span<const double> values) {
  if (values.empty()) return std::nullopt;
  const double mean = meanOf(values);
  double squares = 0;
  for (const double value : values) squares += (value - mean) * (value - mean);
  return std::sqrt(squares / (static_cast<double>(values.size()) - 1));
}

double medianOf(std::span<const double> values) {
  if (values.empty()) return 0;
  return sortArray(values)[values.size() / 2];
}

std::vector<double> sortArray(std::span<const double> values) {
  std::vector<double> sorted(values.begin(), values.end());
  std::sort(sorted.begin(), sorted.end(), ascending);
  return sorted;
}

std::optional<float> maxOf(std::span<const double> values) {
  if (values.empty()) return std::nullopt;
  return static_cast<float>(*std::max_element(values.begin(), values.end()));
}

std::optional<float> minOf(std::span<const double> values) {
  if (values.empty()) return std::nullopt;
  return static_cast<float>(*std::min_element(values.begin(), values.end()));
}

std::vector<double> lastObjectsOf(std::span<const float> values, std::size_t withSize) {
  return tail(values, withSize);
}

std::vector<double> lastObjectsOf(std::span<const double> values, std::size_t withSize) {
  return tail(values, withSize);
}

Regression linearRegressionOfUserAcceleration(std::span<const double> values) {
  const double n = static_cast<double>(values.size());
  double xSum = 0;
  double ySum = 0;
  double sxx = 0;
  double sxy = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = static_cast<double>(i + 1);
    xSum += x;
    ySum += values[i];
    sxx += x * x;
    sxy += x * values[i];
  }
  const double xMean = xSum / n;
  const double yMean = ySum / n;
  const double slope = (sxy - yMean * xMean * n) / (sxx - xMean * xMean * n);
  return {slope, yMean - xMean * slope, yMean};
}

std::vector<double> detrend(std::span<const double> values, bool subtractMean) {
  const Regression line = linearRegressionOfUserAcceleration(values);
  std::vector<double> residuals(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto sample = static_cast<double>(static_cast<float>(values[i]));
    const double residual = sample - (line.intersect + line.slope * static_cast<double>(i + 1));
    residuals[i] = subtractMean ? residual : line.mean + residual;
  }
  return residuals;
}

}  // namespace veyla::VectorUtils

namespace veyla {

std::optional<double> calculateStat(std::span<const double> values, std::string_view statistic) {
  if (statistic != "average") return std::nullopt;
  return VectorUtils::meanOf(values);
}

}  // namespace veyla
