#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/capture.h"

/// From the pixels of one frame (bytes blue, green, red, alpha) to its frame record.
namespace veyla {

/// The device profile whose frames are averaged whole; all others average grid cells.
inline constexpr std::string_view wholeFrameProfile = "iphone4";

/// Every pixel counts; the pulse value and the green slot carry the luma. The last pixel of an odd
/// row is left out of the sums but not of the divisor. A frame without pixels gives zeros.
/// `colours`, where asked for, gets the means with their fractions.
FrameSample averageWholeFrame(const std::uint8_t* pixels, std::size_t width, std::size_t height,
                              std::size_t bytesPerRow, FrameColours* colours = nullptr);

/// The same record from the channel means of a frame, whose fractions the sums of its bytes lose. A
/// record that is a whole frame's already, whole numbers with the luma in both its places, stays as
/// it is. So do means that look like one, whole numbers with as much green as red: they cannot be
/// told apart, and are of no finger, whose red is far above its green.
FrameSample wholeFrameRecord(const FrameSample& means);

/// How cells differ, from their channels, 0 to 255 each.
FrameCells cellsOf(std::span<const double, FrameCells::count> red,
                   std::span<const double, FrameCells::count> green,
                   std::span<const double, FrameCells::count> blue);

/// Averages grid cells; keeps its buffers from frame to frame, so that a frame allocates nothing.
class GridAverager {
 public:
  static constexpr std::size_t cellsAtOnce = 16;
  /// The pixels at one place of so many cells, side by side: blue, green, red and alpha of each.
  using Lanes = std::array<std::uint8_t, 4 * cellsAtOnce>;

  /// The mean over `cells` of the medians of every fourth pixel of every fourth row; the pulse
  /// value is the red one. Cells are numbered 1 to 16, row by row, in a 4 × 4 division of the
  /// frame; other numbers name no pixels and are passed over. Rows are taken to be unpadded.
  /// Without cells every value is not-a-number.
  FrameSample average(const std::uint8_t* pixels, std::size_t width, std::size_t height,
                      std::span<const int> cells);

  /// Which rows of a frame of that height are sampled: the first and every so many-th after it.
  static std::size_t rowStep(std::size_t height);

  /// How the cells of the last frame differed; nothing unless all of them were averaged.
  std::optional<FrameCells> cells() const;

 private:
  /// Fills `samples_` from the cells that begin at `starts`, `cellsAtOnce` of them at the most.
  void sample(std::span<const std::uint8_t* const> starts, std::size_t width, std::size_t cellWidth,
              std::size_t cellHeight);

  std::vector<const std::uint8_t*> starts_;
  std::vector<Lanes> samples_;
  /// Of the samples.
  Lanes medians_{};
  /// A median per cell.
  std::vector<double> redMedians_;
  std::vector<double> greenMedians_;
  std::vector<double> blueMedians_;
};

/// Where a frame's pixels lie; valid as long as its buffer is locked or not yet released.
struct FramePixels {
  const std::uint8_t* address = nullptr;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t bytesPerRow = 0;
};

/// What a measurement takes from a frame: of all its pixels, or of these cells by `averager`.
AveragedFrame averagedFrame(const FramePixels& pixels, bool wholeFrame, std::span<const int> cells,
                            GridAverager& averager);
/// The same of a frame whose channel means alone are known.
AveragedFrame averagedFrame(const FrameSample& means, bool wholeFrame);

}  // namespace veyla
