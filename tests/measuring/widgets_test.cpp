#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "measuring/display_settings.h"
#include "measuring/measuring_layout.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

class WidgetsTest : public testing::Test {
 protected:
  WidgetsTest() {
    Utils::gaugeSettings(gauge_, 50, 100, 10);
    Utils::circleProgressBarSettings(ring_);
    gauge_.needsDisplay = [this] { ++redraws_; };
    ring_.needsDisplay = [this] { ++redraws_; };
  }

  /// Clockwise from the top.
  double needleDegrees() const { return gauge_.needleAngle() / std::numbers::pi * 180 - 360; }

  TestPlatform platform_;
  WMGaugeView gauge_;
  CircleProgressBar ring_;
  int redraws_ = 0;
};

TEST_F(WidgetsTest, TheNeedleSweepsThe220DegreesOfItsRange) {
  const std::pair<float, double> cases[] = {
      {45, -110}, {50, -110}, {75, 0}, {72, -13.2}, {100, 110}, {120, 110}, {std::nanf(""), -110}};
  for (const auto& [value, degrees] : cases) {
    gauge_.setValue(value, false);
    EXPECT_NEAR(needleDegrees(), degrees, 1e-4) << value;
  }
  EXPECT_EQ(gauge_.value(), 50);
}

TEST_F(WidgetsTest, AnAnimatedNeedleTakesEightTenthsOfASecondFromWhereItIs) {
  gauge_.setValue(50, false);
  gauge_.setValue(100, true);
  EXPECT_TRUE(gauge_.animated());
  EXPECT_EQ(gauge_.value(), 100);
  EXPECT_NEAR(needleDegrees(), -110, 1e-4);
  for (const double left : {0.125, 1 / 64.0, 0.0}) {
    platform_.time.runFor(left < 0.1 ? 0.2 : 0.4);
    EXPECT_NEAR(needleDegrees(), 110 - 220 * left, 1e-3) << "fast at first";
  }
  EXPECT_EQ(gauge_.needleAngle(), gauge_.needleAngleFor(100));
  EXPECT_GT(redraws_, 40);
  platform_.time.run();

  gauge_.setValue(50, true);
  platform_.time.runFor(0.2);
  const double turned = needleDegrees();
  gauge_.setValue(90, true);
  EXPECT_NEAR(needleDegrees(), turned, 1e-6);
  gauge_.finishAnimation();
  EXPECT_EQ(gauge_.needleAngle(), gauge_.needleAngleFor(90));
  redraws_ = 0;
  platform_.time.run();
  EXPECT_EQ(redraws_, 0) << "the animations that were replaced go on";
}

TEST_F(WidgetsTest, ARingShowsAtMostItAllGoesByHundredthsOfASecondAndEndsExactly) {
  for (const auto& [progress, shown] :
       {std::pair{1.4F, 1.0F}, {-0.2F, 0.0F}, {std::nanf(""), 0.0F}, {0.5F, 0.5F}}) {
    ring_.setProgress(progress, false);
    EXPECT_EQ(ring_.progress(), shown);
  }
  redraws_ = 0;
  for (const float target : {1.0F, 0.3F}) {
    const float from = ring_.progress();
    ring_.setProgress(target, true);
    EXPECT_TRUE(ring_.animated());
    for (const auto& [seconds, share] : {std::pair{0.0, 0.0F}, {0.0101, 0.05F}, {0.1, 0.55F}}) {
      platform_.time.runFor(seconds);
      EXPECT_NEAR(ring_.progress(), from + (target - from) * share, 1e-5);
    }
    platform_.time.runFor(0.1);
    EXPECT_EQ(ring_.progress(), target);
  }
  EXPECT_THAT(redraws_, testing::AllOf(testing::Ge(40), testing::Le(42)));

  ring_.setProgress(1, true);
  ring_.setProgress(0.75F, false);
  redraws_ = 0;
  platform_.time.run();
  EXPECT_EQ(ring_.progress(), 0.75F);
  EXPECT_EQ(redraws_, 0);

  // A rounding short of its end, it still ends, by itself.
  ring_.setProgress(std::nextafter(0.7F, 0.0F), false);
  ring_.setProgress(0.7F, true);
  platform_.time.runFor(1);
  EXPECT_EQ(ring_.progress(), 0.7F);
  redraws_ = 0;
  platform_.time.runFor(1);
  EXPECT_EQ(redraws_, 0);
}

TEST(MeasuringLayoutTest, TheSmallestPhoneHasReadableDialsAndAllOfTheButton) {
  const MeasuringLayout layout({320, 460}, {});
  EXPECT_GT(layout.spo2.gauge.width, 90);
  EXPECT_LE(layout.button.y + layout.button.height, 460);
}

}  // namespace
}  // namespace veyla
