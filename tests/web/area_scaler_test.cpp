#include "platform/web/area_scaler.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

namespace veyla {
namespace {

constexpr std::size_t width = AreaScaler::width;
constexpr std::size_t height = AreaScaler::height;

/// Red, green and blue.
using Pixel = std::array<std::size_t, 3>;

class AreaScalerTest : public testing::Test {
 protected:
  void scale(std::size_t w, std::size_t h,
             const std::function<Pixel(std::size_t x, std::size_t y)>& at) {
    std::vector<std::uint8_t> rgba;
    for (std::size_t i = 0; i < w * h; ++i) {
      for (const std::size_t colour : at(i % w, i / w)) {
        rgba.push_back(static_cast<std::uint8_t>(colour));
      }
      rgba.push_back(200);
    }
    scaler_.scale(rgba, w, h, bgra_);
  }
  Pixel at(std::size_t x, std::size_t y) const {
    const std::uint8_t* place = &bgra_[(y * width + x) * AreaScaler::bytesPerPixel];
    EXPECT_EQ(place[3], 255);
    return {place[2], place[1], place[0]};
  }

  AreaScaler scaler_;
  std::array<std::uint8_t, width * height * AreaScaler::bytesPerPixel> bgra_{};
};

TEST_F(AreaScalerTest, AveragesTheAreaUnderEachPixel) {
  // Two by two pixels under each.
  scale(2 * width, 2 * height, [](std::size_t x, std::size_t y) {
    return x % 2 == 0 && y % 2 == 0 ? Pixel{200, 100, 4} : Pixel{};
  });
  EXPECT_EQ(at(10, 10), (Pixel{50, 25, 1}));
  // One and two thirds of a pixel each way: the second is covered by two thirds.
  scale(320, 240, [](std::size_t x, std::size_t) { return Pixel{x == 1 ? 255U : 0U, 0, 0}; });
  EXPECT_EQ(at(0, 0), (Pixel{102, 0, 0}));
  EXPECT_EQ(at(1, 0), (Pixel{51, 0, 0}));
  EXPECT_EQ(at(2, 0), Pixel{});
}

TEST_F(AreaScalerTest, KeepsAnEvenColourAtEverySizeAndAPictureOfTheRightOne) {
  const Pixel color{255, 1, 77};
  for (const auto& [w, h] : {std::pair{641U, 359U}, {144U, 192U}, {7U, 5U}, {7680U, 2U}}) {
    scale(w, h, [&](auto, auto) { return color; });
    for (const auto& [x, y] : {std::pair{0U, 0U}, {191U, 143U}, {95U, 70U}}) {
      EXPECT_EQ(at(x, y), color) << w << 'x' << h;
    }
  }
  const auto pattern = [](std::size_t x, std::size_t y) { return Pixel{x, y, x * y % 256}; };
  scale(width, height, pattern);
  for (std::size_t i = 0; i < width * height; i += 29) {
    EXPECT_EQ(at(i % width, i / width), pattern(i % width, i / width));
  }
}

}  // namespace
}  // namespace veyla
