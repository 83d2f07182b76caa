#include "platform/web/command_canvas.h"

#include <gmock/gmock.h>

namespace veyla {
namespace {

using testing::ElementsAre;

TEST(CommandCanvasTest, ADrawingIsReadBackByTheLengthsThatItTells) {
  constexpr auto fill = static_cast<double>(CommandCanvas::Command::fill);
  constexpr auto drawText = static_cast<double>(CommandCanvas::Command::drawText);
  CommandCanvas canvas([](const std::string&, const Font&) { return TextExtents(); });
  canvas.drawText("former", {0, 0}, TextAlign::left, {"HelveticaNeue", 9}, {0, 0, 0, 1});
  canvas.clear();
  canvas.fill(RadialGradient{{1, 2}, 3, {{0, {1, 0, 0, 1}}, {1, {0, 0, 1, 0.5}}}});
  canvas.drawText("72", {4, 5}, TextAlign::center, {"HelveticaNeue-Light", 11}, {0, 0, 0, 1});
  canvas.drawText("BPM", {6, 7}, TextAlign::left, {"HelveticaNeue", 9}, {0, 0, 0, 1});
  EXPECT_EQ(canvas.numbers(),
            (std::vector<double>{fill,     2, 1, 2, 3, 2,                      // two stops
                                 0,        1, 0, 0, 1, 1,  0,   0, 1, 0.5,     // and their colours
                                 drawText, 0, 4, 5, 1, 11, 300, 0, 0, 0,   1,  //
                                 drawText, 1, 6, 7, 0, 9,  400, 0, 0, 0,   1}));
  EXPECT_THAT(canvas.texts(), ElementsAre("72", "BPM"));
}

}  // namespace
}  // namespace veyla
