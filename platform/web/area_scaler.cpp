#include "platform/web/area_scaler.h"

#include <algorithm>
#include <cmath>

namespace veyla {

namespace {

constexpr std::size_t channels = 3;

}  // namespace

void AreaScaler::scale(std::span<const std::uint8_t> rgba, std::size_t sourceWidth,
                       std::size_t sourceHeight,
                       std::span<std::uint8_t, width * height * bytesPerPixel> bgra) {
  if (sourceWidth != sourceWidth_ || sourceHeight != sourceHeight_) {
    sourceWidth_ = sourceWidth;
    sourceHeight_ = sourceHeight;
    columns_ = covers(sourceWidth, width);
    rows_ = covers(sourceHeight, height);
    line_.resize(sourceWidth * channels);
  }

  // 255 × 4096 × 4096 and a half for rounding fit in 32 bits.
  constexpr std::uint32_t total = whole * whole;
  std::uint8_t* target = bgra.data();
  for (const Cover& row : rows_) {
    std::fill(line_.begin(), line_.end(), 0U);
    for (std::size_t i = 0; i < row.weights.size(); ++i) {
      const std::uint32_t weight = row.weights[i];
      const std::uint8_t* source = &rgba[(row.first + i) * sourceWidth * bytesPerPixel];
      for (std::size_t x = 0; x < sourceWidth; ++x) {
        line_[x * channels] += source[x * bytesPerPixel] * weight;
        line_[x * channels + 1] += source[x * bytesPerPixel + 1] * weight;
        line_[x * channels + 2] += source[x * bytesPerPixel + 2] * weight;
      }
    }
    for (const Cover& column : columns_) {
      std::uint32_t red = total / 2;
      std::uint32_t green = total / 2;
      std::uint32_t blue = total / 2;
      for (std::size_t i = 0; i < column.weights.size(); ++i) {
        const std::uint32_t weight = column.weights[i];
        const std::uint32_t* sums = &line_[(column.first + i) * channels];
        red += sums[0] * weight;
        green += sums[1] * weight;
        blue += sums[2] * weight;
      }
      *target++ = static_cast<std::uint8_t>(blue / total);
      *target++ = static_cast<std::uint8_t>(green / total);
      *target++ = static_cast<std::uint8_t>(red / total);
      *target++ = 255;
    }
  }
}

std::vector<AreaScaler::Cover> AreaScaler::covers(std::size_t source, std::size_t target) {
  std::vector<Cover> covers(target);
  const double step = static_cast<double>(source) / static_cast<double>(target);
  for (std::size_t i = 0; i < target; ++i) {
    // In whole numbers, so that an edge between two pixels is exactly there.
    const std::size_t begin = i * source;
    const std::size_t end = begin + source;
    Cover& cover = covers[i];
    cover.first = begin / target;
    std::uint32_t given = 0;
    for (std::size_t pixel = cover.first; pixel * target < end; ++pixel) {
      const std::size_t covered =
          std::min(end, (pixel + 1) * target) - std::max(begin, pixel * target);
      const double share = static_cast<double>(covered) / static_cast<double>(target) / step;
      cover.weights.push_back(static_cast<std::uint32_t>(std::lround(share * whole)));
      given += cover.weights.back();
    }
    // What rounding left over or took too much belongs to the largest share.
    auto largest = std::max_element(cover.weights.begin(), cover.weights.end());
    *largest += whole - given;
  }
  return covers;
}

}  // namespace veyla
