#include "platform/portable/kiss_real_fft.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <random>

namespace veyla {
namespace {

constexpr std::size_t length = RealFft::length;
constexpr std::size_t binCount = RealFft::binCount;

using Samples = std::array<double, length>;

/// DC and the middle bin, both real, share the first place.
struct Packed {
  std::array<double, binCount> real{};
  std::array<double, binCount> imaginary{};
};

/// exp(2πi·n/1024).
std::complex<double> turn(std::size_t n) {
  static const auto turns = [] {
    auto made = std::make_unique<std::array<std::complex<double>, length>>();
    for (std::size_t i = 0; i < length; ++i) {
      (*made)[i] = std::polar(1.0, 2 * std::numbers::pi * static_cast<double>(i) / length);
    }
    return made;
  }();
  return (*turns)[n % length];
}

Packed plainForward(const Samples& samples) {
  const auto bin = [&](std::size_t k) {
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < length; ++n) sum += samples[n] * std::conj(turn(k * n));
    return sum;
  };
  Packed spectrum;
  for (std::size_t k = 0; k < binCount; ++k) {
    spectrum.real[k] = bin(k).real();
    spectrum.imaginary[k] = bin(k).imag();
  }
  spectrum.imaginary[0] = bin(binCount).real();
  return spectrum;
}

/// The sum over both halves of the spectrum, not divided by its length.
Samples plainInverse(const Packed& spectrum) {
  Samples samples{};
  for (std::size_t n = 0; n < length; ++n) {
    double sum = spectrum.real[0] + (n % 2 == 0 ? 1 : -1) * spectrum.imaginary[0];
    for (std::size_t k = 1; k < binCount; ++k) {
      sum += 2 * (std::complex(spectrum.real[k], spectrum.imaginary[k]) * turn(k * n)).real();
    }
    samples[n] = sum;
  }
  return samples;
}

Packed forward(const Samples& samples) {
  Packed spectrum;
  KissRealFft().forward(samples, spectrum.real, spectrum.imaginary);
  return spectrum;
}

Samples randomSamples() {
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  Samples samples;
  for (double& sample : samples) sample = normal(random) + 0.5;
  return samples;
}

void expectNear(const Packed& spectrum, const Packed& expected, double tolerance) {
  for (std::size_t k = 0; k < binCount; ++k) {
    ASSERT_NEAR(spectrum.real[k], expected.real[k], tolerance) << "bin " << k;
    ASSERT_NEAR(spectrum.imaginary[k], expected.imaginary[k], tolerance) << "bin " << k;
  }
}

TEST(KissRealFftTest, IsThePlainTransformPacked) {
  const Samples samples = randomSamples();
  const Packed expected = plainForward(samples);
  expectNear(forward(samples), expected, 1e-10);
  // The two that share a place are far apart here, so that a swap shows.
  EXPECT_GT(std::abs(expected.real[0] - expected.imaginary[0]), 1);
}

TEST(KissRealFftTest, OneInstanceServesManyTransforms) {
  KissRealFft fft;
  Packed spectrum;
  Samples samples{};
  samples[0] = 1;
  fft.forward(samples, spectrum.real, spectrum.imaginary);
  samples = randomSamples();
  fft.forward(samples, spectrum.real, spectrum.imaginary);
  expectNear(spectrum, forward(samples), 0);
}

TEST(KissRealFftTest, AnInverseAndForwardPairOnlyScalesACutSpectrumBy2048) {
  const Samples samples = randomSamples();
  for (const std::size_t lowBin : {std::size_t{0}, std::size_t{46}, std::size_t{200}}) {
    Packed cut = forward(samples);
    // The forward transform of the pair's convention doubles.
    for (std::size_t k = 0; k < binCount; ++k) {
      cut.real[k] *= 2;
      cut.imaginary[k] *= 2;
    }
    for (std::size_t k = 0; k < lowBin; ++k) cut.real[k] = 0;
    // The mirrored cut begins one place above the spectrum.
    for (std::size_t k = binCount - 1; k + lowBin > binCount; --k) cut.real[k] = 0;

    Packed again = forward(plainInverse(cut));
    Packed expected = cut;
    for (std::size_t k = 0; k < binCount; ++k) {
      again.real[k] *= 2;
      again.imaginary[k] *= 2;
      expected.real[k] *= 2048;
      expected.imaginary[k] *= 2048;
    }
    expectNear(again, expected, 1e-6);
    EXPECT_GT(std::abs(expected.real[300]), 1000) << "something was left to compare";
  }
}

}  // namespace
}  // namespace veyla
