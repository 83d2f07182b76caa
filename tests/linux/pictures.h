#pragma once

#include <cairo/cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "tests/linux/scratch.h"

namespace veyla {

/// The pixels of a PNG: premultiplied blue, green, red and alpha, row by row.
struct Picture {
  using Pixel = std::array<std::uint8_t, 4>;

  int width = 0;
  int height = 0;
  std::vector<Pixel> pixels;

  explicit Picture(const std::string& png) {
    struct Reader {
      const std::string& png;
      std::size_t at;
    } reader{png, 0};
    const auto read = [](void* from, unsigned char* data, unsigned length) {
      auto& source = *static_cast<Reader*>(from);
      if (source.png.size() - source.at < length) return CAIRO_STATUS_READ_ERROR;
      std::copy_n(source.png.begin() + static_cast<std::ptrdiff_t>(source.at), length, data);
      source.at += length;
      return CAIRO_STATUS_SUCCESS;
    };
    cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(read, &reader);
    width = std::max(0, cairo_image_surface_get_width(surface));
    height = std::max(0, cairo_image_surface_get_height(surface));
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const bool hasAlpha = cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        Pixel pixel;
        std::copy_n(data + y * stride + 4 * x, 4, pixel.begin());
        if (!hasAlpha) pixel[3] = 255;
        pixels.push_back(pixel);
      }
    }
    cairo_surface_destroy(surface);
  }

  Pixel at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

/// The part of all pixels, 0 to 1, that differ by more than a rounding; 1 where sizes differ.
inline double difference(const Picture& a, const Picture& b) {
  constexpr int rounding = 12;
  if (a.width != b.width || a.height != b.height || a.pixels.empty()) return 1;
  const auto differ = [](const Picture::Pixel& one, const Picture::Pixel& other) {
    return !std::equal(one.begin(), one.end(), other.begin(),
                       [](int x, int y) { return std::abs(x - y) <= rounding; });
  };
  const auto different = std::inner_product(a.pixels.begin(), a.pixels.end(), b.pixels.begin(), 0,
                                            std::plus<>(), differ);
  return static_cast<double>(different) / static_cast<double>(a.pixels.size());
}

/// A picture beside the tests.
class StoredPicture {
 public:
  /// `png` is how it should look now. With VEYLA_KEEP_PICTURES set that is stored: look at it
  /// before it is committed.
  StoredPicture(const std::string& name, const std::string& png) {
    const std::string file = std::string(VEYLA_PICTURES_FOLDER) + "/" + name;
    if (std::getenv("VEYLA_KEEP_PICTURES")) writeFile(file, png);
    picture_ = Picture(contentsOf(file));
    EXPECT_LE(difference(Picture(png), picture_), tolerance) << name;
  }

  /// Expects the comparison to see a fault.
  void expectUnlike(const std::string& png, const char* fault) const {
    EXPECT_GT(difference(Picture(png), picture_), tolerance) << fault;
  }

 private:
  /// As much as another version of the drawing library may differ at edges.
  static constexpr double tolerance = 0.001;

  Picture picture_{""};
};

}  // namespace veyla
