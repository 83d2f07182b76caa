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
constexpr Pixel bluePixel{255, 0, 0, 255};
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
    addSquare(canvas, -20, -20, 40);
    canvas.fill(Color{0, 0, 0, 0.8});
    canvas.save();
    canvas.multiplyAlpha(0.5);
    canvas.fill(Color{0, 0, 0, 0.8});
    canvas.restore();
    canvas.fill(Color{0, 0, 0, 0.8});
    canvas.restore();
    addSquare(canvas, 15, 0, 5);
    canvas.fill(pureRed);
  }));
  EXPECT_EQ(picture.width, 40);
  EXPECT_EQ(picture.height, 20);
  EXPECT_EQ(picture.at(17, 6), (Pixel{73, 73, 73, 255}));
  for (const auto& [x, y] : {std::pair{15, 6}, {20, 6}, {17, 9}}) {
    EXPECT_EQ(picture.at(x, y), whitePixel);
  }
  EXPECT_EQ(picture.at(35, 6), redPixel);
}

TEST(CairoCanvasTest, ArcsTurnTheirWayKeepTheirPathAndGradientsRunFromStopToStop) {
  const Picture arcs(drawn({20, 20}, 1, [](Canvas& canvas) {
    canvas.beginPath();
    canvas.arc({10, 10}, 9, 0, quarter);
    canvas.arcNegative({10, 10}, 4, quarter, 0);
    canvas.closePath();
    canvas.fill(pureRed);
    canvas.drawText("|", {2, 8}, TextAlign::left, {"Light", 8}, white);
    canvas.stroke({.color = {0, 0, 1, 1}, .width = 2});
  }));
  EXPECT_EQ(arcs.at(14, 14), redPixel);
  for (const auto& [x, y] : {std::pair{11, 11}, {5, 5}, {5, 14}}) {
    EXPECT_EQ(arcs.at(x, y), whitePixel);
  }
  EXPECT_EQ(arcs.at(16, 10), bluePixel);

  const Picture gradients(drawn({20, 20}, 1, [](Canvas& canvas) {
    addSquare(canvas, 0, 0, 20);
    canvas.fill(LinearGradient{{5, 0}, {15, 0}, {{0, pureRed}, {1, {0, 0, 1, 1}}}});
    addSquare(canvas, 5, 15, 10);
    canvas.multiplyAlpha(0.5);
    canvas.fill(RadialGradient{{10, 20}, 5, {{0, white}, {1, {0, 0, 0, 1}}}});
  }));
  EXPECT_EQ(gradients.at(2, 2), redPixel);
  EXPECT_EQ(gradients.at(18, 2), bluePixel);
  EXPECT_NEAR(gradients.at(10, 19)[1], 115, 15) << "half of nearly white over no green";
  EXPECT_LT(gradients.at(5, 15)[1], 10);
}

TEST(CairoCanvasTest, TextsAreAlignedAsMeasured) {
  CairoCanvas canvas({100, 20}, 1);
  const Font light{"HelveticaNeue-Light", 16};
  const TextExtents extents = canvas.measureText("H", light);
  EXPECT_NEAR(extents.ascent, 0.727 * 16, 0.5);
  EXPECT_NEAR(extents.descent, 0, 0.5);
  const double width = canvas.measureText("HH", light).width;
  EXPECT_GT(width, 1.9 * extents.width);
  EXPECT_GT(canvas.measureText("H", {"HelveticaNeue-Bold", 16}).width, extents.width);

  const auto leftmost = [&](TextAlign align) {
    const Picture picture(drawn({100, 20}, 1, [&](Canvas& on) {
      on.drawText("HH", {50, 16}, align, light, {0, 0, 0, 1});
    }));
    int x = 0;
    while (x < picture.width && picture.at(x, 10) == whitePixel) ++x;
    return x;
  };
  EXPECT_NEAR(leftmost(TextAlign::left) - leftmost(TextAlign::center), width / 2, 1);
  EXPECT_NEAR(leftmost(TextAlign::left) - leftmost(TextAlign::right), width, 1);
}

// The widgets as they look. Each is drawn as it must be and then with one small fault, which the
// comparison must see.

TEST(PictureTest, Gauge) {
  const auto gauge = [](float value, float length) {
    WMGaugeView view;
    Utils::gaugeSettings(view, 50, 100, 10);
    view.scaleDivisionsLength *= length;
    view.setValue(value, false);
    return drawn({150, 150}, 1, [&](Canvas& canvas) { view.drawRect(canvas, {150, 150}); });
  };
  const StoredPicture stored("gauge.png", gauge(72, 1));
  stored.expectUnlike(gauge(73, 1), "a wrong value");
  stored.expectUnlike(gauge(72, 0.67F), "short ticks");
}

TEST(PictureTest, Ring) {
  const auto ring = [](float progress, double trackAlpha) {
    CircleProgressBar bar;
    Utils::circleProgressBarSettings(bar);
    bar.progressBarTrackColor.alpha *= trackAlpha;
    bar.setProgress(progress, false);
    return drawn({72, 72}, 1, [&](Canvas& canvas) { bar.drawRect(canvas, {72, 72}); });
  };
  const StoredPicture stored("ring.png", ring(0.4F, 1));
  stored.expectUnlike(ring(0.41F, 1), "a wrong progress");
  stored.expectUnlike(ring(0.4F, 1.5), "a darker track");
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
