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

TEST(CairoCanvasTest, TextsAreMeasuredInTheirFont) {
  CairoCanvas canvas({100, 20}, 1);
  const Font light{"HelveticaNeue-Light", 16};
  const TextExtents extents = canvas.measureText("H", light);
  EXPECT_NEAR(extents.ascent, 0.727 * 16, 0.5);
  EXPECT_NEAR(extents.descent, 0, 0.5);
  EXPECT_GT(canvas.measureText("HH", light).width, 1.9 * extents.width);
  EXPECT_GT(canvas.measureText("H", {"HelveticaNeue-Bold", 16}).width, extents.width);
}

// Pictures are drawn as they must be and then with one small fault, which the comparison must see.

TEST(PictureTest, EveryOperation) {
  const auto everything = [](double turn) {
    return drawn({80, 60}, 2, [=](Canvas& canvas) {
      // Turned clockwise, x runs down and y to the left; what is faded is so until the restore.
      canvas.save();
      canvas.translate(20, 5);
      canvas.rotate(turn);
      canvas.scale(2, 1);
      addSquare(canvas, 0, 0, 8);
      canvas.clip();
      canvas.multiplyAlpha(0.5);
      addSquare(canvas, 3, -20, 40);
      canvas.fill(Color{0, 0, 0, 0.8});
      canvas.save();
      canvas.multiplyAlpha(0.5);
      addSquare(canvas, 5, -20, 40);
      canvas.fill(pureRed);
      canvas.restore();
      addSquare(canvas, 7, -20, 40);
      canvas.fill(pureRed);
      canvas.restore();
      addSquare(canvas, 25, 5, 10);
      canvas.fill(pureRed);

      canvas.beginPath();
      canvas.arc({10, 35}, 18, 0, quarter);
      canvas.arcNegative({10, 35}, 8, quarter, 0);
      canvas.closePath();
      canvas.fill(pureRed);
      canvas.drawText("the path stays", {2, 32}, TextAlign::left, {"Light", 5}, {0, 0, 0, 1});
      canvas.stroke({.color = {0, 0, 1, 1}, .width = 2});

      addSquare(canvas, 40, 5, 20);
      canvas.fill(LinearGradient{{45, 5}, {55, 10}, {{0, pureRed}, {1, {0, 0, 1, 1}}}});
      canvas.save();
      canvas.multiplyAlpha(0.5);
      canvas.fill(RadialGradient{{50, 20}, 8, {{0, white}, {1, {0, 0, 0, 1}}}});
      canvas.restore();

      double line = 35;
      for (const TextAlign align : {TextAlign::left, TextAlign::center, TextAlign::right}) {
        canvas.drawText("Hm", {60, line += 7}, align, {"HelveticaNeue-Bold", 7}, {0, 0, 0, 1});
      }
    });
  };
  const StoredPicture stored("canvas.png", everything(quarter));
  stored.expectUnlike(everything(quarter + 0.05), "turned too far");
}

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
