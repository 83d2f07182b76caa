#include "acquisition/frame_averaging.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>

#include "analysis/vector_utils.h"

namespace veyla {

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::size_t bytesPerPixel = 4;
constexpr std::size_t gridSide = 4;
constexpr std::size_t samplingStep = 4;

struct ChannelSums {
  std::uint32_t blue = 0;
  std::uint32_t green = 0;
  std::uint32_t red = 0;
};

/// Blue in the lowest byte, as the bytes lie on the little-endian machines that phones and PCs are.
std::uint32_t pixelAt(const std::uint8_t* address) {
  std::uint32_t pixel;
  std::memcpy(&pixel, address, sizeof pixel);
  return pixel;
}

void addRow(const std::uint8_t* row, std::size_t pixelCount, ChannelSums& sums) {
  // Two channels share one word, sixteen bits apart: 257 bytes fit before the lower one overflows.
  constexpr std::size_t blockSize = 256;
  for (std::size_t start = 0; start < pixelCount; start += blockSize) {
    const std::size_t end = std::min(start + blockSize, pixelCount);
    std::uint32_t firstAndThird = 0;
    std::uint32_t secondAndFourth = 0;
    for (std::size_t i = start; i < end; ++i) {
      const std::uint32_t pixel = pixelAt(row + bytesPerPixel * i);
      firstAndThird += pixel & 0x00FF00FF;
      secondAndFourth += (pixel >> 8) & 0x00FF00FF;
    }
    sums.blue += firstAndThird & 0xFFFF;
    sums.red += firstAndThird >> 16;
    sums.green += secondAndFourth & 0xFFFF;
  }
}

FrameSample recordOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  const auto luma = static_cast<std::uint32_t>(0.299 * red + 0.587 * green + 0.114 * blue);
  return {static_cast<float>(red), static_cast<float>(luma), static_cast<float>(blue),
          static_cast<float>(luma)};
}

float averageOf(std::span<const double> cellMedians) {
  return static_cast<float>(calculateStat(cellMedians, "average").value_or(0));
}

}  // namespace

FrameSample averageWholeFrame(const std::uint8_t* pixels, std::size_t width, std::size_t height,
                              std::size_t bytesPerRow, FrameColours* colours) {
  const auto n = static_cast<std::uint32_t>(width * height);
  if (n == 0) return {};

  ChannelSums sums;
  const std::size_t pairedPixels = width / 2 * 2;
  for (std::size_t y = 0; y < height; ++y) addRow(pixels + y * bytesPerRow, pairedPixels, sums);

  if (colours) {
    const auto mean = [n](std::uint32_t sum) {
      return static_cast<float>(static_cast<double>(sum) / n);
    };
    *colours = {mean(sums.red), mean(sums.green), mean(sums.blue), std::nullopt};
  }
  return recordOf(sums.red / n, sums.green / n, sums.blue / n);
}

FrameSample wholeFrameRecord(const FrameSample& means) {
  const float red = std::trunc(means.red);
  const float blue = std::trunc(means.blue);
  const bool isOne = means.hr == means.green && means.hr == std::trunc(means.hr) &&
                     means.red == red && means.blue == blue;
  if (isOne) return means;
  return recordOf(static_cast<std::uint32_t>(red), static_cast<std::uint32_t>(means.green),
                  static_cast<std::uint32_t>(blue));
}

FrameCells cellsOf(std::span<const double, FrameCells::count> red,
                   std::span<const double, FrameCells::count> green,
                   std::span<const double, FrameCells::count> blue) {
  const auto sum = [](std::span<const double> values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
  };
  const double reds = sum(red);
  const double greens = sum(green);
  const double all = reds + greens + sum(blue);
  FrameCells cells;
  double spread = 0;
  for (std::size_t i = 0; i < FrameCells::count; ++i) {
    const double brightness = red[i] + green[i] + blue[i];
    cells.brightness[i] = static_cast<float>(brightness);
    // Light counts, so that a dark corner, which has no colour to speak of, weighs little.
    spread +=
        std::abs(red[i] - brightness * reds / all) + std::abs(green[i] - brightness * greens / all);
  }
  cells.colourSpread = all > 0 ? static_cast<float>(spread / all) : 0;
  return cells;
}

FrameSample GridAverager::average(const std::uint8_t* pixels, std::size_t width, std::size_t height,
                                  std::span<const int> cells) {
  redMedians_.clear();
  greenMedians_.clear();
  blueMedians_.clear();
  for (const int cell : cells) {
    if (cell < 1 || cell > static_cast<int>(gridSide * gridSide)) continue;
    sampleCell(pixels, width, height, cell);
    splitChannels();
    redMedians_.push_back(median(red_));
    greenMedians_.push_back(median(green_));
    blueMedians_.push_back(median(blue_));
  }
  const float red = averageOf(redMedians_);
  return {red, averageOf(greenMedians_), averageOf(blueMedians_), red};
}

std::optional<FrameCells> GridAverager::cells() const {
  constexpr std::size_t count = FrameCells::count;
  if (redMedians_.size() != count) return std::nullopt;
  return cellsOf(std::span(redMedians_).first<count>(), std::span(greenMedians_).first<count>(),
                 std::span(blueMedians_).first<count>());
}

void GridAverager::sampleCell(const std::uint8_t* pixels, std::size_t width, std::size_t height,
                              int cell) {
  const std::size_t cellWidth = width / gridSide;
  const std::size_t cellHeight = height / gridSide;
  const std::size_t column = static_cast<std::size_t>(cell - 1) % gridSide;
  const std::size_t row = static_cast<std::size_t>(cell - 1) / gridSide;

  pixels_.clear();
  for (std::size_t y = row * cellHeight; y < (row + 1) * cellHeight; y += samplingStep) {
    const std::uint8_t* start = pixels + bytesPerPixel * width * y;
    for (std::size_t x = column * cellWidth; x < (column + 1) * cellWidth; x += samplingStep) {
      pixels_.push_back(pixelAt(start + bytesPerPixel * x));
    }
  }
}

/// In a loop of its own, over pixels that lie side by side: it vectorizes.
void GridAverager::splitChannels() {
  const std::size_t count = pixels_.size();
  red_.resize(count);
  green_.resize(count);
  blue_.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t pixel = pixels_[i];
    blue_[i] = static_cast<std::uint8_t>(pixel);
    green_[i] = static_cast<std::uint8_t>(pixel >> 8);
    red_[i] = static_cast<std::uint8_t>(pixel >> 16);
  }
}

AveragedFrame averagedFrame(const FramePixels& pixels, bool wholeFrame, std::span<const int> cells,
                            GridAverager& averager) {
  const auto& [address, width, height, bytesPerRow] = pixels;
  AveragedFrame frame;
  if (wholeFrame) {
    frame.record = averageWholeFrame(address, width, height, bytesPerRow, &frame.colours);
    return frame;
  }
  frame.record = averager.average(address, width, height, cells);
  const FrameSample& means = frame.record;
  frame.colours = {means.red, means.green, means.blue, averager.cells()};
  return frame;
}

AveragedFrame averagedFrame(const FrameSample& means, bool wholeFrame) {
  return {wholeFrame ? wholeFrameRecord(means) : means,
          {means.red, means.green, means.blue, std::nullopt}};
}

}  // namespace veyla
