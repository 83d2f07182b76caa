#pragma once

#include <cairo/cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/linux/scratch.h"

namespace veyla {

/// A PNG, premultiplied, of four bytes a pixel; without one it is empty.
class Picture {
 public:
  explicit Picture(const std::string& png) {
    struct Reader {
      const std::string& png;
      std::size_t at;
    } reader{png, 0};
    const auto read = [](void* from, unsigned char* data, unsigned length) {
      auto& source = *static_cast<Reader*>(from);
      if (source.png.size() - source.at < length) return CAIRO_STATUS_READ_ERROR;
      source.at += source.png.copy(reinterpret_cast<char*>(data), length, source.at);
      return CAIRO_STATUS_SUCCESS;
    };
    cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(read, &reader);
    width_ = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    // Whichever of its two formats of four bytes a pixel: what is drawn here is opaque.
    bytes_.assign(data, data + cairo_image_surface_get_stride(surface) * height);
    cairo_surface_destroy(surface);
  }

  /// The part of all pixels, 0 to 1, that differ by more than a rounding; 1 where sizes differ.
  double differenceFrom(const Picture& other) const {
    constexpr int rounding = 5;
    if (width_ != other.width_ || bytes_.size() != other.bytes_.size()) return 1;
    int different = 0;
    for (std::size_t i = 0; i < bytes_.size(); i += 4) {
      int most = 0;
      for (std::size_t k = i; k < i + 3; ++k) {
        most = std::max(most, std::abs(bytes_[k] - other.bytes_[k]));
      }
      different += most > rounding ? 1 : 0;
    }
    return different / (static_cast<double>(bytes_.size()) / 4);
  }

 private:
  int width_ = 0;
  std::vector<unsigned char> bytes_;
};

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

  double differenceFrom(const std::string& png) const {
    return Picture(png).differenceFrom(Picture(contentsOf(file_)));
  }

  std::string file_;
};

}  // namespace veyla
