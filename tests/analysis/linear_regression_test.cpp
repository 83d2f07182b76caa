#include "analysis/linear_regression.h"

#include <gmock/gmock.h>

#include <cmath>
#include <future>

namespace veyla {
namespace {

using testing::SizeIs;

const std::vector<DataItem> rising{{3, 6}, {1, 2}, {2, 4}};

TEST(LinearRegressionTest, TheInterceptTakesTheFittersOwnSlope) {
  LinearRegression fitter;
  const RegressionResult fit = fitter.calculateRegression(rising);
  EXPECT_EQ(fit.slope, 2);
  EXPECT_DOUBLE_EQ(fit.correlation, 1);
  EXPECT_EQ(fit.intercept, 4) << "the mean of y";
  EXPECT_EQ(fitter.slope(), 0);
  EXPECT_EQ(fitter.sumXY(), 28);
  EXPECT_EQ(fitter.sumX2(), 14);
  EXPECT_EQ(fitter.sumY2(), 56);

  fitter.setSlope(2);
  EXPECT_EQ(fitter.calculateRegression(rising).intercept, 0);
  EXPECT_EQ(fitter.sumX(), 6) << "each fit begins its sums anew";
  EXPECT_NEAR(fitter.calculateRegression(std::vector<DataItem>{{0, 1}, {1, 0}, {2, 2}}).correlation,
              0.5, 1e-12);
}

TEST(LinearRegressionTest, EveryThreadGetsTheOneSharedFitter) {
  std::vector<std::future<LinearRegression*>> asked;
  for (int thread = 0; thread < 8; ++thread) {
    asked.push_back(
        std::async(std::launch::async, [] { return &LinearRegression::sharedInstance(); }));
  }
  for (auto& fitter : asked) EXPECT_EQ(fitter.get(), &LinearRegression::sharedInstance());
}

TEST(LinearRegressionTest, TheWorkingListIsFittedAndOtherwiseLeftAlone) {
  LinearRegression fitter;
  for (const DataItem& point : rising) fitter.addDataObject(point);
  const auto copy = fitter.getArray();
  EXPECT_EQ(fitter.calculate().slope, 2);
  EXPECT_EQ(fitter.workingArray().front().xValue, 3) << "sorting is the fit's own";
  fitter.calculateRegression(std::vector<DataItem>{{0, 0}});
  fitter.addDataObject({4, 8});
  EXPECT_THAT(copy, SizeIs(3));
  EXPECT_THAT(fitter.getArray(), SizeIs(4));
  fitter.clear();
  const RegressionResult nothing = fitter.calculate();
  EXPECT_TRUE(std::isnan(nothing.slope) && std::isnan(nothing.intercept) &&
              std::isnan(nothing.correlation));
}

}  // namespace
}  // namespace veyla
