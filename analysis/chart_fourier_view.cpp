#include "analysis/chart_fourier_view.h"

#include <algorithm>

#include "platform/value.h"

namespace veyla {

void ChartFourierView::addDataPoint(float value) {
  if (data_.size() == capacity) data_.pop_front();
  data_.push_back(Value(value).intValue());
}

void ChartFourierView::updateChart() {
  if (needsDisplay) needsDisplay();
}

std::int32_t ChartFourierView::minData() const {
  return data_.empty() ? 0 : *std::min_element(data_.begin(), data_.end());
}

std::int32_t ChartFourierView::maxData() const {
  return data_.empty() ? 0 : *std::max_element(data_.begin(), data_.end());
}

}  // namespace veyla
