#include "platform/web/area_scaler.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace veyla {
namespace {

constexpr std::size_t width = AreaScaler::width;
constexpr std::size_t height = AreaScaler::height;
constexpr std::size_t bytes = AreaScaler::bytesPerPixel;

struct Pixel {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  bool operator==(const Pixel&) const = default;
};

std::vector<std::uint8_t> picture(std::size_t w, std::size_t h,
                                  const std::function<Pixel(std::size_t, std::size_t)>& at) {
  std::vector<std::uint8_t> rgba;
  for (std::size_t y = 0; y < h; ++y) {
    for (std::size_t x = 0; x < w; ++x) {
      const Pixel pixel = at(x, y);
      rgba.insert(rgba.end(), {pixel.red, pixel.green, pixel.blue, 200});
    }
  }
  return rgba;
}

class Scaled {
 public:
  Scaled(std::size_t w, std::size_t h, const std::function<Pixel(std::size_t, std::size_t)>& at) {
    AreaScaler().scale(picture(w, h, at), w, h, *bgra_);
  }

  Pixel at(std::size_t x, std::size_t y) const {
    const std::uint8_t* place = &(*bgra_)[(y * width + x) * bytes];
    EXPECT_EQ(place[3], 255);
    return {place[2], place[1], place[0]};
  }

 private:
  std::unique_ptr<std::array<std::uint8_t, width* height* bytes>> bgra_ =
      std::make_unique<std::array<std::uint8_t, width * height * bytes>>();
};

TEST(AreaScaler, KeepsAnEvenColourAtEverySize) {
  const Pixel color{255, 1, 77};
  for (const auto& [w, h] :
       {std::pair{192U, 144U}, {320U, 240U}, {144U, 192U}, {641U, 359U}, {7U, 5U}}) {
    const Scaled scaled(w, h, [&](auto, auto) { return color; });
    for (const auto& [x, y] : {std::pair{0U, 0U}, {191U, 143U}, {95U, 70U}}) {
      EXPECT_EQ(scaled.at(x, y), color) << w << 'x' << h;
    }
  }
}

TEST(AreaScaler, LeavesAPictureOfTheRightSizeAsItIs) {
  const auto at = [](std::size_t x, std::size_t y) {
    return Pixel{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y),
                 static_cast<std::uint8_t>(x * y)};
  };
  const Scaled scaled(width, height, at);
  for (std::size_t y = 0; y < height; y += 7) {
    for (std::size_t x = 0; x < width; x += 5) EXPECT_EQ(scaled.at(x, y), at(x, y));
  }
}

TEST(AreaScaler, AveragesTheAreaUnderEachPixel) {
  // Two by two pixels under each.
  const Scaled half(2 * width, 2 * height, [](std::size_t x, std::size_t y) {
    return x % 2 == 0 && y % 2 == 0 ? Pixel{200, 100, 4} : Pixel{};
  });
  EXPECT_EQ(half.at(10, 10), (Pixel{50, 25, 1}));

  // One and two thirds of a pixel each way: the second is covered by two thirds.
  const Scaled parts(320, 240, [](std::size_t x, std::size_t) {
    return Pixel{static_cast<std::uint8_t>(x == 1 ? 255 : 0), 0, 0};
  });
  EXPECT_EQ(parts.at(0, 0).red, std::lround(255 * (2.0 / 3) / (5.0 / 3)));
  EXPECT_EQ(parts.at(1, 0).red, std::lround(255 * (1.0 / 3) / (5.0 / 3)));
  EXPECT_EQ(parts.at(2, 0).red, 0);
}

TEST(AreaScaler, TakesAnotherSizeInBetween) {
  AreaScaler scaler;
  auto bgra = std::make_unique<std::array<std::uint8_t, width * height * bytes>>();
  const auto even = [](auto, auto) { return Pixel{9, 9, 9}; };
  scaler.scale(picture(640, 480, even), 640, 480, *bgra);
  scaler.scale(picture(30, 50, even), 30, 50, *bgra);
  EXPECT_EQ((*bgra)[bytes * width * height - bytes], 9);
}

}  // namespace
}  // namespace veyla
