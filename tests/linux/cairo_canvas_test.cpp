#include "platform/linux/cairo_canvas.h"

#include <fontconfig/fontconfig.h>

#include <functional>
#include <numbers>

#include "measuring/display_settings.h"
#include "measuring/measuring_screen_drawing.h"
#include "tests/linux/pictures.h"
#include "tests/support/measuring_rig.h"

namespace veyla {
namespace {

using Pixel = Picture::Pixel;

constexpr Pixel whitePixel{255, 255, 255, 255};
constexpr Pixel redPixel{0, 0, 255, 255};
constexpr double quarter = std::numbers::pi / 2;

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

void addSquare(Canvas& canvas, double x, double y, double side) {
  canvas.beginPath();
  canvas.moveTo(x, y);
  canvas.lineTo(x + side, y);
  canvas.lineTo(x + side, y + side);
  canvas.lineTo(x, y + side);
  canvas.closePath();
}

std::string drawn(Size size, double density, const std::function<void(Canvas&)>& draw) {
  CairoCanvas canvas(size, density);
  addSquare(canvas, 0, 0, std::max(size.width, size.height));
  canvas.fill(white);
  draw(canvas);
  return canvas.png();
}

TEST(CairoCanvasTest, TransformsClipsAndFadesUntilTheRestore) {
  const Picture picture(drawn({20, 10}, 2, [](Canvas& canvas) {
    canvas.save();
    canvas.translate(10, 0);
    canvas.rotate(quarter);
    canvas.scale(2, 1);
    // Turned clockwise, x runs down and y to the left.
    addSquare(canvas, 0, 0, 2);
    canvas.clip();
    canvas.multiplyAlpha(0.5);
    canvas.save();
    canvas.multiplyAlpha(0.5);
    canvas.restore();
    addSquare(canvas, -20, -20, 40);
    canvas.fill(Color{0, 0, 0, 0.8});
    canvas.restore();
    addSquare(canvas, 15, 0, 5);
    canvas.fill(pureRed);
  }));
  EXPECT_EQ(picture.width, 40);
  EXPECT_EQ(picture.height, 20);
  EXPECT_EQ(picture.at(17, 6), (Pixel{153, 153, 153, 255}));
  EXPECT_EQ(picture.at(15, 6), whitePixel);
  EXPECT_EQ(picture.at(20, 6), whitePixel);
  EXPECT_EQ(picture.at(17, 9), whitePixel);
  EXPECT_EQ(picture.at(35, 6), redPixel);
}

TEST(CairoCanvasTest, ArcsTurnTheirWayAndKeepTheirPath) {
  const Picture picture(drawn({20, 20}, 1, [](Canvas& canvas) {
    canvas.beginPath();
    canvas.arc({10, 10}, 9, 0, quarter);
    canvas.arcNegative({10, 10}, 4, quarter, 0);
    canvas.closePath();
    canvas.fill(pureRed);
    canvas.drawText("|", {2, 8}, TextAlign::left, {"Light", 8}, white);
    canvas.stroke({.color = {0, 0, 1, 1}, .width = 2});
  }));
  EXPECT_EQ(picture.at(14, 14), redPixel);
  EXPECT_EQ(picture.at(11, 11), whitePixel);
  EXPECT_EQ(picture.at(5, 5), whitePixel);
  EXPECT_EQ(picture.at(5, 14), whitePixel);
  EXPECT_EQ(picture.at(16, 10), (Pixel{255, 0, 0, 255}));
}

TEST(CairoCanvasTest, GradientsRunFromTheirFirstStopToTheirLast) {
  const Picture picture(drawn({20, 20}, 1, [](Canvas& canvas) {
    addSquare(canvas, 0, 0, 20);
    canvas.fill(LinearGradient{{5, 0}, {15, 0}, {{0, pureRed}, {1, {0, 0, 1, 1}}}});
    addSquare(canvas, 5, 5, 10);
    canvas.multiplyAlpha(0.5);
    canvas.fill(RadialGradient{{10, 10}, 5, {{0, white}, {1, {0, 0, 0, 1}}}});
  }));
  EXPECT_EQ(picture.at(2, 2), redPixel);
  EXPECT_EQ(picture.at(18, 2), (Pixel{255, 0, 0, 255}));
  EXPECT_GT(picture.at(10, 10)[1], 100);
  EXPECT_LT(picture.at(5, 5)[1], 10);
}

TEST(CairoCanvasTest, TextsAreAlignedAsMeasured) {
  CairoCanvas canvas({100, 20}, 1);
  const Font light{"HelveticaNeue-Light", 16};
  const TextExtents extents = canvas.measureText("H", light);
  EXPECT_NEAR(extents.ascent, 0.727 * 16, 0.5);
  EXPECT_NEAR(extents.descent, 0, 0.5);
  EXPECT_GT(canvas.measureText("HH", light).width, 1.9 * extents.width);
  EXPECT_GT(canvas.measureText("H", {"HelveticaNeue-Bold", 16}).width, extents.width);

  const auto leftmost = [](TextAlign align) {
    const Picture picture(drawn({100, 20}, 1, [&](Canvas& on) {
      on.drawText("HH", {50, 16}, align, {"HelveticaNeue-Light", 16}, {0, 0, 0, 1});
    }));
    for (int x = 0; x < picture.width; ++x) {
      if (picture.at(x, 10) != whitePixel) return x;
    }
    return -1;
  };
  const double width = canvas.measureText("HH", light).width;
  EXPECT_NEAR(leftmost(TextAlign::left) - leftmost(TextAlign::center), width / 2, 1);
  EXPECT_NEAR(leftmost(TextAlign::left) - leftmost(TextAlign::right), width, 1);
}

// The widgets as they look. Each is drawn as it must be and then with one small fault, which the
// comparison must see.

TEST(PictureTest, Gauge) {
  const auto gauge = [](float value, const std::function<void(WMGaugeView&)>& change) {
    WMGaugeView view;
    Utils::gaugeSettings(view, 50, 100, 10);
    change(view);
    view.setValue(value, false);
    return drawn({150, 150}, 1, [&](Canvas& canvas) { view.drawRect(canvas, {150, 150}); });
  };
  const auto nothing = [](WMGaugeView&) {};
  const StoredPicture stored("gauge.png", gauge(72, nothing));
  stored.expectUnlike(gauge(73, nothing), "a wrong value");
  stored.expectUnlike(gauge(72, [](auto& view) { view.minValue = 49; }), "a wrong scale");
  stored.expectUnlike(gauge(72, [](auto& view) { view.scaleDivisionsLength = 0.03F; }),
                      "short ticks");
}

TEST(PictureTest, Ring) {
  const auto ring = [](float progress, const std::function<void(CircleProgressBar&)>& change) {
    CircleProgressBar bar;
    Utils::circleProgressBarSettings(bar);
    bar.setProgress(progress, false);
    change(bar);
    return drawn({72, 72}, 1, [&](Canvas& canvas) { bar.drawRect(canvas, {72, 72}); });
  };
  const auto nothing = [](CircleProgressBar&) {};
  const StoredPicture stored("ring.png", ring(0.4F, nothing));
  stored.expectUnlike(ring(0.41F, nothing), "a wrong progress");
  stored.expectUnlike(ring(0.4F, [](auto& bar) { bar.startAngle = 271; }), "a turned ring");
  stored.expectUnlike(ring(0.4F, [](auto& bar) { bar.progressBarTrackColor.alpha = 0.3; }),
                      "a darker track");
}

TEST(PictureTest, Curve) {
  const auto curve = [](double lower, float first) {
    ChartFourierView chart;
    for (int i = 0; i < 90; ++i) {
      chart.addDataPoint(i == 0 ? first : static_cast<float>(100 + 20 * std::sin(i * 0.35)));
    }
    return drawn({270, 100}, 1, [&](Canvas& canvas) {
      canvas.translate(0, lower);
      chart.drawRect(canvas, {270, 100});
    });
  };
  const StoredPicture stored("curve.png", curve(0, 100));
  stored.expectUnlike(curve(1, 100), "a curve that is a point too low");
  stored.expectUnlike(curve(0, 102), "a first point that is 5 points too high");
}

TEST(PictureTest, MeasuringScreen) {
  using namespace MeasuringScreen;
  MeasuringRig rig;
  rig.appear();
  rig.startMeasuring();
  rig.heartrateBin(82);
  rig.spo2(97);
  for (int i = 0; i < 40; ++i) {
    rig.frame({100, 80, 40, static_cast<float>(100 + 20 * std::sin(i * 0.35))});
  }
  rig.screen.finishAnimations();

  ScreenState views;
  const Font light{"HelveticaNeue-Light", 25};
  for (const auto& [element, text] : {std::pair{labelHeartrate, "72"},
                                      {labelSpo2, "97"},
                                      {labelRed, "Analyzing - hold steady ..."},
                                      {labelGrey, "Cover flash and camera lens with finger..."}}) {
    views.setText(element, text);
    views.setFont(element, light);
  }
  views.setShimmering(labelMeasuringHeartrate, true);
  views.setImage(buttonCheckboxSpo2, "checkbox_unmarked.png");
  views.setHidden(viewLastMeasurements, true);
  views.setOpacity(beginButton, 0);
  const auto screen = [&](SafeArea safeArea) {
    return drawn({390, 844}, 0.5, [&](Canvas& canvas) {
      drawMeasuringScreen(canvas, MeasuringLayout({390, 844}, safeArea), rig.screen, views,
                          "Veyla");
    });
  };
  const StoredPicture stored("screen.png", screen({47, 34}));
  stored.expectUnlike(screen({48, 34}), "a screen that is a point too low");
  views.setHidden(labelGrey, true);
  stored.expectUnlike(screen({47, 34}), "a line that is missing");
}

}  // namespace
}  // namespace veyla
