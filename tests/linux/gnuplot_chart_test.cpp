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

TEST(GnuplotChartTest, LabelsStandWholeDaysApartNoCloserThanTheGranularity) {
  EXPECT_THAT(scriptOf(chartOfDays(2, 57600)),
              HasSubstr("xtics ('day 0' 0, 'day 1' 86400, 'day 2' 172800)"));
  EXPECT_THAT(scriptOf(chartOfDays(29, 29 * day / 6)),
              HasSubstr("'day 5' 432000, 'day 10' 864000, 'day 15'"));
  // Neither a single point nor what a granularity says without points is in the way.
  for (const double granularity : {0.0, -86404.0, infinity, std::nan("")}) {
    EXPECT_THAT(scriptOf(chartOf({{day, 70}}, granularity)), HasSubstr("xtics ('day 1' 86400)"));
  }
}

TEST(GnuplotChartTest, TheLineItsCirclesAndItsAxisAreAsConfiguredAndPointsAreFinite) {
  const std::string points = R"(\$points using 1:2 axes x1y2 notitle with )";
  for (const std::string& part :
       {std::string(R"(set y2range \[50:150\])"),  // which does not follow the data
        std::string("set y2tics .'50' 50, '70' 70, '90' 90, '110' 110, '130' 130, '150' 150. "),
        std::string("end_of_points\n0 200\n86400 20\nend_of_points"),
        "plot " + points + "lines linewidth 3 linecolor rgb '#0000ff', " + points +
            "points pointtype 7 pointsize [0-9.]+ linecolor rgb '#ff0000', .*'#00ff00'"}) {
    EXPECT_THAT(scriptOf(chartOf({{0, 200}, {0, infinity}, {std::nan(""), 70}, {day, 20}})),
                testing::ContainsRegex(part));
  }
  EXPECT_THAT(scriptOf(chartOf({{0, -infinity}})), HasSubstr("'Don''t `draw` this'"));
}

TEST(GnuplotChartTest, CirclesGiveWayWherePointsStandClose) {
  const auto circles = [](int days) {
    const std::string script = scriptOf(chartOfDays(days));
    const std::size_t at = script.find("pointsize ");
    return at == std::string::npos ? 0 : std::stod(script.substr(at + 10));
  };
  EXPECT_EQ(circles(6), circles(29));
  EXPECT_GT(circles(29), circles(89));
  EXPECT_GT(circles(89), 0);
  EXPECT_EQ(circles(3650), 0);
}

TEST(GnuplotChartTest, APictureHasTwoPixelsAPointAndAnSvgFontsForAnyMachine) {
  const std::array charts{chartOfDays(6), chartOf({})};
  const std::string png = runGnuplot(pictureScript(charts, "It's", PictureFormat::png));
  // 1440 by 1080.
  EXPECT_THAT(png, HasSubstr(std::string("IHDR\0\0\5\xA0\0\0\4\x38", 12)));
  const std::string svg =
      polishedSvg(runGnuplot(pictureScript(charts, "It's", PictureFormat::svg)), "It's");
  for (const char* text : {"<title>It's</title>", "the line", "day 6", "150", "Don't `draw` this",
                           "sans-serif\" font-weight=\"300\"", "dasharray='5.0,2.0'"}) {
    EXPECT_THAT(svg, HasSubstr(text));
  }
  for (const char* text : {"Inter Light", "<title>gnuplot"}) {
    EXPECT_THAT(svg, testing::Not(HasSubstr(text)));
  }
}

}  // namespace
}  // namespace veyla
