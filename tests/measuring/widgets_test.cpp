#include <gmock/gmock.h>

#include "measuring/display_settings.h"
#include "tests/support/recorder_canvas.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

constexpr double side = 200;

/// Where on a dial in a square of 200 points something stands: the way from its centre, and the
/// angle clockwise from the top, -180 to 180 degrees.
struct Polar {
  explicit Polar(Point point) {
    const double x = point.x - side / 2;
    const double y = point.y - side / 2;
    distance = std::hypot(x, y);
    degrees = std::atan2(x, -y) / degree;
  }
  double distance;
  double degrees;
};

class WidgetsTest : public testing::Test {
 protected:
  WidgetsTest() {
    Utils::gaugeSettings(gauge_, 50, 100, 10);
    Utils::circleProgressBarSettings(ring_);
    gauge_.needsDisplay = [this] { ++redraws_; };
    ring_.needsDisplay = [this] { ++redraws_; };
  }

  RecorderCanvas drawnGauge() const {
    RecorderCanvas canvas;
    gauge_.drawRect(canvas, {side, side});
    return canvas;
  }
  RecorderCanvas drawnRing(Size size = {60, 80}) const {
    RecorderCanvas canvas;
    ring_.drawRect(canvas, size);
    return canvas;
  }
  /// Of the first shape without arcs that is filled: the needle, whose tip comes first.
  static Polar needleTip(const RecorderCanvas& canvas) {
    for (const auto& shape : canvas.shapes) {
      if (!shape.isStroke() && shape.arcs.empty()) return Polar(shape.points.front());
    }
    ADD_FAILURE() << "no needle";
    return Polar({});
  }
  double needleDegrees() const { return needleTip(drawnGauge()).degrees; }

  TestPlatform platform_;
  WMGaugeView gauge_;
  CircleProgressBar ring_;
  int redraws_ = 0;
};

TEST_F(WidgetsTest, TheNeedleSweepsThe220DegreesOfItsRange) {
  const std::pair<float, double> cases[] = {{45, -110},  {50, -110}, {75, 0},
                                            {72, -13.2}, {100, 110}, {120, 110}};
  for (const auto& [value, degrees] : cases) {
    gauge_.setValue(value, false);
    EXPECT_NEAR(needleDegrees(), degrees, 1e-4) << value;
  }
  EXPECT_NEAR(gauge_.needleAngle(), 470 * degree, 1e-6);
  gauge_.setValue(std::nanf(""), false);
  EXPECT_NEAR(gauge_.needleAngle(), 250 * degree, 1e-6);
  EXPECT_EQ(gauge_.value(), 50);
}

TEST_F(WidgetsTest, TheScalePrintsItsValuesUprightAtTicksOf22Degrees) {
  const RecorderCanvas canvas = drawnGauge();
  std::vector<std::string> printed;
  for (const auto& text : canvas.texts) {
    EXPECT_NEAR(Polar({text.at.x, text.at.y - 0.7 * 11 / 2}).degrees,
                -110 + 22 * static_cast<double>(printed.size()), 1e-3);
    EXPECT_NEAR(text.font.size, 0.055 * side, 1e-4);
    EXPECT_EQ(text.font.name, "HelveticaNeue-Light");
    printed.push_back(text.text);
  }
  EXPECT_THAT(printed,
              ElementsAre("50", "55", "60", "65", "70", "75", "80", "85", "90", "95", "100"));
  int ticks = 0;
  for (const auto& shape : canvas.shapes) {
    if (!shape.isStroke() || !shape.arcs.empty()) continue;
    const Polar outer(shape.points[0]);
    const Polar inner(shape.points[1]);
    EXPECT_NEAR(outer.degrees, -110 + 22 * ticks++, 1e-3);
    EXPECT_NEAR(outer.distance - inner.distance, 0.05 * side, 1e-4);
    EXPECT_NEAR(std::get<Stroke>(shape.with).width, 0.005 * side, 1e-4);
  }
  EXPECT_EQ(ticks, 11);

  // The scale turns by whole degrees, and minor ticks stand between the major ones.
  Utils::gaugeSettings(gauge_, 93, 100, 7);
  gauge_.scaleStartAngle = 70.9F;
  gauge_.scaleSubdivisions = 2;
  EXPECT_EQ(gauge_.scaleRotation(), 250);
  EXPECT_EQ(gauge_.valueAtTick(3), 94.5F);
  EXPECT_NEAR(gauge_.subdivisionAngle(), (290 - 70.9) / 14, 1e-4);
  const RecorderCanvas saturation = drawnGauge();
  EXPECT_EQ(saturation.texts.size(), 8U);
  EXPECT_EQ(saturation.texts.back().text, "100");
}

TEST_F(WidgetsTest, WhatSettingsSwitchOffIsNotDrawn) {
  gauge_.setUnitOfMeasurement("72 BPM");
  EXPECT_EQ(drawnGauge().find("72 BPM"), nullptr);
  const std::size_t shapes = drawnGauge().shapes.size();
  gauge_.showUnitOfMeasurement = true;
  EXPECT_NE(drawnGauge().find("72 BPM"), nullptr);
  gauge_.showInnerBackground = true;
  EXPECT_EQ(drawnGauge().shapes.size(), shapes + 1);
  gauge_.showScale = false;
  EXPECT_EQ(drawnGauge().shapes.size(), shapes + 1 - 11);
  // Nothing to divide, nothing to point to: the dial still stands.
  Utils::gaugeSettings(gauge_, 50, 50, 0);
  EXPECT_NEAR(needleDegrees(), -110, 1e-3);
}

TEST_F(WidgetsTest, AnAnimatedNeedleTakesEightTenthsOfASecondFromWhereItIs) {
  gauge_.setValue(50, false);
  gauge_.setValue(100, true);
  EXPECT_TRUE(gauge_.animated());
  EXPECT_EQ(gauge_.value(), 100);
  EXPECT_NEAR(needleDegrees(), -110, 1e-4);
  double before = -111;
  for (int i = 0; i < 8; ++i) {
    EXPECT_GT(needleDegrees(), before);
    EXPECT_LT(needleDegrees(), 110);
    before = needleDegrees();
    platform_.time.runFor(0.0999);
  }
  platform_.time.runFor(0.001);
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
  ring_.setProgress(0.25F, false);
  const RecorderCanvas canvas = drawnRing();
  ASSERT_EQ(canvas.shapes.size(), 3U);
  const double starts[] = {270, 360};
  const double ends[] = {360, 630};
  const Color colors[] = {{200.0 / 255, 2.0 / 255, 0, 1}, {0, 0, 0, 0.2}};
  for (std::size_t i = 0; i < 2; ++i) {
    const auto& band = canvas.shapes[i];
    ASSERT_EQ(band.arcs.size(), 2U);
    EXPECT_EQ(band.arcs[0].center, (Point{30, 40}));
    EXPECT_EQ(band.arcs[0].radius, 30);
    EXPECT_EQ(band.arcs[1].radius, 25);
    EXPECT_TRUE(band.arcs[1].negative);
    EXPECT_NEAR(band.arcs[0].from, starts[i] * degree, 1e-6);
    EXPECT_NEAR(band.arcs[0].to, ends[i] * degree, 1e-6);
    EXPECT_NEAR(band.arcs[1].from, ends[i] * degree, 1e-6);
    EXPECT_NEAR(band.arcs[1].to, starts[i] * degree, 1e-6);
    EXPECT_EQ(band.color(), colors[i]);
  }
  EXPECT_EQ(canvas.shapes[2].arcs[0].radius, 24);
  EXPECT_EQ(canvas.shapes[2].color(), colors[0]);
  EXPECT_TRUE(canvas.texts.empty());
  ring_.hintTextGenerationBlock = [](float progress) {
    return std::to_string(progress).substr(0, 4);
  };
  ASSERT_NE(drawnRing().find("0.25"), nullptr);
  EXPECT_EQ(drawnRing().find("0.25")->at.x, 30);
  EXPECT_EQ(drawnRing({8, 8}).shapes.size(), 2U) << "no room for a disc";
}

TEST_F(WidgetsTest, ProgressOutsideItsRangeIsAFullOrAnEmptyRing) {
  const std::pair<float, Color> cases[] = {
      {1.4F, accentRed}, {-0.2F, {0, 0, 0, 0.2}}, {std::nanf(""), {0, 0, 0, 0.2}}};
  for (const auto& [progress, color] : cases) {
    ring_.setProgress(progress, false);
    const RecorderCanvas canvas = drawnRing();
    ASSERT_EQ(canvas.shapes.size(), 2U) << progress;
    EXPECT_EQ(canvas.shapes[0].color(), color);
    EXPECT_NEAR(canvas.shapes[0].arcs[0].to - canvas.shapes[0].arcs[0].from, 360 * degree, 1e-6);
  }
}

TEST_F(WidgetsTest, AnAnimatedRingGoesByHundredthsOfASecondAndEndsExactly) {
  ring_.setProgress(0.5F, false);
  redraws_ = 0;
  for (const float target : {1.0F, 0.3F}) {
    const float from = ring_.progress();
    ring_.setProgress(target, true);
    EXPECT_EQ(ring_.progress(), from);
    platform_.time.runFor(0.0101);
    EXPECT_FLOAT_EQ(ring_.progress(), from + (target - from) * 0.05F);
    platform_.time.runFor(0.1);
    EXPECT_NEAR(ring_.progress(), from + (target - from) * 0.55F, 1e-5);
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
    ring_.setProgress(target, true);
    platform_.time.runFor(0.2001);
    ring_.setProgress(target, true);
    platform_.time.runFor(1);
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
