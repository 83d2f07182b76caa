#include <gmock/gmock.h>

#include <cmath>

#include "analysis/linear_regression.h"
#include "analysis/vector_utils.h"

namespace veyla {
namespace {

using namespace testing;
using Series = std::vector<double>;

TEST(VectorUtilsTest, TheMedianIsTheUpperOneAndNeverAnAverageOfBytesToo) {
  EXPECT_EQ(VectorUtils::medianOf(Series{3, 1, 2, 4}), 3);
  EXPECT_EQ(VectorUtils::medianOf(Series{}), 0);
  EXPECT_EQ(VectorUtils::medianOf(Series{9, 1, 5}), 5);
  std::vector<std::uint8_t> bytes;
  std::uint32_t random = 1;
  for (std::size_t size = 1; size <= 600; ++size) {
    random = random * 1664525 + 1013904223;
    bytes.push_back(static_cast<std::uint8_t>(size % 3 == 0 ? 255 : random >> 24));
    ASSERT_EQ(median(bytes), VectorUtils::medianOf(Series(bytes.begin(), bytes.end()))) << size;
  }
}

TEST(VectorUtilsTest, TheTailKeepsItsOrderAndExtremesAreSinglePrecisionValues) {
  EXPECT_EQ(VectorUtils::maxOf(Series{-3, -1.1, -2}), -1.1F);
  EXPECT_EQ(VectorUtils::minOf(Series{0.1, 3}), 0.1F);
  EXPECT_DOUBLE_EQ(*VectorUtils::standardDeviationOf(Series{2, 4, 4, 4, 5, 5, 7, 9}),
                   std::sqrt(32.0 / 7));
  const Series series{1, 2, 3};
  EXPECT_THAT(VectorUtils::lastObjectsOf(series, 2), ElementsAre(2, 3));
  EXPECT_THAT(VectorUtils::lastObjectsOf(series, 10), ElementsAre(1, 2, 3));
  EXPECT_THAT(VectorUtils::lastObjectsOf(series, 0), IsEmpty());
}

TEST(VectorUtilsTest, DetrendingRemovesTheLineAndKeepsTheLevelOnRequest) {
  const Series line{1, 2, 3, 4};
  EXPECT_THAT(VectorUtils::detrend(line, true), Each(DoubleNear(0, 1e-12)));
  EXPECT_THAT(VectorUtils::detrend(line, false), Each(DoubleNear(2.5, 1e-12)));
  EXPECT_THAT(VectorUtils::detrend(Series{}, true), IsEmpty());

  EXPECT_NEAR(VectorUtils::linearRegressionOfUserAcceleration(Series{0.1, 0.2, 0.3}).slope, 0.1,
              1e-14);
  EXPECT_EQ(VectorUtils::meanOf(Series{16777217}), 16777217);

  // The line is fitted to the doubles, the samples are read in single precision.
  const double sample = 16777217;
  EXPECT_THAT(VectorUtils::detrend(Series{sample, sample}, true), Each(-1));
}

TEST(LinearRegressionTest, TheWorkingListIsFittedAndLeftAloneWithTheFittersOwnSlope) {
  LinearRegression& fitter = LinearRegression::sharedInstance();
  for (const DataItem& point : {DataItem{3, 6}, {1, 2}, {2, 4}}) fitter.addDataObject(point);
  const RegressionResult fit = fitter.calculate();
  EXPECT_EQ(fit.slope, 2);
  EXPECT_DOUBLE_EQ(fit.correlation, 1);
  EXPECT_EQ(fit.intercept, 4) << "the mean of y";
  fitter.setSlope(2);
  EXPECT_EQ(fitter.calculate().intercept, 0);
  EXPECT_EQ(fitter.sumX(), 6) << "each fit begins its sums anew";
  EXPECT_EQ(fitter.workingArray().front().xValue, 3) << "sorting is the fit's own";

  EXPECT_NEAR(fitter.calculateRegression(std::vector<DataItem>{{0, 1}, {1, 0}, {2, 2}}).correlation,
              0.5, 1e-12);
  EXPECT_DOUBLE_EQ(fitter.calculateRegression(std::vector<DataItem>{{0, 0}, {1, 0.1}}).slope, 0.1);
  fitter.clear();
  EXPECT_TRUE(std::isnan(fitter.calculate().slope)) << "nothing to fit";
}

}  // namespace
}  // namespace veyla
