#include "measuring/measuring_screen_drawing.h"

#include <gmock/gmock.h>

#include "tests/support/measuring_rig.h"
#include "tests/support/recorder_canvas.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

using namespace MeasuringScreen;
using testing::Pair;
using testing::UnorderedElementsAre;

bool isWithin(const Rect& inner, const Rect& outer) {
  constexpr double rounding = 1e-6;
  return inner.x >= outer.x - rounding && inner.y >= outer.y - rounding &&
         inner.x + inner.width <= outer.x + outer.width + rounding &&
         inner.y + inner.height <= outer.y + outer.height + rounding;
}

bool overlap(const Rect& a, const Rect& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

TEST(MeasuringLayoutTest, EverythingHasAPlaceOfItsOwnOnEveryPhone) {
  const std::pair<Size, SafeArea> phones[] = {{{320, 460}, {}},       {{320, 568}, {20, 0}},
                                              {{360, 640}, {24, 0}},  {{390, 844}, {47, 34}},
                                              {{430, 932}, {59, 34}}, {{1024, 1366}, {24, 20}}};
  for (const auto& [size, safeArea] : phones) {
    SCOPED_TRACE(size.height);
    const MeasuringLayout layout(size, safeArea);
    const Rect usable{0, safeArea.top, size.width, size.height - safeArea.top - safeArea.bottom};
    const Rect apart[] = {layout.title,        layout.heartrate.caption, layout.heartrate.gauge,
                          layout.spo2.caption, layout.spo2.gauge,        layout.center,
                          layout.status,       layout.instruction,       layout.button};
    for (const Rect& one : apart) {
      EXPECT_TRUE(isWithin(one, usable)) << one.y << " to " << one.y + one.height;
      for (const Rect& other : apart) {
        EXPECT_TRUE(&one == &other || !overlap(one, other)) << one.y << " and " << other.y;
      }
    }
    for (const auto& value : {layout.heartrate, layout.spo2}) {
      EXPECT_TRUE(isWithin(value.ring, value.gauge));
      EXPECT_TRUE(isWithin(value.lastValue, layout.center));
      EXPECT_GT(value.gauge.width, 90);
    }
    EXPECT_TRUE(isWithin(layout.chart, layout.center));
    // The curve keeps 10 points of its height free and must still be one.
    EXPECT_GT(layout.chart.height, 40);
  }
}

TEST(MeasuringLayoutTest, OnTwoOfThemEverythingStandsHere) {
  const auto places = [](Size size, SafeArea safeArea) {
    const MeasuringLayout on(size, safeArea);
    std::string all;
    for (const Rect& each :
         {on.title, on.heartrate.caption, on.heartrate.checkbox, on.heartrate.gauge,
          on.heartrate.ring, on.spo2.gauge, on.center, on.centerHeading, on.chart,
          on.heartrate.lastValue, on.spo2.lastValue, on.status, on.instruction, on.button}) {
      all += formatText("%.0f %.0f %.0f %.0f | ", each.x, each.y, each.width, each.height);
    }
    return all;
  };
  EXPECT_EQ(places({390, 844}, {47, 34}),
            "0 47 390 44 | 16 121 172 30 | 16 124 24 24 | 16 151 172 172 | 66 248 72 72 | "
            "202 151 172 172 | 16 353 358 190 | 30 367 330 20 | 60 394 270 135 | 16 387 179 142 | "
            "195 387 179 142 | 16 573 358 24 | 16 597 358 22 | 151 670 89 89 | ");
  EXPECT_EQ(places({320, 460}, {}),
            "0 0 320 44 | 21 52 132 30 | 21 55 24 24 | 21 82 132 132 | 59 157 55 55 | "
            "167 82 132 132 | 16 222 288 112 | 30 236 260 20 | 25 263 270 57 | 16 256 144 64 | "
            "160 256 144 64 | 16 342 288 24 | 16 366 288 22 | 132 396 56 56 | ");
}

class MeasuringScreenDrawingTest : public testing::Test {
 protected:
  MeasuringScreenDrawingTest() {
    rig_.appear();
    for (const auto& [element, text] : {std::pair{labelHeartrate, "64"},
                                        {labelSpo2, "98"},
                                        {labelLastHeartrate, "71"},
                                        {labelLastSpo2, "95"},
                                        {labelGrey, "the instruction"},
                                        {labelRed, "the status"}}) {
      views_.setText(element, text);
      views_.setFont(element, {"HelveticaNeue-Light", 25});
    }
    views_.setHidden(chartFourierView, true);
    views_.setOpacity(stopButton, 0);
  }

  RecorderCanvas drawn(Size size = {390, 844}) const {
    RecorderCanvas canvas;
    drawMeasuringScreen(canvas, MeasuringLayout(size), rig_.screen, views_, "The title");
    return canvas;
  }
  /// The screen's texts but for the scales', each with its size and colour.
  std::string texts() const {
    std::vector<std::string> texts;
    for (const auto& text : drawn().texts) {
      const bool isOfScale =
          text.text.find_first_not_of("0123456789") == std::string::npos && text.font.size < 12;
      if (isOfScale) continue;
      texts.push_back(text.text + formatText(" %.3g ", static_cast<double>(text.font.size)) +
                      hex(text.color));
    }
    return joined(texts);
  }
  /// The tones of what is filled or stroked, and in how many shapes each.
  std::map<std::string, int> tones() const {
    std::map<std::string, int> tones;
    for (const auto& shape : drawn().shapes) ++tones[hex(shape.color())];
    return tones;
  }
  static std::string hex(const Color& color) {
    const auto byte = [](double part) { return static_cast<int>(std::lround(255 * part)); };
    return formatText("%02x%02x%02x%02x", byte(color.red), byte(color.green), byte(color.blue),
                      byte(color.alpha));
  }

  MeasuringRig rig_;
  ScreenState views_;
};

TEST_F(MeasuringScreenDrawingTest, ShowsWhatCanBeSeenAndNothingElse) {
  EXPECT_EQ(texts(),
            "The title 18 ffffffff | 64 25 ffffffff | Heart rate 15 1c1c1fff | 98 25 ffffffff | "
            "SpO₂ 15 1c1c1fff | Last measurement 13 63636bff | 71 44 1c1c1fff | BPM 14 63636bff | "
            "95 44 1c1c1fff | % 14 63636bff | the status 17 c80200ff | "
            "the instruction 15 63636bff | START 16.8 ffffffff");
  EXPECT_THAT(tones(),
              UnorderedElementsAre(Pair("00000014", 1), Pair("00000017", 2), Pair("00000033", 2),
                                   Pair("212126ff", 4), Pair("3d3d42ff", 19), Pair("5c5c63ff", 2),
                                   Pair("9e9ea6ff", 2), Pair("c80200ff", 6), Pair("d81410ff", 1),
                                   Pair("f6f6f8ff", 1), Pair("ffffffff", 3)));
  const auto all = drawn().shapes;
  EXPECT_EQ(std::count_if(all.begin(), all.end(),
                          [](const auto& shape) {
                            return shape.isStroke() && shape.color() == white &&
                                   shape.points.size() == 3;
                          }),
            2)
      << "ticks";

  views_.animate(beginButton, "fadeOut", false, {});
  views_.animate(stopButton, "fadeIn", true, {});
  views_.setOpacity(labelRed, 0);
  views_.setHidden(chartFourierView, false);
  views_.setHidden(viewLastMeasurements, true);
  views_.animate(viewGaugeSpo2, "zoomOut", false, {});
  views_.setShimmering(labelMeasuringHeartrate, true);
  views_.setImage(buttonCheckboxHeartrate, "checkbox_unmarked.png");
  views_.setHidden(buttonCheckboxSpo2, true);
  EXPECT_EQ(texts(),
            "The title 18 ffffffff | 64 25 ffffffff | Heart rate 15 c80200ff | SpO₂ 15 63636bff | "
            "Pulse 13 63636bff | the instruction 15 63636bff | STOP 16.8 ffffffff");
  EXPECT_EQ(tones()["3b3b40ff"], 2) << "the button's edge and disc";
  EXPECT_EQ(tones()["9999a1ff"], 1) << "the edge of an empty box";
  EXPECT_EQ(tones()["ffffffff"], 2) << "the screen and an empty box";
  views_.setOpacity(viewCenter, 0.5);
  const auto shapes = drawn().shapes;
  for (const auto& shape : shapes) {
    for (std::size_t i = 0; shape.arcs.size() == 4 && i < 4; ++i) {
      EXPECT_NEAR(shape.arcs[i].to - shape.arcs[i].from, 90 * degree, 1e-9) << "a corner";
    }
  }
  EXPECT_EQ(std::count_if(shapes.begin(), shapes.end(),
                          [](const auto& shape) { return shape.alpha == 0.5; }),
            2);
  views_.animate(viewCenter, "zoomOut", false, {});
  EXPECT_EQ(texts().find("Pulse"), std::string::npos);
}

TEST_F(MeasuringScreenDrawingTest, LongLinesShrinkAndADoubtIsWrappedUnderEitherPanel) {
  const std::string line(60, 'm');
  views_.setText(labelGrey, line);
  EXPECT_FLOAT_EQ(drawn({320, 568}).find(line)->font.size, (320 - 32) / 30.0F);
  views_.setText(labelDoubtSpo2, "Unsure: " + std::string(55, 'm') + " again");
  views_.setHidden(chartFourierView, false);
  views_.setHidden(viewLastMeasurements, true);
  const RecorderCanvas canvas = drawn();
  EXPECT_GT(canvas.find("again")->at.y, canvas.find("Unsure: " + std::string(55, 'm'))->at.y);
  EXPECT_THAT(texts(), testing::HasSubstr("Unsure: " + std::string(55, 'm') +
                                          " 11 1c1c1fff | again 11 1c1c1fff"));
}

}  // namespace
}  // namespace veyla
