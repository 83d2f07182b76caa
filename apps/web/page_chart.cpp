#include "apps/web/page_chart.h"

#include "platform/web/page_fields.h"

namespace veyla {

template <>
struct PageNames<LegendForm> {
  static constexpr std::array<std::string_view, 3> names{"square", "circle", "line"};
};

template <>
struct PageNames<AxisDependency> {
  static constexpr std::array<std::string_view, 2> names{"left", "right"};
};

EMSCRIPTEN_BINDINGS(page_chart) {
  VEYLA_VALUE(DashPattern, on, off);
  VEYLA_VALUE(ChartAxis, enabled, minimum, maximum, drawsGridLines, gridLineDash, drawsAxisLine,
              drawsLabels, drawsTopLabel, centersLabels, labelsBelow, keepsEndLabelsInside,
              hasGranularity, gridColor, axisLineColor, labelColor, labelFont);
  VEYLA_VALUE(ChartInsets, left, top, right, bottom);
  VEYLA_VALUE(LineChartSettings, descriptionText, descriptionColor, noDataText, scaleEnabled,
              dragEnabled, pinchZoomEnabled, viewPortOffsets, drawsGridBackground,
              gridBackgroundColor, legendEnabled, legendForm, leftAxis, rightAxis, xAxis);
  VEYLA_VALUE(ChartDataEntry, x, y);
  VEYLA_VALUE(ValueSummary, mean, minimum, maximum);
  VEYLA_VALUE(LineDataSet, entries, summary, label, axisDependency, color, lineWidth, cubic,
              drawsCircles, circleRadius, circleColor, drawsCircleHoles, circleHoleColor,
              drawsValues, valueFont, drawsFilled, fillColor, fillAlpha);
}

void PageChart::configure(const LineChartSettings& settings) {
  settings_ = settings;
  page_.call<void>("configure", settings);
}

void PageChart::setData(const LineDataSet& data) { page_.call<void>("setData", data); }

std::string PageChart::axisText(const std::string& axis, double value) const {
  const ChartAxis& asked = axis == "x"      ? settings_.xAxis
                           : axis == "left" ? settings_.leftAxis
                                            : settings_.rightAxis;
  return asked.valueFormatter ? asked.valueFormatter->stringForValue(value, asked) : std::string();
}

}  // namespace veyla
