#include "measuring/wm_gauge_view.h"

namespace veyla {

void WMGaugeView::setValue(float value, bool animated) {
  // Not std::clamp: a not-a-number must end at the minimum, and the range may be empty.
  value_ = value > maxValue ? maxValue : value >= minValue ? value : minValue;
  animated_ = animated;
  if (needsDisplay) needsDisplay();
}

void WMGaugeView::setUnitOfMeasurement(const std::string& text) {
  unitOfMeasurement_ = text;
  if (needsDisplay) needsDisplay();
}

}  // namespace veyla
