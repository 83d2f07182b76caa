#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "acquisition/data.h"
#include "acquisition/settings.h"
#include "platform/linux/bgra_frame.h"

namespace veyla {

inline void withHeartrateSettings(Value::Dictionary settings) {
  Utils::setHeartrateSettings(Value(std::move(settings)));
}
inline void withSpo2Settings(Value::Dictionary settings) {
  Utils::setSpo2Settings(Value(std::move(settings)));
}
inline void withCameraSettings(Value::Dictionary settings) {
  Utils::setCameraSettings(Value(std::move(settings)));
}

/// `periods` whole periods of a cosine of amplitude 10 around 100 over `length` samples, from its
/// crest on, or by `phase` (in periods) later.
inline std::vector<float> wave(double periods, std::size_t length = 1024, double phase = 0) {
  std::vector<float> samples;
  for (std::size_t i = 0; i < length; ++i) {
    const double turns = periods * static_cast<double>(i) / static_cast<double>(length) + phase;
    samples.push_back(static_cast<float>(100 + 10 * std::cos(2 * std::numbers::pi * turns)));
  }
  return samples;
}

/// A pulse with its first harmonic like a photoplethysmogram's, at 15 frames a second, on a breath
/// of 15 a minute that swings as far as `breath`.
inline std::vector<float> photoplethysmogram(double bpm, double seconds = 14, double breath = 0) {
  std::vector<float> series;
  for (int i = 0; i < 15 * seconds; ++i) {
    const double beats = 2 * std::numbers::pi * bpm / 60 * i / 15;
    const double breaths = 2 * std::numbers::pi * 0.25 * i / 15;
    series.push_back(static_cast<float>(150 + std::sin(beats) + 0.5 * std::sin(2 * beats + 1) +
                                        breath * std::sin(breaths)));
  }
  return series;
}

/// All pixels alike to begin with; rows are padded, on request, by so many pixels of 255.
class TestFrame : public BgraFrame {
 public:
  struct Pixel {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
  };

  TestFrame(std::size_t width, std::size_t height, Pixel pixel, std::size_t padding = 0)
      : BgraFrame(width + padding, height), width_(width) {
    std::fill_n(baseAddress(), bytesPerRow() * height, std::uint8_t{255});
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x) set(x, y, pixel);
    }
  }

  bool lockable = true;
  int unlocks = 0;

  void set(std::size_t x, std::size_t y, Pixel pixel) {
    std::uint8_t* address = baseAddress() + y * bytesPerRow() + bytesPerPixel * x;
    address[0] = pixel.blue;
    address[1] = pixel.green;
    address[2] = pixel.red;
  }

  bool lockBaseAddress() override { return lockable; }
  void unlockBaseAddress() override { ++unlocks; }
  std::size_t width() const override { return width_; }

 private:
  std::size_t width_;
};

}  // namespace veyla
