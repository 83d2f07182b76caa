#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>

#include "platform/real_fft.h"

namespace veyla {

/// The transform by its definition; or, once a test has given peaks, a spectrum of just these.
class TestFft : public RealFft {
 public:
  /// Real parts by bin.
  std::map<std::size_t, double> peaks;

  void forward(std::span<const double, length> samples, std::span<double, binCount> real,
               std::span<double, binCount> imaginary) override {
    std::fill(real.begin(), real.end(), 0.0);
    std::fill(imaginary.begin(), imaginary.end(), 0.0);
    for (const auto& [bin, value] : peaks) real[bin] = value;
    if (!peaks.empty()) return;

    std::array<double, length> cosine;
    for (std::size_t i = 0; i < length; ++i) {
      cosine[i] = std::cos(2 * std::numbers::pi * static_cast<double>(i) / length);
    }
    for (std::size_t n = 0; n < length; ++n) {
      for (std::size_t k = 0; k < binCount; ++k) {
        real[k] += samples[n] * cosine[k * n % length];
        if (k > 0) imaginary[k] += samples[n] * cosine[(k * n + length / 4) % length];
      }
      imaginary[0] += n % 2 == 0 ? samples[n] : -samples[n];
    }
  }
};

}  // namespace veyla
