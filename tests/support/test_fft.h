#pragma once

#include <complex>
#include <map>
#include <vector>

#include "platform/real_fft.h"

namespace veyla {

/// The transform, computed plainly; or, once a test has given peaks, a spectrum of just these.
class TestFft : public RealFft {
 public:
  /// Real parts by bin.
  std::map<std::size_t, double> peaks;

  void forward(std::span<const double, length> samples, std::span<double, binCount> real,
               std::span<double, binCount> imaginary) override;

 private:
  using Spectrum = std::vector<std::complex<double>>;
  static Spectrum transform(const Spectrum& samples);
};

}  // namespace veyla
