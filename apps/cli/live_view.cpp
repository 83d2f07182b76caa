#include "apps/cli/live_view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "measuring/measuring_screen.h"

namespace veyla {

namespace {

constexpr std::size_t curveRows = 6;
/// A shorter bar tells nothing.
constexpr std::size_t leastBarWidth = 8;
constexpr auto betweenDrawings = std::chrono::milliseconds(33);

constexpr const char* accent = "38;2;200;2;0";
constexpr const char* bold = "1";
constexpr const char* faint = "2";

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string repeated(const char* text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

void appendBraille(std::string& text, unsigned dots) {
  // U+2800 and the dots, in UTF-8.
  text += '\xE2';
  text += static_cast<char>(0xA0 + (dots >> 6));
  text += static_cast<char>(0x80 + (dots & 0x3F));
}

}  // namespace

std::vector<std::string> brailleCurve(const std::vector<double>& values, std::size_t rows) {
  std::vector<std::string> lines(rows);
  if (values.empty()) return lines;
  constexpr std::size_t dotsPerRow = 4;
  // Bits of the dots of a character, top to bottom, left column and right column.
  constexpr unsigned dotBits[2][dotsPerRow] = {{0x01, 0x02, 0x04, 0x40}, {0x08, 0x10, 0x20, 0x80}};

  const double highest = *std::max_element(values.begin(), values.end());
  const double lowest = *std::min_element(values.begin(), values.end());
  const double range = std::max(1.0, highest - lowest);
  const double height = static_cast<double>(rows * dotsPerRow - 1);
  const auto dotOf = [&](std::size_t i) {
    return static_cast<std::size_t>(std::lround((highest - values[i]) / range * height));
  };

  std::vector<std::vector<unsigned>> cells(rows, std::vector<unsigned>((values.size() + 1) / 2));
  for (std::size_t i = 0; i < values.size(); ++i) {
    // The stroke runs on from the value before, so that steep flanks have no holes.
    const std::size_t here = dotOf(i);
    const std::size_t before = i == 0 ? here : dotOf(i - 1);
    std::size_t from = std::min(here, before);
    std::size_t to = std::max(here, before);
    if (to - from > 1) (here > before ? from : to) += here > before ? 1 : std::size_t(-1);
    for (std::size_t dot = from; dot <= to; ++dot) {
      cells[dot / dotsPerRow][i / 2] |= dotBits[i % 2][dot % dotsPerRow];
    }
  }
  for (std::size_t row = 0; row < rows; ++row) {
    for (const unsigned dots : cells[row]) appendBraille(lines[row], dots);
  }
  return lines;
}

namespace {

/// The points on so many places, evenly, on straight lines between them.
std::vector<double> resampled(const ChartFourierView::Points& points, std::size_t places) {
  std::vector<double> values;
  const double step = static_cast<double>(points.size() - 1) / static_cast<double>(places - 1);
  for (std::size_t i = 0; i < places; ++i) {
    const double at = static_cast<double>(i) * step;
    const auto before = std::min(static_cast<std::size_t>(at), points.size() - 2);
    values.push_back(std::lerp(static_cast<double>(points[before]),
                               static_cast<double>(points[before + 1]),
                               at - static_cast<double>(before)));
  }
  return values;
}

}  // namespace

LiveView::LiveView(const Terminal& terminal, const ScreenState& state)
    : terminal_(terminal), state_(state) {}

void LiveView::update(const MainViewController& screen) {
  if (std::chrono::steady_clock::now() - lastDrawing_ >= betweenDrawings) draw(screen);
}

void LiveView::end(const MainViewController& screen) {
  hasEnded_ = true;
  draw(screen);
}

void LiveView::draw(const MainViewController& screen) {
  lastDrawing_ = std::chrono::steady_clock::now();
  if (!hiddenCursor_) hiddenCursor_.emplace();
  std::string text;
  if (drawnLines_ > 0) text += "\x1b[" + std::to_string(drawnLines_) + "A";
  const auto drawn = lines(screen);
  for (const std::string& line : drawn) text += "\r" + line + "\x1b[K\n";
  if (drawn.size() < drawnLines_) text += "\x1b[J";
  drawnLines_ = drawn.size();
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

std::vector<std::string> LiveView::lines(const MainViewController& screen) const {
  using namespace MeasuringScreen;
  std::vector<std::string> lines;
  lines.emplace_back();
  if (screen.runHeartrate()) {
    lines.push_back(valueLine("Heart rate", labelHeartrate, labelMeasuringHeartrate, "BPM",
                              screen.circleprogressHeartrate().progress()));
  }
  if (screen.runSpo2()) {
    lines.push_back(valueLine("SpO2", labelSpo2, labelMeasuringSpo2, "%",
                              screen.circleprogressSpo2().progress()));
  }
  lines.emplace_back();

  // Two values, four lines of text and blanks, two that texts may take more, and one that stays
  // free below all.
  constexpr std::size_t rowsWithCurve = curveRows + 10;
  if (terminal_.unicode && terminal_.rows >= rowsWithCurve) {
    addCurve(lines, screen.chartFourierView());
  }

  const bool isLeft = hasEnded_ && !screen.isDone();
  addText(lines, accent, isLeft ? "" : state_.visibleText(labelRed));
  // Its instructions are for a finger that can still be moved; the report tells of the others.
  addText(lines, faint, hasEnded_ ? "" : state_.visibleText(labelFinger));
  return lines;
}

void LiveView::addCurve(std::vector<std::string>& lines, const ChartFourierView& curve) const {
  // It fills from the left; a line that wraps would break the drawing in place.
  constexpr std::size_t margins = 4;
  const std::size_t width = std::max(terminal_.columns, 2 * margins) - margins;
  const ChartFourierView::Points& points = curve.data();
  const std::size_t places = 2 * width * points.size() / ChartFourierView::capacity;
  std::vector<std::string> drawn(curveRows);
  if (points.size() >= ChartFourierView::fewestDrawn && places > 1) {
    drawn = brailleCurve(resampled(points, places), curveRows);
  }
  for (const std::string& line : drawn) lines.push_back("  " + styled(accent, line));
  lines.emplace_back();
}

std::string LiveView::valueLine(const char* caption, Element value, Element measuring,
                                const char* unit, float progress) const {
  const bool shimmers = state_.view(measuring).shimmering;
  const std::string number = state_.view(value).text;
  // Named, since it may stand beside a saturation in per cent.
  char percent[24];
  std::snprintf(percent, sizeof percent, "%3.0f %% done", static_cast<double>(progress) * 100);
  // A narrow terminal keeps the values and loses the bars, then the progress, then the space
  // between.
  constexpr std::size_t widthOfValue = 2 + 12 + 4 + 1 + 4;
  constexpr std::size_t widthWithProgress = widthOfValue + 1 + 10 + 1;
  constexpr std::size_t widthBesideBar = widthWithProgress + 2;
  const bool narrow = terminal_.columns <= widthOfValue;
  std::string line =
      (narrow ? "" : "  ") + styled(shimmers ? bold : faint, padded(caption, narrow ? 10 : 12)) +
      styled(bold, std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') + number);
  constexpr std::size_t narrowWidth = 10 + 4 + 1 + 3;
  if (!narrow || terminal_.columns > narrowWidth) line += std::string(" ") + unit;
  if (terminal_.columns < widthWithProgress) return line;
  line += padded("", 4 - std::strlen(unit));
  if (terminal_.columns >= widthBesideBar + leastBarWidth) {
    line += " " + bar(progress, terminal_.columns - widthBesideBar);
  }
  return line + " " + percent;
}

std::string LiveView::bar(float progress, std::size_t width) const {
  const auto filled = static_cast<std::size_t>(std::floor(progress * static_cast<float>(width)));
  const bool unicode = terminal_.unicode;
  return styled(accent, repeated(unicode ? "━" : "#", filled)) +
         styled(faint, repeated(unicode ? "─" : ".", width - filled));
}

void LiveView::addText(std::vector<std::string>& lines, const char* code,
                       const std::string& text) const {
  Terminal within = terminal_;
  within.columns = std::max<std::size_t>(terminal_.columns, 4) - 3;
  std::istringstream rest(wrapped(text, within) + "\n");
  for (std::string line; std::getline(rest, line);) lines.push_back("  " + styled(code, line));
}

std::string LiveView::styled(const char* code, const std::string& text) const {
  if (!terminal_.color || text.empty()) return text;
  return std::string("\x1b[") + code + "m" + text + "\x1b[0m";
}

}  // namespace veyla
