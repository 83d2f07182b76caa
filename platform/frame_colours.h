#pragma once

#include <array>
#include <cstddef>
#include <optional>

namespace veyla {

/// How the 4 × 4 cells of a frame differ.
struct FrameCells {
  static constexpr std::size_t count = 16;

  /// Of each cell, the sum of its three channels, 0 to 765.
  std::array<float, count> brightness{};
  /// How far the cells' colours, red and green as parts of their sum, lie from the frame's on
  /// average: 0 for one colour everywhere, some 0.4 for a test card.
  float colourSpread = 0;
};

/// The colours of one frame for whoever judges the finger: beside the frame record, whose values
/// are rounded as the estimates want them.
struct FrameColours {
  /// Channel means, 0 to 255.
  float red = 0;
  float green = 0;
  float blue = 0;
  /// Nothing for a frame of which only the means are known.
  std::optional<FrameCells> cells;
};

}  // namespace veyla
