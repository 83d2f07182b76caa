#include "history/chart_results_view_controller.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "history/date_value_formatter.h"
#include "platform/date.h"
#include "platform/platform.h"

namespace veyla {

namespace {

constexpr Color blue{0, 0, 1, 1};

/// Decimal numbers in the device's locale.
class DecimalValueFormatter : public AxisValueFormatter {
 public:
  std::string stringForValue(double value, const ChartAxis& /*axis*/) const override {
    constexpr int maximumFractionDigits = 1;
    return services().numbers.decimal(value, maximumFractionDigits);
  }
};

/// Holds the range and shows nothing.
ChartAxis leftAxis(double min, double max, std::shared_ptr<const AxisValueFormatter> formatter) {
  ChartAxis axis;
  axis.minimum = min;
  axis.maximum = max;
  axis.drawsGridLines = false;
  axis.drawsAxisLine = false;
  axis.drawsLabels = false;
  axis.gridColor = axis.axisLineColor = axis.labelColor = black;
  axis.labelFont = Font{"HelveticaNeue-Light", 11};
  axis.valueFormatter = std::move(formatter);
  return axis;
}

ChartAxis rightAxis(double min, double max, std::shared_ptr<const AxisValueFormatter> formatter) {
  ChartAxis axis;
  axis.minimum = min;
  axis.maximum = max;
  axis.drawsAxisLine = false;
  axis.gridLineDash = DashPattern{.on = 5, .off = 2};
  axis.valueFormatter = std::move(formatter);
  return axis;
}

ChartAxis timeAxis() {
  ChartAxis axis;
  axis.centersLabels = true;
  axis.labelsBelow = true;
  axis.drawsGridLines = false;
  axis.keepsEndLabelsInside = true;
  axis.gridColor = axis.axisLineColor = axis.labelColor = black;
  axis.hasGranularity = true;
  axis.valueFormatter = std::make_shared<DateValueFormatter>();
  return axis;
}

ValueSummary summaryOf(const std::vector<ChartDataEntry>& points) {
  if (points.empty()) return {};
  ValueSummary summary{.mean = 0, .minimum = points.front().y, .maximum = points.front().y};
  for (const ChartDataEntry& point : points) {
    summary.mean += point.y / static_cast<double>(points.size());
    summary.minimum = std::min(summary.minimum, point.y);
    summary.maximum = std::max(summary.maximum, point.y);
  }
  return summary;
}

LineDataSet lineThrough(std::vector<ChartDataEntry> points, std::string_view title, Color color) {
  constexpr double fillOpacity = 65;
  constexpr double opaque = 255;
  LineDataSet line;
  line.summary = summaryOf(points);
  line.entries = std::move(points);
  line.label = title;
  line.axisDependency = AxisDependency::right;
  line.color = color;
  line.lineWidth = 1;
  line.cubic = false;
  line.drawsCircles = true;
  line.circleRadius = 5;
  line.circleColor = color;
  line.drawsCircleHoles = true;
  line.drawsValues = false;
  line.valueFont = Font{"DroidSans", 9};
  line.drawsFilled = true;
  line.fillColor = transparent;
  line.fillAlpha = fillOpacity / opaque;
  return line;
}

/// One of the period's at most six steps. Without points the ends are the wrong way around, and
/// what comes of it means nothing.
double granularityOf(double minTimestamp, double maxTimestamp) {
  constexpr double mostSteps = 6;
  const double span = maxTimestamp - minTimestamp;
  const double days = std::trunc(span / secondsPerDay) + 1;
  return span / (days < mostSteps ? days : mostSteps);
}

}  // namespace

ChartResultsViewController::ChartResultsViewController(Display& display,
                                                       ActionSheetView& actionSheetView,
                                                       LineChart& chartHeartrate,
                                                       LineChart& chartSpo2)
    : display_(display),
      actionSheetView_(actionSheetView),
      chartHeartrate_(chartHeartrate),
      chartSpo2_(chartSpo2) {}

void ChartResultsViewController::viewDidLoad() {
  logLine("hertil");
  labels_.assign(labelNames.begin(), labelNames.end());
  selectedLabel_ = noLabel;
  selectedPeriod_ = 0;
  showSelectedLabel();
}

void ChartResultsViewController::viewWillAppear() {
  initCharts(chartHeartrate_, 50, 150);
  initCharts(chartSpo2_, 90, 100);
  showChartData();
}

void ChartResultsViewController::tapSegmentPeriod(std::int32_t selectedSegmentIndex) {
  selectedPeriod_ = selectedSegmentIndex;
  showChartData();
}

void ChartResultsViewController::tapButtonLabels() {
  ActionSheet sheet{.title = "Choose label", .message = {}, .actions = {}, .tint = pureRed};
  const auto add = [&](std::string_view title, std::int32_t label) {
    sheet.actions.push_back({.title = std::string(title),
                             .style = ActionStyle::standard,
                             .action = life_.bound([this, label] { chooseLabel(label); })});
  };
  for (std::size_t i = 0; i < labels_.size(); ++i) add(labels_[i], static_cast<std::int32_t>(i));
  add("None", noLabel);
  actionSheetView_.present(sheet);
}

void ChartResultsViewController::chooseLabel(std::int32_t label) {
  selectedLabel_ = label;
  showSelectedLabel();
  showChartData();
  actionSheetView_.dismiss();
}

void ChartResultsViewController::showSelectedLabel() {
  const bool isNone = selectedLabel_ == noLabel;
  const std::string_view name = isNone ? "" : labels_[static_cast<std::size_t>(selectedLabel_)];
  display_.setText(ChartsScreen::buttonLabels, std::string(isNone ? "Choose Label" : name));
  display_.setText(ChartsScreen::buttonLabelsHighlighted,
                   std::string(isNone ? "Choose label" : name));
}

std::optional<ChartSeries> ChartResultsViewController::filterData() {
  switch (selectedPeriod_) {
    case 0:
      data_ = Utils::getLastWeekForLabel(selectedLabel_);
      return Utils::makeChartDataSets2(data_, Utils::daysOfWeek);
    case 1:
      data_ = Utils::getLastMonthForLabel(selectedLabel_);
      return Utils::makeChartDataSets2(data_, Utils::daysOfMonth);
    case 2:
      data_ = Utils::getLast3MonthsForLabel(selectedLabel_);
      return Utils::makeChartDataSets2(data_, Utils::daysOf3Months);
    case 3:
      data_ = Utils::getAllForLabel(selectedLabel_);
      return Utils::makeChartDataSets2(data_, Utils::allDays);
    default:
      return std::nullopt;
  }
}

void ChartResultsViewController::initCharts(LineChart& chart, double min, double max) {
  LineChartSettings settings;
  settings.delegate = this;
  settings.descriptionColor = black;
  settings.noDataText =
      &chart == &chartHeartrate_ ? "Not enough heartrate data" : "Not enough SpO2 data";
  settings.scaleEnabled = true;
  settings.dragEnabled = true;
  settings.pinchZoomEnabled = false;
  settings.viewPortOffsets = {.left = 15, .top = 10, .right = 35, .bottom = 35};
  settings.drawsGridBackground = true;
  settings.gridBackgroundColor = white;
  settings.legendEnabled = true;
  settings.legendForm = LegendForm::line;
  const auto formatter = std::make_shared<DecimalValueFormatter>();
  settings.leftAxis = leftAxis(min, max, formatter);
  settings.rightAxis = rightAxis(min, max, formatter);
  settings.xAxis = timeAxis();
  chart.configure(settings);
}

void ChartResultsViewController::showChartData() {
  chartHeartrate_.clear();
  chartSpo2_.clear();
  const ChartSeries series = filterData().value_or(ChartSeries{});
  const double granularity = granularityOf(series.minTimestamp, series.maxTimestamp);
  chartHeartrate_.setGranularity(granularity);
  chartSpo2_.setGranularity(granularity);
  chartHeartrate_.setData(
      lineThrough(series.hr, "heartrate (data points are averaged for each day)", pureRed));
  chartSpo2_.setData(
      lineThrough(series.spo2, "spo2 (data points are averaged for each day)", blue));
}

}  // namespace veyla
