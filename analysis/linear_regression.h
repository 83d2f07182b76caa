#pragma once

#include <span>
#include <vector>

#include "acquisition/data_item.h"

namespace veyla {

/// A fitted line and how well it fits. Not-a-number or infinite where the points do not determine
/// it.
struct RegressionResult {
  double slope = 0;
  double intercept = 0;
  /// Pearson's, −1 to 1.
  double correlation = 0;
};

/// Least-squares fits of chart points that are collected one by one, or given as a whole. For one
/// thread at a time.
///
/// The intercept is taken with the fitter's own `slope`, which no fit sets, and not with the slope
/// just found: unless a caller has set it, the intercept is the mean of y.
class LinearRegression {
 public:
  /// The one fitter of the process, made once, whichever thread asks first: unlike other shared
  /// instances it needs no platform, which is in force on its own thread alone. Its use is for one
  /// thread all the same.
  static LinearRegression& sharedInstance();

  // The working list.

  /// Made with room for 10 points when it is first asked for.
  std::vector<DataItem>& workingArray();
  void addDataObject(const DataItem& point) { workingArray().push_back(point); }
  void clear() { workingArray().clear(); }
  /// A copy, which later points do not change.
  std::vector<DataItem> getArray() { return workingArray(); }
  /// Replaces the working list.
  void setWorkingArray(std::vector<DataItem> points) { workingArray_ = std::move(points); }

  /// Fits the working list.
  RegressionResult calculate();
  /// Fits these points; the working list stays as it is.
  RegressionResult calculateRegression(std::span<const DataItem> points);

  // Set by callers alone; 0 until then.

  double slope() const { return slope_; }
  void setSlope(double slope) { slope_ = slope; }
  double intercept() const { return intercept_; }
  void setIntercept(double intercept) { intercept_ = intercept; }
  double correlation() const { return correlation_; }
  void setCorrelation(double correlation) { correlation_ = correlation; }

  // The sums of the last fit.

  double sumY() const { return sumY_; }
  void setSumY(double sumY) { sumY_ = sumY; }
  double sumX() const { return sumX_; }
  void setSumX(double sumX) { sumX_ = sumX; }
  double sumXY() const { return sumXY_; }
  void setSumXY(double sumXY) { sumXY_ = sumXY; }
  double sumX2() const { return sumX2_; }
  void setSumX2(double sumX2) { sumX2_ = sumX2; }
  double sumY2() const { return sumY2_; }
  void setSumY2(double sumY2) { sumY2_ = sumY2; }

 private:
  static constexpr std::size_t initialCapacity = 10;

  std::vector<DataItem> workingArray_;
  double slope_ = 0;
  double intercept_ = 0;
  double correlation_ = 0;
  double sumY_ = 0;
  double sumX_ = 0;
  double sumXY_ = 0;
  double sumX2_ = 0;
  double sumY2_ = 0;
};

}  // namespace veyla
