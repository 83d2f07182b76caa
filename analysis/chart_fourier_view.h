#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>

#include "platform/canvas.h"

namespace veyla {

/// The live pulse curve: the last 90 values of the pulse signal as whole numbers, oldest first,
/// drawn between their own least and greatest.
class ChartFourierView {
 public:
  static constexpr std::size_t capacity = 90;
  /// Fewer points are not drawn.
  static constexpr std::size_t fewestDrawn = 10;
  /// From one point to the next, in points of the drawing.
  static constexpr int spacing = 3;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// Appends the value truncated toward zero; the oldest of 90 goes first.
  void addDataPoint(float value);

  /// Asks for a redraw.
  void updateChart();

  /// Does nothing: points come in through `addDataPoint` alone.
  void update(float /*value*/) {}

  /// Removes all points.
  void reset() { data_.clear(); }

  /// The smallest and the largest point; 0 without points.
  std::int32_t minData() const;
  std::int32_t maxData() const;

  const std::deque<std::int32_t>& data() const { return data_; }

  /// Draws the curve from the left edge on, whatever the width; larger values higher, the largest
  /// at the top. Nothing for a flat one.
  void drawRect(Canvas& canvas, Size bounds) const;

 private:
  std::deque<std::int32_t> data_;
};

}  // namespace veyla
