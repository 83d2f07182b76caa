#include "acquisition/frame_colours.h"

#include <cmath>
#include <numeric>

namespace veyla {

FrameCells FrameCells::of(std::span<const double, count> red, std::span<const double, count> green,
                          std::span<const double, count> blue) {
  const auto sum = [](std::span<const double> values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
  };
  const double reds = sum(red);
  const double greens = sum(green);
  const double all = reds + greens + sum(blue);
  FrameCells cells;
  double spread = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double brightness = red[i] + green[i] + blue[i];
    cells.brightness[i] = static_cast<float>(brightness);
    // Light counts, so that a dark corner, which has no colour to speak of, weighs little.
    spread +=
        std::abs(red[i] - brightness * reds / all) + std::abs(green[i] - brightness * greens / all);
  }
  cells.colourSpread = all > 0 ? static_cast<float>(spread / all) : 0;
  return cells;
}

}  // namespace veyla
