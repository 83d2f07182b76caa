#include "apps/web/page_chart.h"

#include "platform/web/page_fields.h"

namespace veyla {

EMSCRIPTEN_BINDINGS(page_chart) {
  VEYLA_VALUE(DashPattern, on, off);
  VEYLA_VALUE(ChartAxis, enabled, minimum, maximum, drawsGridLines, gridLineDash, drawsAxisLine,
              drawsLabels, drawsTopLabel, keepsEndLabelsInside, gridColor, axisLineColor,
              labelColor);
  VEYLA_VALUE(ChartInsets, left, top, right, bottom);
  VEYLA_VALUE(LineChartSettings, noDataText, scaleEnabled, dragEnabled, viewPortOffsets,
              drawsGridBackground, gridBackgroundColor, legendEnabled, leftAxis, rightAxis, xAxis);
  VEYLA_VALUE(ChartDataEntry, x, y);
  VEYLA_VALUE(LineDataSet, entries, label, color, lineWidth, drawsCircles, circleRadius,
              circleColor, drawsCircleHoles, circleHoleColor, drawsFilled, fillColor, fillAlpha);
}

void PageChart::configure(const LineChartSettings& settings) {
  settings_ = settings;
  page_.call<void>("configure", settings);
}

void PageChart::setData(const LineDataSet& data) { page_.call<void>("setData", data); }

std::string PageChart::axisText(const std::string& axis, double value) const {
  const ChartAxis& asked = axis == "x" ? settings_.xAxis : settings_.rightAxis;
  return asked.valueFormatter ? asked.valueFormatter->stringForValue(value, asked) : std::string();
}

}  // namespace veyla
