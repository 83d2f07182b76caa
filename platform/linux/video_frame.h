#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace veyla {

/// How much of a pixel's brightness its red and its blue are; green is the rest.
struct ColourMatrix {
  double red;
  double blue;
};

/// A frame as videos hold it: the brightness of each pixel, and of each square of four pixels how
/// far blue and red differ from it. Samples are of limited range, rows unpadded.
class VideoFrame {
 public:
  struct Plane {
    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> samples;
  };

  /// From this many rows on videos have BT.709's matrix, below it BT.601's.
  static constexpr std::size_t highDefinitionRows = 720;
  static constexpr ColourMatrix matrixFor(std::size_t height) {
    return height >= highDefinitionRows ? ColourMatrix{0.2126, 0.0722} : ColourMatrix{0.299, 0.114};
  }

  /// Both even.
  VideoFrame(std::size_t width, std::size_t height)
      : planes_{planeOf(width, height), planeOf(width / 2, height / 2),
                planeOf(width / 2, height / 2)} {}

  /// Brightness, blue, red.
  std::array<Plane, 3>& planes() { return planes_; }
  const std::array<Plane, 3>& planes() const { return planes_; }

 private:
  static Plane planeOf(std::size_t width, std::size_t height) {
    return {width, height, std::vector<std::uint8_t>(width * height)};
  }

  std::array<Plane, 3> planes_;
};

}  // namespace veyla
