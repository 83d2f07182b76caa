#include "platform/portable/kiss_real_fft.h"

#include <array>
#include <cmath>
#include <complex>
#include <kissfft/kissfft.hh>

namespace veyla {

/// A real transform is a complex one of half the length.
struct KissRealFft::Tables {
  kissfft<double> transform{binCount, false};
  std::array<std::complex<double>, binCount> spectrum;
};

KissRealFft::KissRealFft() : tables_(std::make_unique<Tables>()) {}
KissRealFft::~KissRealFft() = default;

void KissRealFft::forward(std::span<const double, length> samples, std::span<double, binCount> real,
                          std::span<double, binCount> imaginary) {
  auto& spectrum = tables_->spectrum;
  tables_->transform.transform_real(samples.data(), spectrum.data());
  for (std::size_t k = 0; k < binCount; ++k) {
    real[k] = spectrum[k].real();
    imaginary[k] = spectrum[k].imag();
  }
}

}  // namespace veyla
