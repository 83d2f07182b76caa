#pragma once

#include <cairo/cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/linux/scratch.h"

namespace veyla {

/// A picture beside the tests.
class StoredPicture {
 public:
  /// `png` is how it should look now. With VEYLA_KEEP_PICTURES set that is stored: look at it
  /// before it is committed.
  StoredPicture(const std::string& name, const std::string& png)
      : file_(std::string(VEYLA_PICTURES_FOLDER) + "/" + name) {
    if (std::getenv("VEYLA_KEEP_PICTURES")) writeFile(file_, png);
    EXPECT_LE(differenceFrom(png), tolerance) << name;
  }

  /// Expects the comparison to see a fault.
  void expectUnlike(const std::string& png, const char* fault) const {
    EXPECT_GT(differenceFrom(png), tolerance) << fault;
  }

 private:
  /// As much as another version of the drawing library may differ at edges.
  static constexpr double tolerance = 0.0002;

  struct Pixels {
    int width;
    /// Four a pixel, in either of Cairo's formats: what is drawn here is opaque.
    std::vector<unsigned char> bytes;
  };
  static Pixels pixelsOf(const std::string& file) {
    cairo_surface_t* surface = cairo_image_surface_create_from_png(file.c_str());
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int size =
        cairo_image_surface_get_stride(surface) * cairo_image_surface_get_height(surface);
    const Pixels pixels{cairo_image_surface_get_width(surface), {data, data + size}};
    cairo_surface_destroy(surface);
    return pixels;
  }

  /// The part of all pixels, 0 to 1, that differ by more than a rounding; 1 where sizes differ.
  double differenceFrom(const std::string& png) const {
    constexpr int rounding = 5;
    const ScratchFolder folder;
    const auto [width, now] = pixelsOf(folder.write("now.png", png));
    const auto [storedWidth, stored] = pixelsOf(file_);
    if (width != storedWidth || now.size() != stored.size()) return 1;
    int different = 0;
    for (std::size_t i = 0; i < now.size(); i += 4) {
      int most = 0;
      for (std::size_t k = i; k < i + 3; ++k) most = std::max(most, std::abs(now[k] - stored[k]));
      different += most > rounding ? 1 : 0;
    }
    return different / (static_cast<double>(now.size()) / 4);
  }

  std::string file_;
};

}  // namespace veyla
