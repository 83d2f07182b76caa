#include "apps/web/page_chart.h"

#include <emscripten/bind.h>

#include "platform/web/page_types.h"

namespace veyla {

EMSCRIPTEN_BINDINGS(page_chart) {
  emscripten::value_array<DashPattern>("DashPattern")
      .element(&DashPattern::on)
      .element(&DashPattern::off);
  emscripten::value_object<ChartAxis>("ChartAxis")
      .field("enabled", &ChartAxis::enabled)
      .field("minimum", &ChartAxis::minimum)
      .field("maximum", &ChartAxis::maximum)
      .field("drawsGridLines", &ChartAxis::drawsGridLines)
      .field("gridLineDash", &ChartAxis::gridLineDash)
      .field("drawsAxisLine", &ChartAxis::drawsAxisLine)
      .field("drawsLabels", &ChartAxis::drawsLabels)
      .field("drawsTopLabel", &ChartAxis::drawsTopLabel)
      .field("keepsEndLabelsInside", &ChartAxis::keepsEndLabelsInside)
      .field("gridColor", &ChartAxis::gridColor)
      .field("axisLineColor", &ChartAxis::axisLineColor)
      .field("labelColor", &ChartAxis::labelColor);
  emscripten::value_object<ChartInsets>("ChartInsets")
      .field("left", &ChartInsets::left)
      .field("top", &ChartInsets::top)
      .field("right", &ChartInsets::right)
      .field("bottom", &ChartInsets::bottom);
  emscripten::value_object<LineChartSettings>("LineChartSettings")
      .field("noDataText", &LineChartSettings::noDataText)
      .field("scaleEnabled", &LineChartSettings::scaleEnabled)
      .field("dragEnabled", &LineChartSettings::dragEnabled)
      .field("viewPortOffsets", &LineChartSettings::viewPortOffsets)
      .field("drawsGridBackground", &LineChartSettings::drawsGridBackground)
      .field("gridBackgroundColor", &LineChartSettings::gridBackgroundColor)
      .field("legendEnabled", &LineChartSettings::legendEnabled)
      .field("leftAxis", &LineChartSettings::leftAxis)
      .field("rightAxis", &LineChartSettings::rightAxis)
      .field("xAxis", &LineChartSettings::xAxis);
  emscripten::value_object<ChartDataEntry>("ChartDataEntry")
      .field("x", &ChartDataEntry::x)
      .field("y", &ChartDataEntry::y);
  emscripten::value_object<LineDataSet>("LineDataSet")
      .field("entries", &LineDataSet::entries)
      .field("label", &LineDataSet::label)
      .field("color", &LineDataSet::color)
      .field("lineWidth", &LineDataSet::lineWidth)
      .field("drawsCircles", &LineDataSet::drawsCircles)
      .field("circleRadius", &LineDataSet::circleRadius)
      .field("circleColor", &LineDataSet::circleColor)
      .field("drawsCircleHoles", &LineDataSet::drawsCircleHoles)
      .field("circleHoleColor", &LineDataSet::circleHoleColor)
      .field("drawsFilled", &LineDataSet::drawsFilled)
      .field("fillColor", &LineDataSet::fillColor)
      .field("fillAlpha", &LineDataSet::fillAlpha);
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
