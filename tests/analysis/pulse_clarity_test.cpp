#include "analysis/pulse_clarity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "tests/support/builders.h"

namespace veyla {
namespace {

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
