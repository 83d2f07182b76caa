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

std::vector<float> noise(unsigned seed, std::size_t length = 210) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal(100, 2);
  std::vector<float> series(length);
  for (float& value : series) value = normal(random);
  return series;
}

TEST(PulseClarityTest, APulseRepeatsItselfAtItsOwnRateAndStandsOutFromHalfAndTwiceIt) {
  for (const double bpm : {45.0, 60.0, 72.0, 100.0, 150.0, 200.0}) {
    SCOPED_TRACE(bpm);
    EXPECT_GT(periodicityAt(pulse(bpm), bpm).own, 0.62);
    EXPECT_LT(periodicityAt(pulse(bpm), bpm).doubleRate, 0.4);
  }
  for (const double slow : {25.0, 31.0, 38.0}) {
    SCOPED_TRACE(slow);
    const Periodicity doubled = periodicityAt(pulse(slow, 20), 2 * slow);
    EXPECT_LT(doubled.own, 0.3);
    EXPECT_GT(doubled.halfRate, 0.55);
  }
  const Periodicity halved = periodicityAt(pulse(101), 50.5);
  EXPECT_GT(halved.doubleRate, 0.8 * halved.own);
}

TEST(PulseClarityTest, NoiseBreathAndNothingRepeatNoBeat) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    EXPECT_LT(periodicityAt(noise(seed), 60).own, 0.4);
    EXPECT_LT(pulseIn(noise(seed)), 0.5F);
  }
  EXPECT_LT(periodicityAt(pulse(15), 60).own, 0);
  EXPECT_LT(pulseIn(pulse(12)), 0.5F);
  const std::vector<float> still(200, 255);
  EXPECT_EQ(periodicityAt(still, 60).own, 0);
  EXPECT_EQ(pulseIn(still), 0);
}

TEST(PulseClarityTest, AGlanceSeesPulsesOfEveryRateInThreeSeconds) {
  for (int bpm = 44; bpm <= 200; bpm += 12) {
    SCOPED_TRACE(bpm);
    EXPECT_GT(pulseIn(pulse(bpm)), 0.6F);
  }
  EXPECT_GT(pulseIn(pulse(72, 3)), 0.6F);
  EXPECT_EQ(pulseIn(pulse(72, 2.9)), 0);
  // What cannot be judged is nought.
  for (const double bpm : {0.0, -60.0, 301.0, std::nan("")}) {
    EXPECT_EQ(periodicityAt(pulse(72), bpm).own, 0) << bpm;
  }
  EXPECT_EQ(periodicityAt(pulse(72, 2), 72).own, 0);
  EXPECT_EQ(periodicityAt({}, 72).own, 0);
}

}  // namespace
}  // namespace veyla
