#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace veyla {

/// Scales pictures to the size of the low preset. Every pixel of the result is the mean of the area
/// that it covers in the source, which may be larger or smaller and of another shape.
///
/// Keeps its tables and buffers while the source's size stays the same.
class AreaScaler {
 public:
  static constexpr std::size_t width = 192;
  static constexpr std::size_t height = 144;
  static constexpr std::size_t bytesPerPixel = 4;

  /// `rgba` are the source's pixels, row by row without gaps; `bgra` takes the result's likewise,
  /// opaque. Neither side of the source is 0.
  void scale(std::span<const std::uint8_t> rgba, std::size_t sourceWidth, std::size_t sourceHeight,
             std::span<std::uint8_t, width * height * bytesPerPixel> bgra);

 private:
  /// The source's pixels under one of the result's, along one side: the first and the last one may
  /// be covered in part. Weights add up to `whole`.
  struct Cover {
    std::size_t first = 0;
    std::vector<std::uint32_t> weights;
  };
  static constexpr std::uint32_t whole = 4096;

  static std::vector<Cover> covers(std::size_t source, std::size_t target);

  std::size_t sourceWidth_ = 0;
  std::size_t sourceHeight_ = 0;
  std::vector<Cover> columns_;
  std::vector<Cover> rows_;
  /// One row of the result at the source's width, three sums a pixel.
  std::vector<std::uint32_t> line_;
};

}  // namespace veyla
