#pragma once

#include <cstddef>
#include <span>

namespace veyla {

/// A real FFT of 1024 samples in double precision.
class RealFft {
 public:
  static constexpr std::size_t length = 1024;
  static constexpr std::size_t binCount = length / 2;

  virtual ~RealFft() = default;

  /// The plain forward DFT, X[k] = Σ x[n]·exp(-2πi·kn/1024), in packed layout: bins 1 to 511 in
  /// their places, bin 0's real part in real[0] and bin 512's real part in imaginary[0].
  virtual void forward(std::span<const double, length> samples, std::span<double, binCount> real,
                       std::span<double, binCount> imaginary) = 0;
};

}  // namespace veyla
