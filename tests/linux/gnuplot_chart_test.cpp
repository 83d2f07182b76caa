#include "platform/linux/gnuplot_chart.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>

#include "platform/linux/gnuplot_program.h"

namespace veyla {
namespace {

using testing::HasSubstr;

constexpr double day = 86400;
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Labels are the days since the start.
class DayFormatter : public AxisValueFormatter {
 public:
  std::string stringForValue(double value, const ChartAxis& /*axis*/) const override {
    return "day " + std::to_string(std::lround(value / day));
  }
};

GnuplotChart chartOf(const std::vector<ChartDataEntry>& entries, double granularity = day) {
  LineChartSettings settings;
  settings.noDataText = "Don't `draw` this";
  settings.viewPortOffsets = {15, 10, 35, 35};
  settings.rightAxis.minimum = 50;
  settings.rightAxis.maximum = 150;
  settings.rightAxis.gridLineDash = DashPattern{5, 2};
  settings.xAxis.hasGranularity = true;
  settings.xAxis.valueFormatter = std::make_shared<DayFormatter>();
  LineDataSet data;
  data.entries = entries;
  data.label = "the line";
  data.axisDependency = AxisDependency::right;
  data.color = {0, 0, 1, 1};
  data.lineWidth = 3;
  data.circleRadius = 5;
  data.circleColor = {1, 0, 0, 1};
  data.circleHoleColor = {0, 1, 0, 1};
  data.drawsCircleHoles = true;
  GnuplotChart chart;
  chart.configure(settings);
  chart.setData(data);
  chart.setGranularity(granularity);
  return chart;
}

GnuplotChart chartOfDays(int days, double granularity = day) {
  std::vector<ChartDataEntry> entries;
  for (int i = 0; i <= days; ++i) entries.push_back({i * day, 70});
  return chartOf(entries, granularity);
}

std::string scriptOf(const GnuplotChart& chart) {
  return pictureScript(std::span(&chart, 1), "Heading", PictureFormat::png);
}

TEST(GnuplotChartTest, LabelsStandWholeDaysApartNoCloserThanTheGranularityAndPointsAreFinite) {
  EXPECT_THAT(scriptOf(chartOfDays(2, 57600)),
              HasSubstr("xtics ('day 0' 0, 'day 1' 86400, 'day 2' 172800)"));
  EXPECT_THAT(scriptOf(chartOfDays(29, 29 * day / 6)),
              HasSubstr("'day 5' 432000, 'day 10' 864000, 'day 15'"));
  // Neither a single point nor what a granularity says without points is in the way.
  for (const double granularity : {0.0, -86404.0, infinity, std::nan("")}) {
    EXPECT_THAT(scriptOf(chartOf({{day, 70}}, granularity)), HasSubstr("xtics ('day 1' 86400)"));
  }
  EXPECT_THAT(scriptOf(chartOf({{0, 200}, {0, infinity}, {std::nan(""), 70}, {day, 20}})),
              HasSubstr("end_of_points\n0 200\n86400 20\nend_of_points"));
}

TEST(GnuplotChartTest, APictureHasTwoPixelsAPointAndAnSvgFontsForAnyMachine) {
  const std::array charts{chartOfDays(6), chartOf({{0, -infinity}})};
  const std::string png = runGnuplot(pictureScript(charts, "It's", PictureFormat::png));
  // 1440 by 1080.
  EXPECT_THAT(png, HasSubstr(std::string("IHDR\0\0\5\xA0\0\0\4\x38", 12)));
  const std::string svg =
      polishedSvg(runGnuplot(pictureScript(charts, "It's", PictureFormat::svg)), "It's");
  for (const char* text : {"<title>It's</title>", "the line", "day 6", ">130<", "Don't `draw` this",
                           "stroke-width=\"3.00\"", "'rgb(  0,   0, 255)'  d='M26.00,214.00",
                           "4.46)' color='rgb(255,   0,   0)'", "2.23)' color='rgb(  0, 255,   0)'",
                           "sans-serif\" font-weight=\"300\"", "dasharray='5.0,2.0'"}) {
    EXPECT_THAT(svg, HasSubstr(text));
  }
}

}  // namespace
}  // namespace veyla
