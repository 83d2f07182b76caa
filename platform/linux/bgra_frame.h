#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/capture.h"

namespace veyla {

/// The size of the low capture preset, in pixels.
constexpr std::size_t lowPresetWidth = 192;
constexpr std::size_t lowPresetHeight = 144;

/// A frame in memory, rows unpadded.
class BgraFrame : public PixelBuffer {
 public:
  static constexpr std::size_t bytesPerPixel = 4;

  BgraFrame(std::size_t width, std::size_t height)
      : width_(width), height_(height), pixels_(width * height * bytesPerPixel) {}

  bool lockBaseAddress() override { return true; }
  void unlockBaseAddress() override {}
  std::size_t width() const override { return width_; }
  std::size_t height() const override { return height_; }
  std::size_t bytesPerRow() const override { return width_ * bytesPerPixel; }
  const std::uint8_t* baseAddress() const override { return pixels_.data(); }
  std::uint8_t* baseAddress() { return pixels_.data(); }

 private:
  std::size_t width_;
  std::size_t height_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace veyla
