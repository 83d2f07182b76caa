#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// Statistics on number series. Nothing is guarded but what is said here: an empty or too short
/// series gives not-a-number where the arithmetic does.
namespace veyla::VectorUtils {

/// Sum ÷ count; not-a-number for an empty series.
double meanOf(std::span<const double> values);

/// The sample standard deviation (divisor count − 1): nothing for an empty series, not-a-number for
/// a single value.
std::optional<double> standardDeviationOf(std::span<const double> values);

/// The upper median: the element at count / 2 of the sorted series, never an average of two, since
/// medians are stored as measured values. The series must not be empty; if it is, 0.
double medianOf(std::span<const double> values);

/// Ascending; not-a-numbers first.
std::vector<double> sortArray(std::span<const double> values);

/// The extremes of the single-precision values; nothing for an empty series.
std::optional<float> maxOf(std::span<const double> values);
std::optional<float> minOf(std::span<const double> values);

/// The last min(count, size) elements in their order, as doubles.
std::vector<double> lastObjectsOf(std::span<const float> values, std::size_t withSize);
std::vector<double> lastObjectsOf(std::span<const double> values, std::size_t withSize);

/// A least-squares line y = slope · x + intersect over the sample numbers x = 1, 2, …, and the mean
/// of the samples.
struct Regression {
  double slope;
  double intersect;
  double mean;
};
Regression linearRegressionOfUserAcceleration(std::span<const double> values);

/// The residuals of the samples, read in single precision, from their least-squares line; without
/// `subtractMean`, moved back to the samples' mean.
std::vector<double> detrend(std::span<const double> values, bool subtractMean);

}  // namespace veyla::VectorUtils

namespace veyla {

/// The statistic named `statistic` over `values`; nothing for any other name than "average".
std::optional<double> calculateStat(std::span<const double> values, std::string_view statistic);

}  // namespace veyla
