#pragma once

#include "platform/line_chart.h"

namespace veyla {

/// Writes a moment at a chart's horizontal axis, in seconds since 1970-01-01 00:00 UTC, as its day
/// and short month, such as "14 Nov": the day first in every locale, whatever its own order, so
/// that a chart looks the same on every phone; the month is a name, which nobody takes for a day.
class DateValueFormatter : public AxisValueFormatter {
 public:
  std::string stringForValue(double value, const ChartAxis& axis) const override;
};

}  // namespace veyla
