#include "platform/linux/gnuplot_chart.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>

#include "platform/linux/gnuplot_program.h"
#include "platform/linux/output_file.h"

namespace veyla {
namespace {

using testing::HasSubstr;

constexpr double day = 86400;

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
  data.circleRadius = 5;
  GnuplotChart chart;
  chart.configure(settings);
  chart.setData(data);
  chart.setGranularity(granularity);
  return chart;
}

GnuplotChart chartOfDays(int days, double granularity) {
  std::vector<ChartDataEntry> entries;
  for (int i = 0; i <= days; ++i) entries.push_back({i * day, 70});
  return chartOf(entries, granularity);
}

std::string pictureOf(const GnuplotChart& chart, PictureFormat format = PictureFormat::png) {
  return pictureScript(std::span(&chart, 1), "Heading", format);
}

TEST(GnuplotChartTest, LabelsStandWholeDaysApartNoCloserThanTheGranularity) {
  EXPECT_THAT(pictureOf(chartOfDays(2, 57600)),
              HasSubstr("xtics ('day 0' 0, 'day 1' 86400, 'day 2' 172800)"));
  EXPECT_THAT(pictureOf(chartOfDays(29, 29 * day / 6)),
              HasSubstr("'day 5' 432000, 'day 10' 864000, 'day 15'"));
  // Neither a single point nor what a granularity says without points is in the way.
  for (const double granularity : {0.0, -86404.0, std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THAT(pictureOf(chartOf({{day, 70}}, granularity)), HasSubstr("xtics ('day 1' 86400)"));
  }
}

TEST(GnuplotChartTest, TheLineItsCirclesAndItsAxisAreAsConfigured) {
  GnuplotChart chart = chartOf({{0, 200}, {day, 60}});
  LineDataSet data = *chart.data();
  data.color = {0, 0, 1, 1};
  data.circleColor = {1, 0, 0, 1};
  data.circleHoleColor = {0, 1, 0, 1};
  data.drawsCircles = true;
  data.drawsCircleHoles = true;
  data.lineWidth = 3;
  chart.setData(data);
  const std::string script = pictureOf(chart);
  const std::string points = R"(\$points using 1:2 axes x1y2 notitle with )";
  for (const std::string& part :
       {std::string(R"(set y2range \[50:150\])"),  // which does not follow the data
        std::string("set y2tics .'50' 50, '70' 70, '90' 90, '110' 110, '130' 130, '150' 150. "),
        std::string("0 200\n86400 60\nend_of_points"),
        "plot " + points + "lines linewidth 3 linecolor rgb '#0000ff', " + points +
            "points pointtype 7 pointsize [0-9.]+ linecolor rgb '#ff0000', .*'#00ff00'"}) {
    EXPECT_THAT(script, testing::ContainsRegex(part));
  }
}

TEST(GnuplotChartTest, CirclesGiveWayWherePointsStandClose) {
  const auto circles = [](int days) {
    const std::string script = pictureOf(chartOfDays(days, day));
    const std::size_t at = script.find("pointsize ");
    return at == std::string::npos ? 0 : std::stod(script.substr(at + 10));
  };
  EXPECT_EQ(circles(6), circles(29));
  EXPECT_GT(circles(29), circles(89));
  EXPECT_GT(circles(89), 0);
  EXPECT_EQ(circles(3650), 0);
}

TEST(GnuplotChartTest, PointsThatAreNotFiniteAreNone) {
  const double infinity = std::numeric_limits<double>::infinity();
  const GnuplotChart chart = chartOf({{0, 70}, {day, infinity}, {std::nan(""), 70}});
  EXPECT_EQ(chart.data()->entries, (std::vector<ChartDataEntry>{{0, 70}}));
  const GnuplotChart none = chartOf({{0, -infinity}});
  EXPECT_EQ(none.data(), nullptr);
  EXPECT_THAT(pictureOf(none), HasSubstr("'Don''t `draw` this'"));
}

TEST(GnuplotChartTest, APictureHasTwoPixelsAPointAndAnSvgFontsForAnyMachine) {
  const std::array charts{chartOfDays(6, day), chartOf({})};
  const std::string png = runGnuplot(pictureScript(charts, "It's", PictureFormat::png));
  ASSERT_GT(png.size(), 24U);
  EXPECT_EQ(png.substr(1, 3), "PNG");
  const auto big = [&](std::size_t at) {
    return 256 * static_cast<unsigned char>(png[at + 2]) + static_cast<unsigned char>(png[at + 3]);
  };
  EXPECT_EQ(big(16), 2 * pictureWidth);
  EXPECT_EQ(big(20), 2 * pictureHeight);

  const std::string svg =
      polishedSvg(runGnuplot(pictureScript(charts, "It's", PictureFormat::svg)), "It's");
  for (const char* text : {"<title>It's</title>", "the line", "day 6", "150", "Don't `draw` this",
                           "sans-serif\" font-weight=\"300\"", "dasharray='5.0,2.0'"}) {
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  }
  for (const char* text : {"Inter Light", "<title>gnuplot"}) {
    EXPECT_EQ(svg.find(text), std::string::npos) << text;
  }
}

TEST(GnuplotProgramTest, AFailureIsToldInItsOwnWords) {
  try {
    runGnuplot("set terminal nothing\n");
    FAIL();
  } catch (const OutputError& error) {
    EXPECT_THAT(error.what(), HasSubstr("gnuplot: "));
    EXPECT_THAT(error.what(), HasSubstr("unknown"));
  }
}

}  // namespace
}  // namespace veyla
