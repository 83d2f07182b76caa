#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"
#include "platform/display.h"

namespace veyla {

/// A point of a line chart.
struct ChartDataEntry {
  double x = 0;
  double y = 0;

  bool operator==(const ChartDataEntry&) const = default;
};

struct ChartAxis;

/// Writes the values at an axis.
class AxisValueFormatter {
 public:
  virtual ~AxisValueFormatter() = default;

  virtual std::string stringForValue(double value, const ChartAxis& axis) const = 0;
};

/// How far a line is drawn and how far left out, in points, over and over.
struct DashPattern {
  double on = 0;
  double off = 0;

  bool operator==(const DashPattern&) const = default;
};

/// What stands at one side of a chart. What is not given is the chart's own choice.
struct ChartAxis {
  bool enabled = true;
  /// The ends of the range, whatever the data; without them, the data's own.
  std::optional<double> minimum;
  std::optional<double> maximum;
  bool drawsGridLines = true;
  std::optional<DashPattern> gridLineDash;
  bool drawsAxisLine = true;
  bool drawsLabels = true;
  /// The label at the end of the range, too.
  bool drawsTopLabel = true;
  /// The middle of a label stands at its value.
  bool centersLabels = false;
  /// Of the horizontal axis: below the chart and not above.
  bool labelsBelow = false;
  /// The first and the last label do not reach beyond the chart.
  bool keepsEndLabelsInside = false;
  /// Labels stand no closer than the granularity.
  bool hasGranularity = false;
  std::optional<Color> gridColor;
  std::optional<Color> axisLineColor;
  std::optional<Color> labelColor;
  std::optional<Font> labelFont;
  std::shared_ptr<const AxisValueFormatter> valueFormatter;
};

/// Distances of the data's area from the chart's edges, in points.
struct ChartInsets {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;

  bool operator==(const ChartInsets&) const = default;
};

/// Is told what the user does with a chart.
class LineChartDelegate {
 public:
  virtual ~LineChartDelegate() = default;

  virtual void chartValueSelected(const ChartDataEntry& /*entry*/) {}
};

enum class LegendForm { square, circle, line };

/// How a chart looks and behaves, whatever its data.
struct LineChartSettings {
  /// Must outlive the chart's view; may be null.
  LineChartDelegate* delegate = nullptr;
  /// A text in the data's area; may be empty.
  std::string descriptionText;
  Color descriptionColor = black;
  /// Stands in place of the chart while there are no points.
  std::string noDataText;

  // What the user's fingers may do.

  bool scaleEnabled = true;
  bool dragEnabled = true;
  /// Both directions with one pinch; otherwise each by itself.
  bool pinchZoomEnabled = false;

  ChartInsets viewPortOffsets;
  bool drawsGridBackground = false;
  Color gridBackgroundColor = white;
  bool legendEnabled = true;
  LegendForm legendForm = LegendForm::square;
  ChartAxis leftAxis;
  ChartAxis rightAxis;
  ChartAxis xAxis;
};

enum class AxisDependency { left, right };

/// What values come to all together; 0 where there are none.
struct ValueSummary {
  double mean = 0;
  double minimum = 0;
  double maximum = 0;

  bool operator==(const ValueSummary&) const = default;
};

/// A line through points, which ascend in x, with a circle at each. Lengths are in points.
struct LineDataSet {
  std::vector<ChartDataEntry> entries;
  /// Of the entries.
  ValueSummary summary{};
  /// Its name in the legend.
  std::string label;
  /// The vertical axis whose range is its own.
  AxisDependency axisDependency = AxisDependency::left;
  Color color = black;
  double lineWidth = 1;
  bool cubic = false;
  bool drawsCircles = true;
  double circleRadius = 0;
  Color circleColor = black;
  bool drawsCircleHoles = true;
  Color circleHoleColor = white;
  /// Of the values beside the points.
  bool drawsValues = true;
  Font valueFont;
  /// Of the area below the line.
  bool drawsFilled = false;
  Color fillColor;
  /// 0 to 1, on top of the colour's own.
  double fillAlpha = 1;
};

/// A chart of at most one line over a horizontal axis of time, in seconds since 1970-01-01 00:00
/// UTC.
class LineChart {
 public:
  virtual ~LineChart() = default;

  virtual void configure(const LineChartSettings& settings) = 0;

  /// Takes the data away.
  virtual void clear() = 0;
  /// In place of other data. Without entries the no-data text stands.
  virtual void setData(const LineDataSet& data) = 0;
  /// The smallest distance of the horizontal axis' labels, in seconds. Without data, and with a
  /// single point, it can be anything, be it 0 or not finite: then it says nothing.
  virtual void setGranularity(double seconds) = 0;
};

}  // namespace veyla
