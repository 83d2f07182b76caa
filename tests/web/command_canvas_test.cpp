#include "platform/web/command_canvas.h"

#include <gmock/gmock.h>

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

double number(CommandCanvas::Command command) { return static_cast<double>(command); }

TEST(CommandCanvasTest, ADrawingIsReadBackByTheLengthsThatItTells) {
  using Command = CommandCanvas::Command;
  CommandCanvas canvas([](const std::string&, const Font&) { return TextExtents(); });
  canvas.fill(RadialGradient{{1, 2}, 3, {{0, {1, 0, 0, 1}}, {1, {0, 0, 1, 0.5}}}});
  EXPECT_THAT(canvas.numbers(), ElementsAre(number(Command::fill), 2, 1, 2, 3, 2,  // two stops
                                            0, 1, 0, 0, 1, 1, 0, 0, 1, 0.5));
  canvas.clear();
  canvas.drawText("72", {4, 5}, TextAlign::center, {"HelveticaNeue-Light", 11}, {0, 0, 0, 1});
  canvas.drawText("BPM", {6, 7}, TextAlign::left, {"HelveticaNeue", 9}, {0, 0, 0, 1});
  EXPECT_THAT(canvas.numbers(),
              ElementsAre(number(Command::drawText), 0, 4, 5, 1, 11, 300, 0, 0, 0, 1,
                          number(Command::drawText), 1, 6, 7, 0, 9, 400, 0, 0, 0, 1));
  EXPECT_THAT(canvas.texts(), ElementsAre("72", "BPM"));
  canvas.clear();
  EXPECT_THAT(canvas.numbers(), IsEmpty());
  EXPECT_THAT(canvas.texts(), IsEmpty());
}

TEST(CommandCanvasTest, ThePageMeasuresATextOfAFontOnce) {
  std::vector<std::string> asked;
  CommandCanvas canvas([&](const std::string& text, const Font& font) {
    asked.push_back(text);
    return TextExtents{.width = static_cast<double>(font.size), .ascent = 1, .descent = 0};
  });
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(canvas.measureText("50", {"HelveticaNeue-Light", 11}).width, 11);
    EXPECT_EQ(canvas.measureText("50", {"HelveticaNeue-Light", 25}).width, 25);
    EXPECT_EQ(canvas.measureText("50", {"HelveticaNeue-Bold", 11}).width, 11);
    canvas.clear();
  }
  EXPECT_THAT(asked, ElementsAre("50", "50", "50"));
}

}  // namespace
}  // namespace veyla
