#pragma once

#include <cairo/cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "tests/linux/scratch.h"

namespace veyla {

/// As much as another version of the drawing library may differ at edges.
inline constexpr double pictureTolerance = 0.0002;

inline std::string storedPicture(const std::string& name) {
  return std::string(VEYLA_PICTURES_FOLDER) + "/" + name;
}

/// A picture's width, and four bytes a pixel, in either of Cairo's formats: what is drawn here is
/// opaque.
inline std::pair<int, std::vector<unsigned char>> pixelsOf(const std::string& file) {
  cairo_surface_t* surface = cairo_image_surface_create_from_png(file.c_str());
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int size =
      cairo_image_surface_get_stride(surface) * cairo_image_surface_get_height(surface);
  const std::pair pixels(cairo_image_surface_get_width(surface), std::vector(data, data + size));
  cairo_surface_destroy(surface);
  return pixels;
}

/// The part of all pixels, 0 to 1, that differ by more than a rounding from those of the picture
/// of this name beside the tests; 1 where sizes differ.
inline double differenceFromStored(const std::string& name, const std::string& png) {
  constexpr int rounding = 5;
  const ScratchFolder folder;
  const auto [width, now] = pixelsOf(folder.write("now.png", png));
  const auto [storedWidth, stored] = pixelsOf(storedPicture(name));
  if (width != storedWidth || now.size() != stored.size()) return 1;
  int different = 0;
  for (std::size_t i = 0; i < now.size(); i += 4) {
    int most = 0;
    for (std::size_t k = i; k < i + 3; ++k) most = std::max(most, std::abs(now[k] - stored[k]));
    different += most > rounding ? 1 : 0;
  }
  return different / (static_cast<double>(now.size()) / 4);
}

/// With VEYLA_KEEP_PICTURES set the picture is stored: look at it before it is committed.
inline void expectPicture(const std::string& name, const std::string& png) {
  if (std::getenv("VEYLA_KEEP_PICTURES")) writeFile(storedPicture(name), png);
  EXPECT_LE(differenceFromStored(name, png), pictureTolerance) << name;
}

}  // namespace veyla
