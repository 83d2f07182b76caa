#include "analysis/chart_fourier_view.h"

#include <gmock/gmock.h>

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

}  // namespace
}  // namespace veyla
