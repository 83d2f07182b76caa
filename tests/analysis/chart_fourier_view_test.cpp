#include "analysis/chart_fourier_view.h"

#include <gmock/gmock.h>

#include "tests/support/recorder_canvas.h"

namespace veyla {
namespace {

TEST(ChartFourierViewTest, KeepsTheLastNinetyPointsAsWholeNumbers) {
  ChartFourierView chart;
  EXPECT_EQ(chart.minData(), 0);
  EXPECT_EQ(chart.maxData(), 0);
  chart.addDataPoint(12.9F);
  chart.addDataPoint(-3.7F);
  EXPECT_THAT(chart.data(), testing::ElementsAre(12, -3));
  for (int i = 0; i < 89; ++i) chart.addDataPoint(5);
  EXPECT_EQ(chart.data().size(), 90U);
  EXPECT_EQ(chart.data().front(), -3);
  EXPECT_EQ(chart.minData(), -3);
  EXPECT_EQ(chart.maxData(), 5);
  chart.reset();
  EXPECT_TRUE(chart.data().empty());
}

TEST(ChartFourierViewTest, AViewMadeWithAFrameTakesPointsSilentlyAndDrawsNothing) {
  ChartFourierView chart(ChartFourierView::Creation::frame);
  for (int i = 0; i < 20; ++i) chart.addDataPoint(static_cast<float>(i));
  RecorderCanvas canvas;
  chart.drawRect(canvas, {.width = 270, .height = 100});
  EXPECT_TRUE(canvas.shapes.empty());
  EXPECT_EQ(chart.maxData(), 0);
  chart.reset();
  EXPECT_TRUE(chart.data().empty());
}

/// What a chart of these points draws at this height.
std::vector<RecorderCanvas::Shape> drawn(const std::vector<float>& points, double height) {
  ChartFourierView chart;
  for (const float point : points) chart.addDataPoint(point);
  RecorderCanvas canvas;
  chart.drawRect(canvas, {.width = 100, .height = height});
  return canvas.shapes;
}

TEST(ChartFourierViewTest, DrawsItsPointsBetweenTheirExtremesTheFirstFiveLower) {
  for (const double height : {110.0, 110.9}) {
    const auto shapes = drawn({0, 4, 3, 2, 1, 0, 1, 2, 3, 4}, height);
    ASSERT_EQ(shapes.size(), 1U);
    EXPECT_THAT(shapes[0].points,
                testing::ElementsAre(Point{0, 105}, Point{3, 0}, Point{6, 25}, Point{9, 50},
                                     Point{12, 75}, Point{15, 100}, Point{18, 75}, Point{21, 50},
                                     Point{24, 25}, Point{27, 0}));
    const Stroke& stroke = std::get<Stroke>(shapes[0].with);
    EXPECT_EQ(stroke.width, 2);
    EXPECT_EQ(stroke.color,
              (Color{0.9882352941176471, 0.23921568627450981, 0.2235294117647059, 1}));
  }
  std::vector<float> many(95, 7);
  many.front() = 1000;
  many[94] = 8;
  many[5] = 9;
  const auto shapes = drawn(many, 60);
  ASSERT_EQ(shapes.size(), 1U);
  EXPECT_EQ(shapes[0].points.front(), (Point{0, 5}));
  EXPECT_EQ(shapes[0].points.back(), (Point{267, 25}));
}

TEST(ChartFourierViewTest, DrawsNothingOfFewPointsOrAFlatCurve) {
  EXPECT_TRUE(drawn({1, 2, 3, 4, 5, 6, 7, 8, 9}, 110).empty());
  EXPECT_EQ(drawn({5, 5, 5, 5, 5, 5, 5, 5, 5, 6}, 110).size(), 1U) << "a range of 1 is a curve";
  EXPECT_TRUE(drawn(std::vector<float>(90, 5.0F), 110).empty());
  EXPECT_TRUE(drawn({5.1F, 5.9F, 5, 5, 5, 5, 5, 5, 5, 5}, 110).empty());
}

}  // namespace
}  // namespace veyla
