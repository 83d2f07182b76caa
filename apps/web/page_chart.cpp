#include "apps/web/page_chart.h"

#include <optional>
#include <vector>

#include "apps/web/page_shell.h"

namespace veyla {

using emscripten::val;

namespace {

val colorOrNull(const std::optional<Color>& color) {
  return color ? val(cssColor(*color)) : val::null();
}

val objectOf(const ChartAxis& axis) {
  val object = val::object();
  object.set("enabled", axis.enabled);
  object.set("minimum", axis.minimum ? val(*axis.minimum) : val::null());
  object.set("maximum", axis.maximum ? val(*axis.maximum) : val::null());
  object.set("drawsGridLines", axis.drawsGridLines);
  val dash = val::array();
  if (axis.gridLineDash) {
    dash.call<void>("push", axis.gridLineDash->on);
    dash.call<void>("push", axis.gridLineDash->off);
  }
  object.set("gridLineDash", dash);
  object.set("drawsAxisLine", axis.drawsAxisLine);
  object.set("drawsLabels", axis.drawsLabels);
  object.set("drawsTopLabel", axis.drawsTopLabel);
  object.set("keepsEndLabelsInside", axis.keepsEndLabelsInside);
  object.set("gridColor", colorOrNull(axis.gridColor));
  object.set("axisLineColor", colorOrNull(axis.axisLineColor));
  object.set("labelColor", colorOrNull(axis.labelColor));
  return object;
}

}  // namespace

void PageChart::configure(const LineChartSettings& settings) {
  settings_ = settings;
  val offsets = val::object();
  offsets.set("left", settings.viewPortOffsets.left);
  offsets.set("top", settings.viewPortOffsets.top);
  offsets.set("right", settings.viewPortOffsets.right);
  offsets.set("bottom", settings.viewPortOffsets.bottom);
  val object = val::object();
  object.set("descriptionText", settings.descriptionText);
  object.set("noDataText", settings.noDataText);
  object.set("scaleEnabled", settings.scaleEnabled);
  object.set("dragEnabled", settings.dragEnabled);
  object.set("pinchZoomEnabled", settings.pinchZoomEnabled);
  object.set("viewPortOffsets", offsets);
  object.set("drawsGridBackground", settings.drawsGridBackground);
  object.set("gridBackgroundColor", cssColor(settings.gridBackgroundColor));
  object.set("legendEnabled", settings.legendEnabled);
  object.set("leftAxis", objectOf(settings.leftAxis));
  object.set("rightAxis", objectOf(settings.rightAxis));
  object.set("xAxis", objectOf(settings.xAxis));
  page_.call<void>("configure", name_, object);
}

void PageChart::setData(const LineDataSet& data) {
  std::vector<double> x;
  std::vector<double> y;
  for (const ChartDataEntry& entry : data.entries) {
    x.push_back(entry.x);
    y.push_back(entry.y);
  }
  val object = val::object();
  // Memory that the page copies before this returns.
  object.set("x", val(emscripten::typed_memory_view(x.size(), x.data())));
  object.set("y", val(emscripten::typed_memory_view(y.size(), y.data())));
  object.set("label", data.label);
  object.set("color", cssColor(data.color));
  object.set("lineWidth", data.lineWidth);
  object.set("drawsCircles", data.drawsCircles);
  object.set("circleRadius", data.circleRadius);
  object.set("circleColor", cssColor(data.circleColor));
  object.set("circleHoleColor",
             data.drawsCircleHoles ? cssColor(data.circleHoleColor) : cssColor(data.circleColor));
  Color fill = data.fillColor;
  fill.alpha *= data.drawsFilled ? data.fillAlpha : 0;
  object.set("fillColor", cssColor(fill));
  page_.call<void>("setData", name_, object);
}

std::string PageChart::axisText(const std::string& axis, double value) const {
  const ChartAxis& asked = axis == "x"      ? settings_.xAxis
                           : axis == "left" ? settings_.leftAxis
                                            : settings_.rightAxis;
  return asked.valueFormatter ? asked.valueFormatter->stringForValue(value, asked) : std::string();
}

void PageActionSheet::present(const ActionSheet& sheet) {
  sheet_ = sheet;
  val titles = val::array();
  for (const SheetAction& action : sheet.actions) {
    val each = val::object();
    each.set("title", action.title);
    each.set("isCancel", action.style == ActionStyle::cancel);
    titles.call<void>("push", each);
  }
  val object = val::object();
  object.set("title", sheet.title.value_or(""));
  object.set("message", sheet.message.value_or(""));
  object.set("tint", sheet.tint ? val(cssColor(*sheet.tint)) : val::null());
  object.set("actions", titles);
  page_.call<void>("present", object);
}

void PageActionSheet::choose(std::size_t action) {
  if (action >= sheet_.actions.size()) return;
  // A copy: the action may present another sheet.
  const auto chosen = sheet_.actions[action].action;
  if (chosen) chosen();
}

}  // namespace veyla
