#include "platform/portable/kiss_real_fft.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

namespace veyla {
namespace {

constexpr std::size_t length = RealFft::length;
constexpr std::size_t binCount = RealFft::binCount;

/// DC and the middle bin, both real, share the first place.
struct Packed {
  std::array<double, binCount> real{};
  std::array<double, binCount> imaginary{};
};

/// The plain sum over both halves of the spectrum, not divided by its length.
std::array<double, length> samplesOf(const Packed& spectrum) {
  std::array<double, length> samples{};
  for (std::size_t n = 0; n < length; ++n) {
    samples[n] = spectrum.real[0] + (n % 2 == 0 ? 1 : -1) * spectrum.imaginary[0];
    for (std::size_t k = 1; k < binCount; ++k) {
      const double angle = 2 * std::numbers::pi * static_cast<double>(k * n % length) / length;
      samples[n] +=
          2 * (spectrum.real[k] * std::cos(angle) - spectrum.imaginary[k] * std::sin(angle));
    }
  }
  return samples;
}

TEST(KissRealFftTest, FindsTheSpectrumOfSamplesPackedAndTimesTheirNumber) {
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  KissRealFft fft;
  for (int times = 0; times < 2; ++times) {
    Packed made;
    for (std::size_t k = 0; k < binCount; ++k) {
      made.real[k] = normal(random);
      made.imaginary[k] = normal(random);
    }
    Packed found;
    fft.forward(samplesOf(made), found.real, found.imaginary);
    for (std::size_t k = 0; k < binCount; ++k) {
      ASSERT_NEAR(found.real[k], length * made.real[k], 1e-8) << "bin " << k;
      ASSERT_NEAR(found.imaginary[k], length * made.imaginary[k], 1e-8) << "bin " << k;
    }
  }
}

}  // namespace
}  // namespace veyla
