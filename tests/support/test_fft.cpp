#include "tests/support/test_fft.h"

#include <algorithm>
#include <numbers>

namespace veyla {

void TestFft::forward(std::span<const double, length> samples, std::span<double, binCount> real,
                      std::span<double, binCount> imaginary) {
  if (!peaks.empty()) {
    std::fill(real.begin(), real.end(), 0.0);
    std::fill(imaginary.begin(), imaginary.end(), 0.0);
    for (const auto& [bin, value] : peaks) real[bin] = value;
    return;
  }
  const Spectrum spectrum = transform(Spectrum(samples.begin(), samples.end()));
  for (std::size_t k = 0; k < binCount; ++k) {
    real[k] = spectrum[k].real();
    imaginary[k] = spectrum[k].imag();
  }
  imaginary[0] = spectrum[binCount].real();
}

TestFft::Spectrum TestFft::transform(const Spectrum& samples) {
  const std::size_t n = samples.size();
  if (n == 1) return samples;
  Spectrum even;
  Spectrum odd;
  for (std::size_t i = 0; i < n; i += 2) {
    even.push_back(samples[i]);
    odd.push_back(samples[i + 1]);
  }
  even = transform(even);
  odd = transform(odd);
  Spectrum spectrum(n);
  for (std::size_t k = 0; k < n / 2; ++k) {
    const double angle = -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
    const auto turned = std::polar(1.0, angle) * odd[k];
    spectrum[k] = even[k] + turned;
    spectrum[k + n / 2] = even[k] - turned;
  }
  return spectrum;
}

}  // namespace veyla
