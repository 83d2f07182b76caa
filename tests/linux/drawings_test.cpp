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

/// Drawings of one size, side by side on white.
std::string drawn(Size size, const std::vector<Draw>& drawings) {
  const Size all{size.width * static_cast<double>(drawings.size()), size.height};
  CairoCanvas canvas(all, 1);
  canvas.beginPath();
  canvas.arc({0, 0}, all.width + all.height, 0, 7);
  canvas.fill(white);
  for (const Draw& draw : drawings) {
    canvas.save();
    draw(canvas);
    canvas.restore();
    canvas.translate(size.width, 0);
  }
  return canvas.png();
}

// What the core draws, as it must look and then with one small fault, which the comparison must
// see.

TEST(PictureTest, Gauges) {
  const auto gauge = [](float value, const std::function<void(WMGaugeView&)>& change = {}) {
    return [=](Canvas& canvas) {
      WMGaugeView view;
      Utils::gaugeSettings(view, 50, 100, 10);
      if (change) change(view);
      view.setUnitOfMeasurement("72 BPM");
      view.setValue(value, false);
      // Wider than high: it stands in the middle.
      view.drawRect(canvas, {170, 150});
    };
  };
  const auto sheet = [&](float value) {
    return drawn({170, 150}, {gauge(value),
                              gauge(100,
                                    [](WMGaugeView& other) {
                                      other.scaleStartAngle = 80.9F;
                                      other.scaleDivisions = 5;
                                      other.scaleSubdivisions = 2;
                                      other.scaleSubdivisionsWidth = 0.01F;
                                      other.showScaleShadow = true;
                                      other.showUnitOfMeasurement = other.showInnerBackground =
                                          true;
                                      other.needleStyle = other.needleScrewStyle = 0;
                                    }),
                              // Nothing to divide, nothing to point to.
                              gauge(70, [](WMGaugeView& empty) {
                                empty.maxValue = 50;
                                empty.showInnerBackground = true;
                                empty.innerBackgroundStyle = 0;
                                empty.showScale = false;
                              })});
  };
  const StoredPicture stored("gauge.png", sheet(72));
  stored.expectUnlike(sheet(73), "a wrong value");
}

TEST(PictureTest, Rings) {
  const auto ring = [](float progress, double side = 60) {
    return [=](Canvas& canvas) {
      CircleProgressBar bar;
      Utils::circleProgressBarSettings(bar);
      if (progress == 1) bar.hintTextGenerationBlock = [](float) { return "hint"; };
      bar.setProgress(progress, false);
      bar.drawRect(canvas, {side, side + 20});
    };
  };
  const auto sheet = [&](float progress) {
    // The last two are too small for a disc, and just not.
    return drawn({60, 80}, {ring(progress), ring(1), ring(0), ring(0.5F, 12), ring(0.5F, 13)});
  };
  const StoredPicture stored("ring.png", sheet(0.4F));
  stored.expectUnlike(sheet(0.41F), "a wrong progress");
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
  const auto sheet = [&](double height) {
    return drawn({270, 110}, {curve({0, 4, 3, 2, 1, 0, 1, 2, 3, 4}, height), curve(full, 60),
                              curve({5, 5, 5, 5, 5, 5, 5, 5, 5, 6})});
  };
  const StoredPicture stored("curve.png", sheet(110.9));
  stored.expectUnlike(sheet(109.9), "a point lower");
  const StoredPicture none("no_curve.png", drawn({270, 110}, {curve({1, 2, 3, 4, 5, 6, 7, 8, 9})}));
  for (const float last : {5.0F, 5.9F}) {
    const std::vector<float> flat{5, 5, 5, 5, 5, 5, 5, 5, 5, last};
    const StoredPicture alike("no_curve.png", drawn({270, 110}, {curve(flat)}));
  }
}

class ScreenPictureTest : public testing::Test {
 protected:
  ScreenPictureTest() {
    rig_.appear();
    rig_.startMeasuring();
    rig_.heartrateBin(82);
    rig_.spo2(97);
    for (int i = 0; i < 40; ++i) {
      rig_.frame({100, 80, 40, static_cast<float>(100 + 20 * std::sin(i * 0.35))});
    }
    rig_.screen.finishAnimations();
    for (const auto& [element, text] : {std::pair{labelHeartrate, "72"},
                                        {labelSpo2, "97"},
                                        {labelLastHeartrate, "71"},
                                        {labelLastSpo2, "95"},
                                        {labelRed, "The status"},
                                        {labelGrey, "The instruction"}}) {
      views_.setText(element, text);
      views_.setFont(element, {"HelveticaNeue-Light", 25});
    }
    showsPulse(true);
    views_.setOpacity(beginButton, 0);
  }

  void showsPulse(bool shown) {
    views_.setHidden(MeasuringScreen::chartFourierView, !shown);
    views_.setHidden(viewLastMeasurements, shown);
  }
  std::string drawnAt(Size size, SafeArea safeArea = {},
                      CenterPanel center = CenterPanel::asShown) {
    return drawn(size, {[&](Canvas& canvas) {
                   drawMeasuringScreen(canvas, MeasuringLayout(size, safeArea), rig_.screen, views_,
                                       "Veyla", center);
                 }});
  }

  MeasuringRig rig_;
  ScreenState views_;
};

TEST_F(ScreenPictureTest, Measuring) {
  views_.setShimmering(labelMeasuringHeartrate, true);
  views_.setImage(buttonCheckboxSpo2, "checkbox_unmarked.png");
  const StoredPicture stored("screen.png", drawnAt({390, 844}, {47, 34}));
  stored.expectUnlike(drawnAt({390, 844}, {48, 34}), "a screen that is a point too low");
  views_.setHidden(labelGrey, true);
  stored.expectUnlike(drawnAt({390, 844}, {47, 34}), "a line that is missing");
}

TEST_F(ScreenPictureTest, BetweenMeasurementsOnASmallPhone) {
  showsPulse(false);
  views_.setOpacity(beginButton, 1);
  views_.setOpacity(stopButton, 0);
  views_.setOpacity(viewCenter, 0.5);
  views_.setOpacity(viewGaugeSpo2, 0);
  views_.setText(labelGrey, "A line that is too long to stand there in letters of its own size");
  views_.setText(labelFinger, "Press more lightly");
  views_.setText(labelDoubtSpo2, "Unsure: a doubt that takes more than one line of this phone's");
  const StoredPicture stored("small_screen.png", drawnAt({320, 568}));
  views_.setHidden(buttonCheckboxSpo2, true);
  stored.expectUnlike(drawnAt({320, 568}), "a box that is missing");
}

TEST_F(ScreenPictureTest, ATabletKeepsToTheMiddleAndAnEndShowsThePulseOnRequest) {
  showsPulse(false);
  const StoredPicture stored("tablet.png", drawnAt({600, 900}, {24, 20}, CenterPanel::pulse));
  stored.expectUnlike(drawnAt({600, 900}, {24, 20}), "the values in place of the pulse");
}

}  // namespace
}  // namespace veyla
