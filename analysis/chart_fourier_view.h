#pragma once

#include <any>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

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

  /// How a view comes about: from the interface's description, as on the measuring screen, or with
  /// a frame alone. The latter has no list of points: it takes them silently and draws nothing.
  enum class Creation { description, frame };

  explicit ChartFourierView(Creation creation = Creation::description) {
    if (creation == Creation::description) data_.emplace();
  }

  // Free for callers: the drawing finds its own bounds.
  std::int32_t dataMin = 0;
  std::int32_t dataMax = 0;
  std::int32_t dataDiffMinMax = 0;
  /// Cleared by `reset` and not otherwise used.
  std::any fobj;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// Appends the value truncated toward zero; the oldest of 90 goes first.
  void addDataPoint(float value);

  /// Asks for a redraw.
  void updateChart();

  /// Does nothing: points come in through `addDataPoint` alone.
  void update(float /*value*/) {}

  /// Removes all points.
  void reset() {
    fobj.reset();
    if (data_) data_->clear();
  }

  /// The smallest and the largest point; 0 without points.
  std::int32_t minData() const;
  std::int32_t maxData() const;

  using Points = std::deque<std::int32_t>;

  /// Oldest first; empty for a view without a list.
  const Points& data() const {
    static const Points none;
    return data_ ? *data_ : none;
  }
  void setData(Points data) { data_ = std::move(data); }

  /// Draws the curve from the left edge on, whatever the width; larger values higher, the largest
  /// at the top. Nothing for a flat one.
  void drawRect(Canvas& canvas, Size bounds) const;

 private:
  std::optional<Points> data_;
};

}  // namespace veyla
