#include "analysis/linear_regression.h"

#include <algorithm>
#include <cmath>

namespace veyla {

LinearRegression& LinearRegression::sharedInstance() {
  static LinearRegression fitter;
  return fitter;
}

std::vector<DataItem>& LinearRegression::workingArray() {
  if (workingArray_.capacity() == 0) workingArray_.reserve(initialCapacity);
  return workingArray_;
}

RegressionResult LinearRegression::calculate() {
  std::vector<DataItem> sorted = getArray();
  std::stable_sort(sorted.begin(), sorted.end(), [](const DataItem& left, const DataItem& right) {
    // A not-a-number would break the order that sorting needs.
    return left.xValue < right.xValue || (std::isnan(left.xValue) && !std::isnan(right.xValue));
  });
  return calculateRegression(sorted);
}

RegressionResult LinearRegression::calculateRegression(std::span<const DataItem> points) {
  sumY_ = sumX_ = sumXY_ = sumX2_ = sumY2_ = 0;
  for (const auto& [x, y] : points) {
    sumX_ += x;
    sumY_ += y;
    sumXY_ += x * y;
    sumX2_ += x * x;
    sumY2_ += y * y;
  }
  const auto n = static_cast<double>(points.size());
  const double covariance = n * sumXY_ - sumX_ * sumY_;
  const double varianceOfX = n * sumX2_ - sumX_ * sumX_;
  const double varianceOfY = n * sumY2_ - sumY_ * sumY_;
  return {.slope = covariance / varianceOfX,
          .intercept = (sumY_ - slope_ * sumX_) / n,
          .correlation = covariance / (std::sqrt(varianceOfX) * std::sqrt(varianceOfY))};
}

}  // namespace veyla
