#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "platform/line_chart.h"

namespace veyla {

/// A line chart as gnuplot draws it.
///
/// Draws the range, labels, grid and line of each axis, the line with its circles and the area
/// below it, the legend's line, and the no-data text. Has no touch, so that the delegate, scaling,
/// dragging and pinching are without effect, and draws no cubic lines, no values beside the points
/// and no description. Every font is a light sans-serif of the size asked for.
///
/// The labels of the time axis stand whole days from the first point, no closer than the
/// granularity. Circles shrink where points stand too close for their size, and are left out where
/// they would be dots. Points that are not finite are left out.
class GnuplotChart : public LineChart {
 public:
  void configure(const LineChartSettings& settings) override { settings_ = settings; }
  void clear() override { data_.reset(); }
  void setData(const LineDataSet& data) override;
  void setGranularity(double seconds) override { granularity_ = seconds; }

  const LineChartSettings& settings() const { return settings_; }
  /// Its finite points; null when there are none.
  const LineDataSet* data() const { return data_ ? &*data_ : nullptr; }
  double granularity() const { return granularity_; }

 private:
  LineChartSettings settings_;
  std::optional<LineDataSet> data_;
  double granularity_ = 0;
};

enum class PictureFormat { png, svg };

/// A picture's size in points; a PNG has two pixels a point.
inline constexpr double pictureWidth = 720;
inline constexpr double pictureHeight = 540;

/// The gnuplot script that writes a picture of the charts, one below the other over one span of
/// time, with a heading, to standard output.
std::string pictureScript(std::span<const GnuplotChart> charts, const std::string& heading,
                          PictureFormat format);

/// What gnuplot made of such a script for an SVG, with the heading for its title, no titles of
/// gnuplot's own, which browsers show under the pointer, and fonts that stand in where a machine
/// lacks the first choice.
std::string polishedSvg(std::string svg, const std::string& heading);

struct TextChartStyle {
  /// At least 40.
  std::size_t columns = 80;
  bool color = false;
  /// Otherwise ASCII, but for what the formatters write.
  bool unicode = false;
};

/// A piece of the line with a point, as such a drawing shows them: for its legend.
std::string textMark(const TextChartStyle& style);

/// The script that draws one chart with data, over the time of all the charts, in characters.
std::string textScript(std::span<const GnuplotChart> charts, const GnuplotChart& chart,
                       const TextChartStyle& style);

}  // namespace veyla
