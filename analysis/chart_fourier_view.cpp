#include "analysis/chart_fourier_view.h"

#include <algorithm>

#include "platform/value.h"

namespace veyla {

void ChartFourierView::addDataPoint(float value) {
  if (!data_) return;
  if (data_->size() == capacity) data_->pop_front();
  data_->push_back(Value(value).intValue());
}

void ChartFourierView::updateChart() {
  if (needsDisplay) needsDisplay();
}

std::int32_t ChartFourierView::minData() const {
  return data().empty() ? 0 : *std::min_element(data().begin(), data().end());
}

std::int32_t ChartFourierView::maxData() const {
  return data().empty() ? 0 : *std::max_element(data().begin(), data().end());
}

void ChartFourierView::drawRect(Canvas& canvas, Size bounds) const {
  constexpr Stroke stroke{
      .color = {252.0 / 255, 61.0 / 255, 57.0 / 255, 1}, .width = 2, .join = LineJoin::round};
  constexpr std::int64_t margin = 10;
  // The first point stands lower than the scale that all others share.
  constexpr float firstPointDrop = 5;

  const Points& points = data();
  if (points.size() < fewestDrawn) return;
  const std::int64_t least = minData();
  const std::int64_t range = maxData() - least;
  if (range < 1) return;
  const auto height = static_cast<float>(static_cast<std::int64_t>(bounds.height) - margin);
  const auto rise = [&](std::int64_t value) {
    return height * static_cast<float>(value - least) / static_cast<float>(range);
  };

  canvas.beginPath();
  canvas.moveTo(0, static_cast<double>(height + firstPointDrop - rise(points.front())));
  for (std::size_t i = 1; i < points.size(); ++i) {
    canvas.lineTo(static_cast<double>(spacing * i), static_cast<double>(height - rise(points[i])));
  }
  canvas.stroke(stroke);
}

}  // namespace veyla
