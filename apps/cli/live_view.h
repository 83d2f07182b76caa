#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "apps/cli/terminal.h"
#include "measuring/main_view_controller.h"
#include "shell/screen_state.h"

namespace veyla {

/// Draws the measuring screen in a terminal, again and again in the same place: two values, two
/// rings as bars, the pulse curve, the status and instruction lines.
class LiveView {
 public:
  LiveView(const Terminal& terminal, const ScreenState& state);

  /// Redraws unless the last drawing was a moment ago: a recording that runs faster than a terminal
  /// can show costs no more than one that does not.
  void update(const MainViewController& screen);
  /// Draws for the last time: what a recording that is over left unfinished is not asked for.
  void end(const MainViewController& screen);

 private:
  void draw(const MainViewController& screen);
  std::vector<std::string> lines(const MainViewController& screen) const;
  std::string valueLine(const char* caption, Element value, Element measuring, const char* unit,
                        float progress) const;
  std::string bar(float progress, std::size_t width) const;
  std::string styled(const char* code, const std::string& text) const;
  /// Adds the text indented, on as many lines as it takes, at least one.
  void addText(std::vector<std::string>& lines, const char* code, const std::string& text) const;
  /// Adds the curve as wide as the terminal.
  void addCurve(std::vector<std::string>& lines, const ChartFourierView& curve) const;

  Terminal terminal_;
  const ScreenState& state_;
  /// From the first drawing on: before it, questions may be asked.
  std::optional<HiddenCursor> hiddenCursor_;
  std::size_t drawnLines_ = 0;
  bool hasEnded_ = false;
  std::chrono::steady_clock::time_point lastDrawing_;
};

/// A curve as lines of text, `rows` high, two values a character wide, in braille dots.
std::vector<std::string> brailleCurve(const std::vector<double>& values, std::size_t rows);

}  // namespace veyla
