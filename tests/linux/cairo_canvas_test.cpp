#include "platform/linux/cairo_canvas.h"

#include <fontconfig/fontconfig.h>

#include <functional>
#include <numbers>

#include "tests/linux/pictures.h"

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

}  // namespace
}  // namespace veyla
