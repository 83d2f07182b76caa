#include "platform/portable/kiss_real_fft.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace veyla {
namespace {

TEST(KissRealFftTest, TheMiddleBinStandsBesideDcAndEachBinIsTimesTheNumberOfSamples) {
  constexpr double length = RealFft::length;
  std::array<double, RealFft::length> samples;
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double turns = 7 * static_cast<double>(n) / length;
    samples[n] = 3 + (n % 2 == 0 ? 5 : -5) + 4 * std::sin(2 * std::numbers::pi * turns);
  }
  std::array<double, RealFft::binCount> real;
  std::array<double, RealFft::binCount> imaginary;
  KissRealFft().forward(samples, real, imaginary);
  EXPECT_NEAR(real[0], 3 * length, 1e-8);
  EXPECT_NEAR(imaginary[0], 5 * length, 1e-8);
  EXPECT_NEAR(real[7], 0, 1e-8);
  EXPECT_NEAR(imaginary[7], -2 * length, 1e-8);
}

}  // namespace
}  // namespace veyla
