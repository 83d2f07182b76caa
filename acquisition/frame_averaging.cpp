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

/// Has the processor fetch these bytes meanwhile: a frame that lies in memory is waited for longer
/// than worked on.
void prefetch(const std::uint8_t* bytes, std::size_t count) {
  constexpr std::size_t cacheLine = 64;
  for (std::size_t i = 0; i < count; i += cacheLine) __builtin_prefetch(bytes + i);
}

FrameSample recordOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  const auto luma = static_cast<std::uint32_t>(0.299 * red + 0.587 * green + 0.114 * blue);
  return {static_cast<float>(red), static_cast<float>(luma), static_cast<float>(blue),
          static_cast<float>(luma)};
}

using Lanes = GridAverager::Lanes;
using Counts = std::array<std::uint32_t, Lanes{}.size()>;

/// How many samples of each lane are not above its base plus `step`, which stays within a byte.
Counts countNotAbove(std::span<const Lanes> samples, const Lanes& bases, unsigned step) {
  // Blocks short enough for a count of one byte keep sixteen counters in one register.
  constexpr std::size_t blockSize = 240;
  Lanes limits;
  for (std::size_t i = 0; i < limits.size(); ++i) {
    limits[i] = static_cast<std::uint8_t>(bases[i] + step);
  }
  Counts counts{};
  for (std::size_t start = 0; start < samples.size(); start += blockSize) {
    Lanes inBlock{};
    for (const Lanes& sample :
         samples.subspan(start).first(std::min(blockSize, samples.size() - start))) {
      for (std::size_t i = 0; i < inBlock.size(); ++i) {
        inBlock[i] = static_cast<std::uint8_t>(inBlock[i] + (sample[i] <= limits[i] ? 1 : 0));
      }
    }
    for (std::size_t i = 0; i < inBlock.size(); ++i) counts[i] += inBlock[i];
  }
  return counts;
}

/// Whether each lane's upper median is one of the `width` values from its base on.
bool holdMedians(std::span<const Lanes> samples, const Lanes& bases, unsigned width) {
  const std::size_t position = samples.size() / 2;
  const Counts below = countNotAbove(samples, bases, 0U - 1);
  const Counts within = countNotAbove(samples, bases, width - 1);
  for (std::size_t i = 0; i < bases.size(); ++i) {
    if ((bases[i] != 0 && below[i] > position) || within[i] <= position) return false;
  }
  return true;
}

/// Of each lane the upper median, as of `VectorUtils::medianOf`; 0 of no samples. Found by halving
/// the values that it can be: counting runs over all lanes alike, so that it vectorizes, which a
/// sort would not. Values about `last` come first, since a finger's frames differ little.
Lanes median(std::span<const Lanes> samples, const Lanes& last) {
  constexpr unsigned allValues = 256;
  constexpr unsigned nearValues = 8;
  if (samples.empty()) return {};
  Lanes medians;
  for (std::size_t i = 0; i < medians.size(); ++i) {
    const auto middle = std::clamp<unsigned>(last[i], nearValues / 2, allValues - nearValues / 2);
    medians[i] = static_cast<std::uint8_t>(middle - nearValues / 2);
  }
  unsigned width = nearValues;
  if (!holdMedians(samples, medians, width)) {
    medians = {};
    width = allValues;
  }
  while (width > 1) {
    width /= 2;
    const Counts below = countNotAbove(samples, medians, width - 1);
    for (std::size_t i = 0; i < medians.size(); ++i) {
      if (below[i] <= samples.size() / 2) {
        medians[i] = static_cast<std::uint8_t>(medians[i] + width);
      }
    }
  }
  return medians;
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
  starts_.clear();
  const std::size_t cellWidth = width / gridSide;
  const std::size_t cellHeight = height / gridSide;
  for (const int cell : cells) {
    if (cell < 1 || cell > static_cast<int>(gridSide * gridSide)) continue;
    const auto index = static_cast<std::size_t>(cell - 1);
    starts_.push_back(pixels + bytesPerPixel * (width * cellHeight * (index / gridSide) +
                                                cellWidth * (index % gridSide)));
  }
  for (std::size_t first = 0; first < starts_.size(); first += cellsAtOnce) {
    const auto some =
        std::span(starts_).subspan(first).first(std::min(cellsAtOnce, starts_.size() - first));
    sample(some, width, cellWidth, cellHeight);
    medians_ = median(samples_, medians_);
    for (std::size_t cell = 0; cell < some.size(); ++cell) {
      blueMedians_.push_back(medians_[bytesPerPixel * cell]);
      greenMedians_.push_back(medians_[bytesPerPixel * cell + 1]);
      redMedians_.push_back(medians_[bytesPerPixel * cell + 2]);
    }
  }
  const float red = averageOf(redMedians_);
  return {red, averageOf(greenMedians_), averageOf(blueMedians_), red};
}

std::size_t GridAverager::rowStep(std::size_t height) {
  // Each cell is sampled from its own first row on.
  return height / gridSide % samplingStep == 0 ? samplingStep : 1;
}

std::optional<FrameCells> GridAverager::cells() const {
  constexpr std::size_t count = FrameCells::count;
  if (redMedians_.size() != count) return std::nullopt;
  return cellsOf(std::span(redMedians_).first<count>(), std::span(greenMedians_).first<count>(),
                 std::span(blueMedians_).first<count>());
}

void GridAverager::sample(std::span<const std::uint8_t* const> starts, std::size_t width,
                          std::size_t cellWidth, std::size_t cellHeight) {
  const auto steps = [](std::size_t size) { return (size + samplingStep - 1) / samplingStep; };
  const std::size_t samplesInRow = steps(cellWidth);
  samples_.resize(samplesInRow * steps(cellHeight));
  const std::size_t nextRow = bytesPerPixel * width * samplingStep;
  const std::size_t rows = steps(cellHeight);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t cell = 0; cell < starts.size(); ++cell) {
      const std::uint8_t* pixel = starts[cell] + nextRow * row;
      if (row + 1 < rows) prefetch(pixel + nextRow, bytesPerPixel * cellWidth);
      for (Lanes& lanes : std::span(samples_).subspan(row * samplesInRow, samplesInRow)) {
        std::memcpy(lanes.data() + bytesPerPixel * cell, pixel, bytesPerPixel);
        pixel += bytesPerPixel * samplingStep;
      }
    }
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
