#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <vector>

#include "analysis/linear_regression.h"
#include "analysis/pulse_clarity.h"
#include "analysis/vector_utils.h"
#include "tests/support/builders.h"

namespace veyla {
namespace {

using namespace testing;

using Series = std::vector<double>;

TEST(VectorUtilsTest, TheMedianIsTheUpperOneAndNeverAnAverage) {
  EXPECT_EQ(VectorUtils::medianOf(Series{3, 1, 2, 4}), 3);
  EXPECT_EQ(VectorUtils::medianOf(Series{}), 0);
  EXPECT_EQ(VectorUtils::medianOf(Series{9, 1, 5}), 5);
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
  EXPECT_EQ(fitter.calculate().intercept, 4) << "the mean of y";
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

/// With a breath.
std::vector<float> pulse(double bpm, double seconds = 14) {
  return photoplethysmogram(bpm, seconds, 1.5);
}

// At its own rate, half and twice it, and at a glance: a pulse stands out from half and twice its
// rate, and one that is told twice or half as fast does not.
TEST(PulseClarityTest, APulseRepeatsItselfAtItsOwnRateAndIsSeenAtAGlance) {
  const std::tuple<double, double, double, Periodicity, float> cases[] = {
      {45, 45, 14, {0.6632, 0.7136, -0.5642}, 0.7540F},
      {72, 72, 14, {0.9199, 0.9165, -0.7173}, 0.7941F},
      {150, 150, 14, {0.9974, 0.9963, -0.7095}, 0.9037F},
      {200, 200, 14, {0.6711, 0.9974, -0.4971}, 0.8563F},
      {299, 299, 14, {0.9985, 0.9973, -0.4944}, 0.9497F},
      {25, 50, 20, {-0.2920, 0.6253, -0.2120}, 0},
      {38, 76, 20, {-0.2725, 0.8564, -0.0901}, 0},
      {101, 50.5, 14, {0.4484, 0.3536, 0.7698}, 0.8203F},
      {64, 49, 14, {0.0620, -0.0569, -0.1116}, 0.8773F}};
  for (const auto& [bpm, told, seconds, expected, glance] : cases) {
    SCOPED_TRACE(bpm);
    const auto series = pulse(bpm, seconds);
    const Periodicity seen = periodicityAt(series, told);
    EXPECT_NEAR(seen.own, expected.own, 1e-4);
    EXPECT_NEAR(seen.halfRate, expected.halfRate, 1e-4);
    EXPECT_NEAR(seen.doubleRate, expected.doubleRate, 1e-4);
    EXPECT_NEAR(pulseIn(series), glance, 1e-4F);
  }
}

TEST(PulseClarityTest, NoiseBreathAndNothingRepeatNoBeat) {
  std::mt19937 random;
  std::normal_distribution<float> normal(100, 2);
  for (int i = 0; i < 20; ++i) {
    std::vector<float> noise(210);
    for (float& value : noise) value = normal(random);
    EXPECT_LT(periodicityAt(noise, 60).own, 0.4);
    EXPECT_LT(pulseIn(noise), 0.5F);
  }
  EXPECT_LT(periodicityAt(pulse(15), 60).own, 0);
  EXPECT_LT(pulseIn(pulse(12)), 0.5F);
  const std::vector<float> still(200, 255);
  EXPECT_EQ(periodicityAt(still, 60).own, 0);
  EXPECT_EQ(pulseIn(still), 0);
}

TEST(PulseClarityTest, WhatCannotBeJudgedIsNought) {
  EXPECT_GT(pulseIn(pulse(72, 3)), 0.6F);
  EXPECT_EQ(pulseIn(pulse(72, 2.9)), 0);
  for (const double bpm : {0.0, -60.0, 301.0, std::nan("")}) {
    EXPECT_EQ(periodicityAt(pulse(72), bpm).own, 0) << bpm;
  }
  EXPECT_NE(periodicityAt(pulse(75, 2.4), 75).own, 0) << "three periods";
  EXPECT_EQ(periodicityAt(pulse(75, 2.3), 75).own, 0);
  EXPECT_EQ(periodicityAt({}, 72).own, 0);
}

}  // namespace
}  // namespace veyla
