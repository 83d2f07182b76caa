#include <fontconfig/fontconfig.h>

#include <cmath>
#include <functional>

#include "measuring/display_settings.h"
#include "measuring/measuring_screen.h"
#include "measuring/measuring_screen_drawing.h"
#include "platform/linux/cairo_canvas.h"
#include "tests/linux/pictures.h"
#include "tests/support/measuring_rig.h"

namespace veyla {
namespace {

using namespace MeasuringScreen;

using Draw = std::function<void(Canvas&)>;

/// Cairo and its fonts keep what they may need again to the end, where it passes for lost.
class EmptiesCaches : public testing::Environment {
 public:
  void TearDown() override {
    cairo_debug_reset_static_data();
    FcFini();
  }
};
[[maybe_unused]] const auto* const emptiesCaches =
    testing::AddGlobalTestEnvironment(new EmptiesCaches);

/// Drawings of one size, side by side on white.
std::string drawn(Size size, const std::vector<Draw>& drawings) {
  const double width = size.width * static_cast<double>(drawings.size());
  CairoCanvas canvas({width, size.height}, 1);
  canvas.beginPath();
  canvas.arc({0, 0}, width + size.height, 0, 7);
  canvas.fill(white);
  for (const Draw& draw : drawings) {
    canvas.save();
    draw(canvas);
    canvas.restore();
    canvas.translate(size.width, 0);
  }
  return canvas.png();
}

template <class Widget>
Draw drawing(const Widget& widget, Size size) {
  return [&widget, size](Canvas& canvas) { widget.drawRect(canvas, size); };
}

TEST(PictureTest, Gauges) {
  WMGaugeView usual;
  WMGaugeView other;
  WMGaugeView empty;
  for (WMGaugeView* gauge : {&usual, &other, &empty}) {
    Utils::gaugeSettings(*gauge, 50, 100, 10);
    gauge->setUnitOfMeasurement("72 BPM");
  }
  usual.setValue(72, false);
  other.scaleStartAngle = 80.9F;
  other.scaleDivisions = 5;
  other.scaleSubdivisions = 2;
  other.scaleSubdivisionsWidth = 0.01F;
  other.needleStyle = other.needleScrewStyle = 0;
  other.showScaleShadow = other.showUnitOfMeasurement = other.showInnerBackground = true;
  other.setValue(101, false);
  // Nothing to divide, nothing to point to.
  empty.maxValue = empty.minValue;
  empty.innerBackgroundStyle = 0;
  empty.showInnerBackground = true;
  empty.showScale = false;
  const auto sheet = [&] {
    // Wider than high: they stand in the middle.
    constexpr Size size{170, 150};
    return drawn(size, {drawing(usual, size), drawing(other, size), drawing(empty, size)});
  };
  expectPicture("gauge.png", sheet());
  usual.setValue(73, false);
  EXPECT_GT(differenceFromStored("gauge.png", sheet()), pictureTolerance) << "a small fault";
}

TEST(PictureTest, Rings) {
  CircleProgressBar usual;
  CircleProgressBar full;
  for (CircleProgressBar* ring : {&usual, &full}) Utils::circleProgressBarSettings(*ring);
  usual.setProgress(0.4F, false);
  full.setProgress(1, false);
  full.hintTextGenerationBlock = [](float) { return "hint"; };
  // The last two are too small for a disc, and just not.
  expectPicture("ring.png", drawn({60, 80}, {drawing(usual, {60, 80}), drawing(full, {60, 80}),
                                             drawing(usual, {12, 20}), drawing(usual, {13, 20})}));
}

TEST(PictureTest, Curves) {
  const auto curve = [](const std::vector<float>& points, double height = 110) {
    return [=](Canvas& canvas) {
      ChartFourierView chart;
      for (const float point : points) chart.addDataPoint(point);
      chart.drawRect(canvas, {270, height});
    };
  };
  std::vector<float> full(95, 7);
  full[4] = 1000;
  full[5] = 9;
  full[94] = 8;
  expectPicture("curve.png",
                drawn({270, 110}, {curve({0, 4, 3, 2, 1, 0, 1, 2, 3, 4}, 110.9), curve(full, 60),
                                   curve({5, 5, 5, 5, 5, 5, 5, 5, 5, 6})}));
  const std::string nothing = drawn({270, 110}, {curve({})});
  EXPECT_EQ(drawn({270, 110}, {curve({1, 2, 3, 4, 5, 6, 7, 8, 9})}), nothing) << "too few";
  EXPECT_EQ(drawn({270, 110}, {curve({5, 5, 5, 5, 5, 5, 5, 5, 5, 5.9F})}), nothing) << "flat";
}

class ScreenPictureTest : public testing::Test {
 protected:
  ScreenPictureTest() {
    rig_.appear();
    rig_.startMeasuring();
    rig_.heartrateBin(82);
    rig_.spo2(97);
    rig_.heartrateAmbiguous();
    for (int i = 0; i < 40; ++i) {
      rig_.frame({100, 80, 40, static_cast<float>(100 + 20 * std::sin(i * 0.35))});
    }
    rig_.platform.time.runFor(1);
    rig_.heartrateBin(100);
    rig_.spo2(99);
    rig_.screen.finishAnimations();
  }

  std::string drawnAt(Size size, SafeArea safeArea = {},
                      CenterPanel center = CenterPanel::asShown) {
    return drawn(size, {[&](Canvas& canvas) {
                   drawMeasuringScreen(canvas, MeasuringLayout(size, safeArea), rig_.screen,
                                       display_, "Veyla", center);
                 }});
  }

  MeasuringRig rig_;
  RecorderDisplay& display_ = rig_.platform.display;
};

TEST_F(ScreenPictureTest, Measuring) { expectPicture("screen.png", drawnAt({390, 844}, {47, 34})); }

TEST_F(ScreenPictureTest, BetweenMeasurementsOnASmallPhone) {
  rig_.spo2(97);
  rig_.screen.buttonCheckboxSpo2Tapped();
  rig_.platform.time.runFor(1);
  display_.setOpacity(viewCenter, 0.5);
  display_.setText(labelHeartrate, "188.8");
  display_.setText(labelGrey, "A line that is too long to stand there in letters of its own size");
  display_.setText(labelFinger, "Press more lightly");
  display_.setText(labelDoubtSpo2,
                   "Unsure: a doubt that takes more than one line of the width of this phone's");
  expectPicture("small_screen.png", drawnAt({375, 700}));
}

TEST_F(ScreenPictureTest, ATabletKeepsToTheMiddleAndAnEndShowsThePulseOnRequest) {
  rig_.screen.stopButtonPush();
  rig_.platform.time.runFor(1);
  expectPicture("tablet.png", drawnAt({600, 900}, {24, 20}, CenterPanel::pulse));
}

}  // namespace
}  // namespace veyla
