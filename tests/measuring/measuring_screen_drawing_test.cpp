#include "measuring/measuring_screen_drawing.h"

#include <gmock/gmock.h>

#include "tests/support/measuring_rig.h"
#include "tests/support/recorder_canvas.h"

namespace veyla {
namespace {

using namespace MeasuringScreen;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

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
  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const auto& text : drawn().texts) texts.push_back(text.text);
    return texts;
  }

  MeasuringRig rig_;
  ScreenState views_;
};

TEST_F(MeasuringScreenDrawingTest, ShowsWhatCanBeSeenAndNothingElse) {
  EXPECT_THAT(texts(), IsSupersetOf({"The title", "Heart rate", "50", "64", "SpO₂", "93", "98",
                                     "Last measurement", "71", "BPM", "95", "%", "the status",
                                     "the instruction", "START"}));
  EXPECT_THAT(texts(), Not(Contains("STOP")));
  EXPECT_THAT(texts(), Not(Contains("Pulse")));

  views_.animate(beginButton, "fadeOut", false, {});
  views_.animate(stopButton, "fadeIn", true, {});
  views_.setOpacity(labelRed, 0);
  views_.setHidden(chartFourierView, false);
  views_.setHidden(viewLastMeasurements, true);
  views_.animate(viewGaugeSpo2, "zoomOut", false, {});
  EXPECT_THAT(texts(), IsSupersetOf({"64", "SpO₂", "Pulse", "STOP"}));
  for (const char* gone : {"START", "the status", "Last measurement", "71", "98", "93"}) {
    EXPECT_THAT(texts(), Not(Contains(gone)));
  }
  views_.animate(viewCenter, "zoomOut", false, {});
  EXPECT_THAT(texts(), Not(Contains("Pulse")));
}

TEST_F(MeasuringScreenDrawingTest, CheckboxesShowTheirMarksUnlessHidden) {
  const std::size_t all = drawn().shapes.size();
  const auto marks = [&] {
    const auto shapes = drawn().shapes;
    return std::count_if(shapes.begin(), shapes.end(), [](const auto& shape) {
      return shape.isStroke() && shape.color() == white;
    });
  };
  EXPECT_EQ(marks(), 2);
  views_.setImage(buttonCheckboxSpo2, "checkbox_unmarked.png");
  EXPECT_EQ(marks(), 1);
  for (const Element box : {buttonCheckboxHeartrate, buttonCheckboxSpo2}) {
    views_.setHidden(box, true);
  }
  EXPECT_EQ(drawn().shapes.size(), all - 4);
  views_.setOpacity(viewCenter, 0.5);
  const auto shapes = drawn().shapes;
  EXPECT_EQ(std::count_if(shapes.begin(), shapes.end(),
                          [](const auto& shape) { return shape.alpha == 0.5; }),
            2);
}

TEST_F(MeasuringScreenDrawingTest, ACaptionIsRedWhileItShimmersAndLongLinesShrink) {
  EXPECT_NE(drawn().find("Heart rate")->color, accentRed);
  views_.setShimmering(labelMeasuringHeartrate, true);
  EXPECT_EQ(drawn().find("Heart rate")->color, accentRed);
  EXPECT_NE(drawn().find("SpO₂")->color, accentRed);

  const std::string line(60, 'm');
  views_.setText(labelGrey, line);
  EXPECT_FLOAT_EQ(drawn({320, 568}).find(line)->font.size, (320 - 32) / 30.0F);

  // A doubt is wrapped, and shown with either panel.
  views_.setText(labelDoubtSpo2, "Unsure: " + std::string(55, 'm') + " again");
  views_.setHidden(chartFourierView, false);
  views_.setHidden(viewLastMeasurements, true);
  EXPECT_THAT(texts(), IsSupersetOf({"Unsure: " + std::string(55, 'm'), std::string("again")}));
}

}  // namespace
}  // namespace veyla
