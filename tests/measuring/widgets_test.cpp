#include <gmock/gmock.h>

#include "measuring/display_settings.h"
#include "tests/support/recorder_canvas.h"
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

  template <class Widget>
  static RecorderCanvas drawn(const Widget& widget, Size size = {60, 80}) {
    RecorderCanvas canvas;
    widget.drawRect(canvas, size);
    return canvas;
  }
  /// Clockwise from the top.
  double needleDegrees() const { return gauge_.needleAngle() / degree - 360; }

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
  gauge_.setValue(75, false);
  const auto shapes = drawn(gauge_).shapes;
  EXPECT_LT(shapes.front().arcs.front().radius, 30) << "within the shorter side";
  const auto needle = std::find_if(shapes.begin(), shapes.end(), [](const auto& shape) {
    return !shape.isStroke() && shape.arcs.empty();
  });
  ASSERT_NE(needle, shapes.end());
  EXPECT_NEAR(needle->points[1].y, 40, 1e-6) << "widest at the screw, on both sides alike";
  EXPECT_NEAR(needle->points[1].x + needle->points[3].x, 60, 1e-6);
  // Nothing to divide, nothing to point to: the dial still stands, with its needle at the start.
  Utils::gaugeSettings(gauge_, 50, 50, 0);
  const Point tip = drawn(gauge_).shapes.front().points.front();
  EXPECT_LT(tip.x, 30);
  EXPECT_GT(tip.y, 40);
}

TEST_F(WidgetsTest, TheScaleTurnsByWholeDegreesAndWhatSettingsSwitchOffIsNotDrawn) {
  Utils::gaugeSettings(gauge_, 93, 100, 7);
  gauge_.scaleStartAngle = 70.9F;
  gauge_.scaleSubdivisions = 2;
  EXPECT_EQ(gauge_.scaleRotation(), 250);
  EXPECT_EQ(gauge_.valueAtTick(3), 94.5F);
  EXPECT_NEAR(gauge_.subdivisionAngle(), (290 - 70.9) / 14, 1e-4);
  EXPECT_EQ(drawn(gauge_).texts.size(), 8U) << "at the major ticks";
  EXPECT_EQ(drawn(gauge_).texts.back().text, "100");

  gauge_.setUnitOfMeasurement("72 BPM");
  EXPECT_EQ(drawn(gauge_).find("72 BPM"), nullptr);
  const std::size_t shapes = drawn(gauge_).shapes.size();
  gauge_.showUnitOfMeasurement = gauge_.showInnerBackground = true;
  EXPECT_NE(drawn(gauge_).find("72 BPM"), nullptr);
  EXPECT_EQ(drawn(gauge_).shapes.size(), shapes + 1);
  gauge_.showScale = false;
  EXPECT_EQ(drawn(gauge_).shapes.size(), shapes + 1 - 15);
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

TEST_F(WidgetsTest, TheRingIsABandFromTheTopAroundADisc) {
  const Color progressed{200.0 / 255, 2.0 / 255, 0, 1};
  const Color track{0, 0, 0, 0.2};
  struct Case {
    float progress;
    std::vector<std::pair<double, Color>> bands;  // where each ends, in degrees, and its colour
  };
  const Case cases[] = {{0.25F, {{360, progressed}, {630, track}}},
                        {1.4F, {{630, progressed}}},
                        {-0.2F, {{630, track}}},
                        {std::nanf(""), {{630, track}}}};
  for (const auto& [progress, bands] : cases) {
    ring_.setProgress(progress, false);
    const auto shapes = drawn(ring_).shapes;
    ASSERT_EQ(shapes.size(), bands.size() + 1) << progress;
    for (std::size_t i = 0; i < bands.size(); ++i) {
      EXPECT_EQ(shapes[i].arcs[0].center, (Point{30, 40}));
      EXPECT_NEAR(shapes[i].arcs[0].to, bands[i].first * degree, 1e-6);
      EXPECT_EQ(shapes[i].color(), bands[i].second);
    }
    EXPECT_TRUE(drawn(ring_).texts.empty());
  }
  ring_.hintTextGenerationBlock = [](float) { return "hint"; };
  ASSERT_NE(drawn(ring_).find("hint"), nullptr);
  EXPECT_EQ(drawn(ring_).find("hint")->at.x, 30);
  EXPECT_EQ(drawn(ring_, {12, 12}).shapes.size(), 1U) << "no room for a disc";
  EXPECT_EQ(drawn(ring_, {13, 13}).shapes.size(), 2U) << "half a point of one";
}

TEST_F(WidgetsTest, AnAnimatedRingGoesByHundredthsOfASecondAndEndsExactly) {
  ring_.setProgress(0.5F, false);
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
  platform_.time.runFor(0.05);
  const float underWay = ring_.progress();
  ring_.setProgress(0, true);
  EXPECT_EQ(ring_.progress(), underWay);
  ring_.setProgress(0.75F, false);
  redraws_ = 0;
  platform_.time.run();
  EXPECT_EQ(ring_.progress(), 0.75F);
  EXPECT_EQ(redraws_, 0);

  // Set again a rounding short of its end, it still ends, by itself.
  for (int hundredth = 1; hundredth < 100; ++hundredth) {
    const float target = static_cast<float>(hundredth) / 100;
    ring_.setProgress(0, false);
    for (const double seconds : {0.2001, 1.0}) {
      ring_.setProgress(target, true);
      platform_.time.runFor(seconds);
    }
    EXPECT_EQ(ring_.progress(), target);
    redraws_ = 0;
    platform_.time.runFor(1);
    EXPECT_EQ(redraws_, 0) << target;
  }
}

TEST_F(WidgetsTest, AWidgetThatIsGoneIsNotMoved) {
  int redraws = 0;
  {
    CircleProgressBar ring;
    WMGaugeView gauge;
    ring.needsDisplay = gauge.needsDisplay = [&] { ++redraws; };
    gauge.maxValue = 1;
    ring.setProgress(1, true);
    gauge.setValue(1, true);
  }
  const int redrawsBefore = redraws;
  platform_.time.run();
  EXPECT_EQ(redraws, redrawsBefore);
}

}  // namespace
}  // namespace veyla
