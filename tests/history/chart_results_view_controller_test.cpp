#include "history/chart_results_view_controller.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>

#include "history/history_store.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

constexpr double day = 86400;

struct RecorderActionSheet : ActionSheetView {
  std::optional<ActionSheet> open;

  void present(const ActionSheet& sheet) override { open = sheet; }
  void dismiss() override { open.reset(); }
  void tap(std::size_t index) {
    const auto action = open->actions.at(index).action;
    action();
  }
};

struct RecorderLineChart : LineChart {
  LineChartSettings settings;
  LineDataSet data;
  double granularity = -1;

  void configure(const LineChartSettings& of) override { settings = of; }
  void clear() override { data = {}; }
  void setData(const LineDataSet& of) override { data = of; }
  void setGranularity(double seconds) override { granularity = seconds; }
};

class ChartResultsViewControllerTest : public testing::Test {
 protected:
  void SetUp() override { screen_.viewDidLoad(); }

  static void saveDaysAgo(double days, double heartrate = 70, double spo2 = 97,
                          const std::optional<Labels>& labels = std::nullopt) {
    const double now = services().clock.now().secondsSince1970;
    Utils::saveHeartrate(heartrate, spo2, Date{now - days * day}, labels);
  }
  std::string title(const Element& element) { return platform_.display.view(element).text; }

  TestPlatform platform_;
  RecorderActionSheet sheet_;
  RecorderLineChart heartrate_;
  RecorderLineChart spo2_;
  ChartResultsViewController screen_{platform_.display, sheet_, heartrate_, spo2_};
};

TEST_F(ChartResultsViewControllerTest, TheChartsShowAFixedRangeOnTheRightAndDaysBelow) {
  EXPECT_THAT(platform_.log.lines, ElementsAre("hertil"));
  screen_.viewWillAppear();
  for (const auto& [chart, text, minimum, maximum] :
       {std::tuple{&heartrate_, "Not enough heartrate data", 50, 150},
        {&spo2_, "Not enough SpO2 data", 90, 100}}) {
    EXPECT_EQ(chart->settings.noDataText, text);
    for (const ChartAxis* axis : {&chart->settings.leftAxis, &chart->settings.rightAxis}) {
      EXPECT_EQ(axis->minimum, minimum);
      EXPECT_EQ(axis->maximum, maximum);
    }
  }
  const LineChartSettings& chart = spo2_.settings;
  EXPECT_EQ(chart.delegate, &screen_);
  EXPECT_TRUE(chart.scaleEnabled && chart.dragEnabled && !chart.pinchZoomEnabled);
  EXPECT_EQ(chart.viewPortOffsets, (ChartInsets{15, 10, 35, 35}));
  EXPECT_TRUE(chart.drawsGridBackground && chart.legendEnabled);
  EXPECT_EQ(chart.gridBackgroundColor, white);
  EXPECT_EQ(chart.legendForm, LegendForm::line);
  const ChartAxis& left = chart.leftAxis;
  EXPECT_FALSE(left.drawsLabels || left.drawsGridLines || left.drawsAxisLine);
  EXPECT_EQ(left.labelFont, (Font{"HelveticaNeue-Light", 11}));
  EXPECT_TRUE(left.labelColor == black && chart.xAxis.labelColor == black);
  const ChartAxis& right = chart.rightAxis;
  EXPECT_TRUE(right.enabled && right.drawsGridLines && right.drawsTopLabel && !right.drawsAxisLine);
  EXPECT_EQ(right.gridLineDash, (DashPattern{5, 2}));
  const ChartAxis& x = chart.xAxis;
  EXPECT_TRUE(x.centersLabels && x.labelsBelow && x.keepsEndLabelsInside && x.hasGranularity &&
              !x.drawsGridLines);

  const auto written = [&](const ChartAxis& axis, double value, const char* locale) {
    platform_.text.emplace(locale, "Asia/Tokyo");
    return axis.valueFormatter->stringForValue(value, axis);
  };
  EXPECT_EQ(written(right, 97.25, "de_DE"), "97,2");
  EXPECT_EQ(written(left, 100, "en_US"), "100");
  EXPECT_EQ(written(right, 97.5, "ar_EG"), "٩٧٫٥");
  EXPECT_EQ(written(x, 1'700'000'000, "en_US"), "15 Nov");
  EXPECT_EQ(written(x, 1'700'000'000, "ja_JP"), "15 11月");
}

TEST_F(ChartResultsViewControllerTest, TheLinesAreThinWithRingsAndAnInvisibleArea) {
  saveDaysAgo(0, 160, 85);
  screen_.viewWillAppear();
  EXPECT_EQ(heartrate_.data.label, "heartrate (data points are averaged for each day)");
  EXPECT_EQ(heartrate_.data.circleColor, (Color{1, 0, 0, 1}));
  const LineDataSet& line = spo2_.data;
  EXPECT_EQ(line.label, "spo2 (data points are averaged for each day)");
  EXPECT_EQ(line.color, (Color{0, 0, 1, 1}));
  EXPECT_EQ(line.circleHoleColor, white);
  EXPECT_THAT((std::array{line.lineWidth, line.circleRadius, line.fillColor.alpha, line.fillAlpha}),
              ElementsAre(1, 5, 0, 65.0 / 255));
  EXPECT_TRUE(line.drawsCircles && line.drawsCircleHoles && line.drawsFilled);
  EXPECT_FALSE(line.drawsValues || line.cubic);
  EXPECT_EQ(line.valueFont, (Font{"DroidSans", 9}));
  EXPECT_EQ(line.axisDependency, AxisDependency::right);
  EXPECT_EQ(line.entries.front().y, 85) << "also outside the range";
}

TEST_F(ChartResultsViewControllerTest, EveryPeriodReadsTheStoreAnew) {
  for (const double days : {200.0, 60.0, 20.0, 3.0}) saveDaysAgo(days);
  for (const auto& [period, points] :
       {std::pair<std::int32_t, std::size_t>{1, 2}, {2, 3}, {3, 4}, {0, 1}, {4, 0}}) {
    screen_.tapSegmentPeriod(period);
    EXPECT_EQ(screen_.selectedPeriod(), period);
    EXPECT_THAT(heartrate_.data.entries, SizeIs(points)) << period;
  }
  saveDaysAgo(1, 60);
  saveDaysAgo(0, 92, 0);
  screen_.tapSegmentPeriod(0);
  EXPECT_THAT(spo2_.data.entries, SizeIs(2));
  EXPECT_EQ(heartrate_.data.summary, (ValueSummary{.mean = 74, .minimum = 60, .maximum = 92}));
  EXPECT_EQ(spo2_.data.summary, (ValueSummary{.mean = 97, .minimum = 97, .maximum = 97}));
}

TEST_F(ChartResultsViewControllerTest, ALabelIsChosenFromASheetAndNamesTheButton) {
  Labels afterTraining{};
  afterTraining[4] = true;
  saveDaysAgo(0, 90, 97, afterTraining);
  saveDaysAgo(1);
  screen_.viewWillAppear();
  EXPECT_THAT(heartrate_.data.entries, SizeIs(2));

  screen_.tapButtonLabels();
  ASSERT_TRUE(sheet_.open);
  EXPECT_EQ(sheet_.open->title, "Choose label");
  EXPECT_EQ(sheet_.open->tint, (Color{1, 0, 0, 1}));
  std::string titles;
  for (const SheetAction& action : sheet_.open->actions) titles += action.title + ", ";
  EXPECT_EQ(titles,
            "Resting, Active, Working, Training (Before), Training (After), Sleep (Before), "
            "Sleep (After), None, ");
  sheet_.tap(4);
  EXPECT_FALSE(sheet_.open);
  EXPECT_EQ(screen_.selectedLabel(), 4);
  EXPECT_EQ(title(ChartsScreen::buttonLabels), "Training (After)");
  EXPECT_EQ(title(ChartsScreen::buttonLabelsHighlighted), "Training (After)");
  EXPECT_THAT(heartrate_.data.entries, SizeIs(1));

  screen_.tapButtonLabels();
  sheet_.tap(7);
  EXPECT_EQ(screen_.selectedLabel(), -1);
  EXPECT_EQ(title(ChartsScreen::buttonLabels), "Choose Label");
  EXPECT_EQ(title(ChartsScreen::buttonLabelsHighlighted), "Choose label");
  EXPECT_THAT(heartrate_.data.entries, SizeIs(2));
}

TEST_F(ChartResultsViewControllerTest, TheGranularitySplitsTheSpanIntoItsDaysAndOneUpToSix) {
  const auto granularityFor = [&](const std::vector<double>& daysAgo) {
    Utils::clearValues();
    for (const double days : daysAgo) saveDaysAgo(days);
    screen_.tapSegmentPeriod(3);
    EXPECT_EQ(heartrate_.granularity, spo2_.granularity);
    return spo2_.granularity;
  };
  for (const auto& [daysAgo, seconds] : {std::pair<std::vector<double>, double>{{2, 1, 0}, 57600},
                                         {{4, 0}, 4 * day / 5},
                                         {{5, 0}, 5 * day / 6},
                                         {{30, 12, 0}, 432000},
                                         {{0}, 0}}) {
    EXPECT_EQ(granularityFor(daysAgo), seconds);
  }
  EXPECT_TRUE(std::isfinite(granularityFor({})));
  // Of different charts, too.
  Utils::clearValues();
  saveDaysAgo(2, 70, 0);
  saveDaysAgo(0, 0, 97);
  screen_.tapSegmentPeriod(0);
  EXPECT_EQ(heartrate_.granularity, 57600);
  EXPECT_THAT(spo2_.data.entries, SizeIs(1));
}

TEST_F(ChartResultsViewControllerTest, AScreenThatHasGoneIsNotCalledByItsSheet) {
  auto screen =
      std::make_unique<ChartResultsViewController>(platform_.display, sheet_, heartrate_, spo2_);
  screen->viewDidLoad();
  screen->tapButtonLabels();
  screen.reset();
  sheet_.tap(0);
  EXPECT_EQ(title(ChartsScreen::buttonLabels), "Choose Label");
  EXPECT_THAT(heartrate_.data.label, IsEmpty());
}

}  // namespace
}  // namespace veyla
