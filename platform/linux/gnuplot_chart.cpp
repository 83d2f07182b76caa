#include "platform/linux/gnuplot_chart.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/date.h"
#include "platform/format.h"

namespace veyla {

namespace {

// In points, or what stands for them.
constexpr double headingHeight = 40;
constexpr double headingSize = 14;
constexpr double axisLabelSize = 11;
constexpr double legendSize = 10;
constexpr double noDataSize = 13;
constexpr double legendLineLength = 16;

constexpr const char* fontName = "Inter Light";
constexpr const char* headingFontName = "Inter Medium";
constexpr Color gridGray{0.72, 0.72, 0.75, 1};
constexpr Color labelGray{0.24, 0.24, 0.26, 1};

/// What gnuplot's terminals make of a point size of 1: the radius of a circle in points.
constexpr double pngCircleRadius = 3.2;
constexpr double svgCircleRadius = 4.62;
/// How long they draw a dash of length 1 in a line of width 1.
constexpr double pngDashLength = 0.25;
constexpr double svgDashLength = 0.5;
/// What makes of a font's size its size in points where a point has two pixels.
constexpr double pngFontScale = 2 * 0.73;

std::string number(double value) {
  std::array<char, 400> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

/// As a literal of gnuplot's that is taken to the letter.
std::string quoted(const std::string& text) {
  std::string literal = "'";
  for (const char c : text) {
    if (c == '\'') literal += '\'';
    literal += c == '\n' ? ' ' : c;
  }
  return literal + "'";
}

std::string rgb(const Color& color) {
  const auto byte = [](double component) {
    constexpr double largest = 255;
    return static_cast<unsigned>(std::lround(std::clamp(component, 0.0, 1.0) * largest));
  };
  return formatText("'#%02x%02x%02x'", byte(color.red), byte(color.green), byte(color.blue));
}

/// About as many columns as the text takes.
double lengthOf(const std::string& text) {
  return static_cast<double>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  }));
}

std::string labelOf(const ChartAxis& axis, double value) {
  return axis.valueFormatter ? axis.valueFormatter->stringForValue(value, axis) : number(value);
}

struct Range {
  double from = std::numeric_limits<double>::infinity();
  double to = -std::numeric_limits<double>::infinity();

  double length() const { return to - from; }
};

Range timesOf(std::span<const GnuplotChart> charts) {
  Range range;
  for (const GnuplotChart& chart : charts) {
    if (!chart.data()) continue;
    for (const ChartDataEntry& entry : chart.data()->entries) {
      range.from = std::min(range.from, entry.x);
      range.to = std::max(range.to, entry.x);
    }
  }
  return range;
}

/// The range with so much room at both ends that marks and labels there stay inside. `margin` and
/// `width` are in the same unit, the margin less than half the width.
Range withRoom(Range times, double margin, double width) {
  constexpr double aloneRoom = secondsPerDay / 2.0;
  const double room =
      times.length() > 0 ? times.length() * margin / (width - 2 * margin) : aloneRoom;
  return {times.from - room, times.to + room};
}

struct Label {
  double at;
  std::string text;
};

/// Labels from the first moment on, in steps of whole days, no closer than the granularity and no
/// more than fit.
std::vector<Label> timeLabels(const GnuplotChart& chart, Range times, double mostLabels) {
  const ChartAxis& axis = chart.settings().xAxis;
  if (!axis.enabled || !axis.drawsLabels) return {};
  const double fitting = times.length() / std::max(mostLabels - 1, 1.0);
  double granularity = fitting;
  if (axis.hasGranularity && std::isfinite(chart.granularity())) {
    granularity = std::max(granularity, chart.granularity());
  }
  // Steps of a few days' spans come out a hair too long or too short.
  constexpr double tolerance = 1e-6;
  const double step =
      std::max(std::ceil(granularity / secondsPerDay - tolerance), 1.0) * secondsPerDay;
  std::vector<Label> labels;
  const auto steps = static_cast<int>(times.length() / step + tolerance);
  for (int i = 0; i <= steps; ++i) {
    const double at = times.from + i * step;
    labels.push_back({at, labelOf(axis, at)});
  }
  return labels;
}

/// Round numbers that split the range into about five steps, its ends included where they are
/// whole steps away from each other.
std::vector<double> roundValues(double least, double most) {
  constexpr double mostSteps = 6;
  const double span = most - least;
  if (!(span > 0) || !std::isfinite(span)) return {};
  const double decade = std::pow(10, std::floor(std::log10(span / mostSteps)));
  double step = 10 * decade;
  for (const double factor : {1, 2, 5}) {
    if (span / (factor * decade) <= mostSteps) {
      step = factor * decade;
      break;
    }
  }
  std::vector<double> values;
  constexpr double tolerance = 1e-9;
  const auto steps = static_cast<int>(span / step + tolerance);
  for (int i = 0; i <= steps; ++i) values.push_back(least + i * step);
  return values;
}

/// A vertical axis' range: the one it was given, or the data's own.
Range valuesOf(const ChartAxis& axis, const LineDataSet& data) {
  Range range;
  for (const ChartDataEntry& entry : data.entries) {
    range.from = std::min(range.from, entry.y);
    range.to = std::max(range.to, entry.y);
  }
  if (!(range.length() > 0)) range = {range.from - 1, range.to + 1};
  return {axis.minimum.value_or(range.from), axis.maximum.value_or(range.to)};
}

std::vector<Label> valueLabels(const ChartAxis& axis, Range range) {
  std::vector<Label> labels;
  if (!axis.enabled || !axis.drawsLabels) return labels;
  for (const double value : roundValues(range.from, range.to)) {
    if (value >= range.to && !axis.drawsTopLabel) continue;
    labels.push_back({value, labelOf(axis, value)});
  }
  return labels;
}

std::string listOf(const std::vector<Label>& labels) {
  std::string list;
  for (const Label& label : labels) {
    if (!list.empty()) list += ", ";
    list += quoted(label.text) + " " + number(label.at);
  }
  return "(" + list + ")";
}

std::string dataBlock(const LineDataSet& data) {
  std::string block = "$points << end_of_points\n";
  for (const ChartDataEntry& entry : data.entries) {
    block += number(entry.x) + " " + number(entry.y) + "\n";
  }
  return block + "end_of_points\n";
}

double smallestDistance(const LineDataSet& data) {
  double distance = std::numeric_limits<double>::infinity();
  for (std::size_t i = 1; i < data.entries.size(); ++i) {
    distance = std::min(distance, data.entries[i].x - data.entries[i - 1].x);
  }
  return distance;
}

std::string rangeText(Range range) {
  return "[" + number(range.from) + ":" + number(range.to) + "]";
}

std::string fontText(const char* name, double size) {
  return " font " + quoted(std::string(name) + "," + number(size));
}

double sizeOf(const std::optional<Font>& font) {
  return font ? static_cast<double>(font->size) : axisLabelSize;
}

/// Writes the script of a picture; places in points from the top left.
class PictureWriter {
 public:
  explicit PictureWriter(PictureFormat format) : isPng_(format == PictureFormat::png) {
    const std::string font = fontText(fontName, axisLabelSize);
    line(isPng_ ? "set terminal pngcairo size " + number(2 * pictureWidth) + "," +
                      number(2 * pictureHeight) + font + " fontscale " + number(pngFontScale) +
                      " linewidth 2 pointscale 2 noenhanced background '#ffffff'"
                : "set terminal svg size " + number(pictureWidth) + "," + number(pictureHeight) +
                      font + " noenhanced background '#ffffff'");
    line("set encoding utf8");
    line("set multiplot");
    line("unset key; unset ytics; set clip one; set clip two");
  }

  std::string finish() {
    line("unset multiplot");
    return std::move(script_);
  }

  void heading(const std::string& text, double left) {
    heading_ = "set label " + quoted(text) + " at " + at(left, headingHeight / 2 + 2) + " left" +
               fontText(headingFontName, headingSize) + " tc rgb " + rgb(black);
  }

  /// A chart between two heights.
  void chart(const GnuplotChart& chart, Range times, double top, double bottom) {
    const ChartInsets& insets = chart.settings().viewPortOffsets;
    line("reset; unset key; unset ytics; set clip one; set clip two");
    line(std::exchange(heading_, ""));
    line("set lmargin at screen " + number(insets.left / pictureWidth));
    line("set rmargin at screen " + number(1 - insets.right / pictureWidth));
    line("set tmargin at screen " + number(1 - (top + insets.top) / pictureHeight));
    line("set bmargin at screen " + number(1 - (bottom - insets.bottom) / pictureHeight));
    if (chart.data()) {
      plot(chart, times, bottom);
    } else {
      noData(chart, (top + bottom) / 2);
    }
  }

 private:
  void noData(const GnuplotChart& chart, double middle) {
    line("unset border; unset xtics; unset y2tics; set xrange [0:1]; set yrange [0:1]");
    line("set label " + quoted(chart.settings().noDataText) + " at " +
         at(pictureWidth / 2, middle) + " center" + fontText(fontName, noDataSize) + " tc rgb " +
         rgb(labelGray));
    line("plot NaN notitle");
  }

  void plot(const GnuplotChart& chart, Range times, double bottom) {
    const LineChartSettings& settings = chart.settings();
    const LineDataSet& data = *chart.data();
    const double width =
        pictureWidth - settings.viewPortOffsets.left - settings.viewPortOffsets.right;
    const Range shown = withRoom(times, marginFor(chart, times, data), width);
    line("set xrange " + rangeText(shown));
    axisBelow(chart, times, width);
    verticalAxis(settings.leftAxis, valuesOf(settings.leftAxis, data), "y");
    verticalAxis(settings.rightAxis, valuesOf(settings.rightAxis, data), "y2");
    if (settings.drawsGridBackground) {
      line(
          "set object rectangle from graph 0,0 to graph 1,1 behind fillstyle solid noborder "
          "fillcolor rgb " +
          rgb(settings.gridBackgroundColor));
    }
    if (settings.legendEnabled) legend(data, settings.viewPortOffsets.left, bottom - legendSize);
    script_ += dataBlock(data);
    line("plot " + layers(data, width * smallestDistance(data) / shown.length(), settings));
  }

  /// So that circles and the outer labels stand inside the area.
  static double marginFor(const GnuplotChart& chart, Range times, const LineDataSet& data) {
    constexpr double widthOfLetter = 0.58;
    constexpr double mostMargin = 80;
    const ChartAxis& axis = chart.settings().xAxis;
    const double circle = data.circleRadius + 2 * data.lineWidth;
    if (!axis.keepsEndLabelsInside) return circle;
    const double label =
        lengthOf(labelOf(axis, times.from)) * widthOfLetter * sizeOf(axis.labelFont);
    return std::clamp(label / 2, circle, mostMargin);
  }

  void axisBelow(const GnuplotChart& chart, Range times, double width) {
    const ChartAxis& axis = chart.settings().xAxis;
    constexpr double roomPerLabel = 70;
    line(axis.enabled && axis.drawsAxisLine
             ? "set border 1 linewidth 0.5 linecolor rgb " + rgb(axis.axisLineColor.value_or(black))
             : "set border 0");
    line("set xtics " + listOf(timeLabels(chart, times, width / roomPerLabel)) +
         " nomirror scale 0 offset 0," + (isPng_ ? "0.3" : "0.4") +
         fontText(fontName, sizeOf(axis.labelFont)) + " textcolor rgb " +
         rgb(axis.labelColor.value_or(labelGray)));
    if (axis.enabled && axis.drawsGridLines) grid(axis, "xtics");
  }

  void verticalAxis(const ChartAxis& axis, Range range, const std::string& name) {
    line("set " + name + "range " + rangeText(range));
    const auto labels = valueLabels(axis, range);
    if (labels.empty()) {
      line("unset " + name + "tics");
      return;
    }
    line("set " + name + "tics " + listOf(labels) + " nomirror scale 0" +
         fontText(fontName, sizeOf(axis.labelFont)) + " textcolor rgb " +
         rgb(axis.labelColor.value_or(labelGray)));
    if (axis.drawsGridLines) grid(axis, name + "tics");
  }

  void grid(const ChartAxis& axis, const std::string& tics) {
    constexpr double width = 0.75;
    std::string dashes;
    if (axis.gridLineDash) {
      const double unit = (isPng_ ? pngDashLength : svgDashLength) * width;
      dashes = " dashtype (" + number(axis.gridLineDash->on / unit) + "," +
               number(axis.gridLineDash->off / unit) + ")";
    }
    line("set grid " + tics + " back linetype 1 linewidth " + number(width) + " linecolor rgb " +
         rgb(axis.gridColor.value_or(gridGray)) + dashes);
  }

  void legend(const LineDataSet& data, double left, double middle) {
    line("set arrow from " + at(left, middle) + " to " + at(left + legendLineLength, middle) +
         " nohead linewidth 2 linecolor rgb " + rgb(data.color));
    line("set label " + quoted(data.label) + " at " + at(left + legendLineLength + 6, middle) +
         " left" + fontText(fontName, legendSize) + " tc rgb " + rgb(black));
  }

  /// What is drawn over each other, from the back to the front. `distance` is that of the closest
  /// points.
  std::string layers(const LineDataSet& data, double distance,
                     const LineChartSettings& settings) const {
    const bool isRight = data.axisDependency == AxisDependency::right;
    const std::string points =
        std::string("$points using 1:2 axes ") + (isRight ? "x1y2" : "x1y1") + " notitle with ";
    std::vector<std::string> layers;
    if (const double alpha = data.fillColor.alpha * data.fillAlpha; data.drawsFilled && alpha > 0) {
      const ChartAxis& axis = isRight ? settings.rightAxis : settings.leftAxis;
      layers.push_back(points + "filledcurves y=" + number(valuesOf(axis, data).from) +
                       " fillstyle transparent solid " + number(alpha) +
                       " noborder fillcolor rgb " + rgb(data.fillColor));
    }
    layers.push_back(points + "lines linewidth " + number(data.lineWidth) + " linecolor rgb " +
                     rgb(data.color));
    constexpr double partOfDistance = 0.42;
    constexpr double leastRadius = 1.2;
    const double radius = std::min(data.circleRadius, partOfDistance * distance);
    if (data.drawsCircles && radius >= leastRadius) {
      layers.push_back(points + circles(radius, data.circleColor));
      if (data.drawsCircleHoles)
        layers.push_back(points + circles(radius / 2, data.circleHoleColor));
    }
    std::string list;
    for (const std::string& layer : layers) list += (list.empty() ? "" : ", ") + layer;
    return list;
  }

  std::string circles(double radius, const Color& color) const {
    constexpr const char* filledCircle = "7";
    return std::string("points pointtype ") + filledCircle + " pointsize " +
           number(radius / (isPng_ ? pngCircleRadius : svgCircleRadius)) + " linecolor rgb " +
           rgb(color);
  }

  static std::string at(double x, double y) {
    return "screen " + number(x / pictureWidth) + ", screen " + number(1 - y / pictureHeight);
  }

  void line(const std::string& text) { script_ += text + "\n"; }

  bool isPng_;
  std::string heading_;
  std::string script_;
};

}  // namespace

void GnuplotChart::setData(const LineDataSet& data) {
  data_ = data;
  std::erase_if(data_->entries, [](const ChartDataEntry& entry) {
    return !std::isfinite(entry.x) || !std::isfinite(entry.y);
  });
  if (data_->entries.empty()) data_.reset();
}

std::string pictureScript(std::span<const GnuplotChart> charts, const std::string& heading,
                          PictureFormat format) {
  PictureWriter picture(format);
  const Range times = timesOf(charts);
  const double height = (pictureHeight - headingHeight) / static_cast<double>(charts.size());
  double top = headingHeight;
  if (!charts.empty()) picture.heading(heading, charts.front().settings().viewPortOffsets.left);
  for (const GnuplotChart& chart : charts) {
    picture.chart(chart, times, top, top + height);
    top += height;
  }
  return picture.finish();
}

std::string polishedSvg(std::string svg, const std::string& heading) {
  const auto replaceAll = [&](const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = svg.find(from, at)) != std::string::npos; at += to.size()) {
      svg.replace(at, from.size(), to);
    }
  };
  const auto replaceFont = [&](const std::string& name, const std::string& weight) {
    replaceAll("font-family=\"" + name + "\"",
               "font-family=\"Inter,Helvetica Neue,Helvetica,Arial,sans-serif\" font-weight=\"" +
                   weight + "\"");
  };
  replaceFont(fontName, "300");
  replaceFont(headingFontName, "500");
  constexpr std::string_view end = "</title>";
  for (std::size_t at = 0; (at = svg.find("<title>gnuplot", at)) != std::string::npos;) {
    svg.erase(at, svg.find(end, at) + end.size() - at);
  }
  replaceAll("<title>Gnuplot</title>", "<title>" + heading + "</title>");
  return svg;
}

std::string textMark(const TextChartStyle& style) {
  const std::string line = style.color ? "-" : "*";
  return line + (style.unicode ? "●" : "o") + line;
}

std::string textScript(std::span<const GnuplotChart> charts, const GnuplotChart& chart,
                       const TextChartStyle& style) {
  // Rows of the area are two a label and one for the first.
  constexpr double rows = 14;
  constexpr double left = 1;
  constexpr double rightOfArea = 6;
  const auto columns = static_cast<double>(style.columns);
  const LineChartSettings& settings = chart.settings();
  const LineDataSet& data = *chart.data();
  const bool isRight = data.axisDependency == AxisDependency::right;
  const ChartAxis& axis = isRight ? settings.rightAxis : settings.leftAxis;
  const Range values = valuesOf(axis, data);
  const auto labels = valueLabels(axis, values);
  const Range times = timesOf(charts);
  const double width = columns - left - rightOfArea;
  const double labelWidth = lengthOf(labelOf(settings.xAxis, times.from));
  const Range shown = withRoom(times, std::min(labelWidth / 2 + 1, width / 4), width);

  std::string script = "set terminal dumb size " + number(columns) + "," + number(rows) +
                       " noenhanced " + (style.color ? "ansi" : "mono") + "\n";
  const auto line = [&](const std::string& text) { script += text + "\n"; };
  line("set encoding utf8");
  line("unset key; unset ytics; set border 0; set clip one; set clip two");
  line("set lmargin at screen " + number(left / columns));
  line("set rmargin at screen " + number(1 - rightOfArea / columns));
  line("set tmargin 0.5; set bmargin 2");
  line("set xrange " + rangeText(shown));
  line("set yrange " + rangeText(values));
  line("unset xtics");
  for (const Label& label : timeLabels(chart, times, width / (labelWidth + 4))) {
    line("set label " + quoted(label.text) + " at first " + number(label.at) +
         ", graph 0 center offset 0,-1");
  }
  std::string grid;
  for (const Label& label : labels) {
    line("set label " + quoted(label.text) + " at graph 1, first " + number(label.at) +
         " left offset 2,0");
    grid += (grid.empty() ? "" : ", ") + number(label.at);
  }
  // Dots in every second column, where gnuplot's own grid fills them all. In colour, its black is
  // the terminal's gray.
  line("set samples " + number(std::floor(width / 2) + 1));
  script += dataBlock(data);
  line("array heights = [" + grid + "]");
  line(std::string("plot for [i=1:|heights|] heights[i] notitle with points pointtype ") +
       (style.unicode ? "'·'" : "'.'") + " linecolor rgb '#000000', $points using 1:2 notitle " +
       "with lines linetype 1 linecolor rgb " + rgb(data.color) +
       ", $points using 1:2 notitle with points pointtype " + (style.unicode ? "'●'" : "'o'") +
       " linecolor rgb " + rgb(data.color));
  return script;
}

}  // namespace veyla
