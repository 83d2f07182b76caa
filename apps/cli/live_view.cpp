#include "apps/cli/live_view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "measuring/measuring_screen.h"

namespace veyla {

namespace {

constexpr std::size_t curveRows = 6;
constexpr std::size_t barWidth = 24;
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

std::vector<std::string> brailleCurve(const std::vector<int>& values, std::size_t rows) {
  std::vector<std::string> lines(rows);
  if (values.empty()) return lines;
  constexpr std::size_t dotsPerRow = 4;
  // Bits of the dots of a character, top to bottom, left column and right column.
  constexpr unsigned dotBits[2][dotsPerRow] = {{0x01, 0x02, 0x04, 0x40}, {0x08, 0x10, 0x20, 0x80}};

  const int highest = *std::max_element(values.begin(), values.end());
  const int lowest = *std::min_element(values.begin(), values.end());
  const double range = std::max(1, highest - lowest);
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

  const auto& points = screen.chartFourierView().data();
  std::vector<int> values(points.begin(), points.end());
  // The curve fits the terminal by showing its newest part; a line that wraps would break the
  // drawing in place.
  const std::size_t fits = terminal_.columns > 6 ? (terminal_.columns - 6) * 2 : 0;
  if (values.size() > fits) {
    values.erase(values.begin(), values.end() - static_cast<std::ptrdiff_t>(fits));
  }
  // Two values, four lines of text and blanks, and one that stays free below all.
  constexpr std::size_t rowsWithCurve = curveRows + 8;
  if (terminal_.unicode && terminal_.rows >= rowsWithCurve) {
    const auto curve =
        values.size() >= 10 ? brailleCurve(values, curveRows) : std::vector<std::string>(curveRows);
    for (const std::string& line : curve) lines.push_back("  " + styled(accent, line));
    lines.emplace_back();
  }

  const bool isLeft = hasEnded_ && !screen.isDone();
  lines.push_back(textLine(accent, isLeft ? "" : state_.visibleText(labelRed)));
  // Its instructions are for a finger that can still be moved; the report tells of the others.
  lines.push_back(textLine(faint, hasEnded_ ? "" : state_.visibleText(labelFinger)));
  return lines;
}

std::string LiveView::valueLine(const char* caption, Element value, Element measuring,
                                const char* unit, float progress) const {
  const bool shimmers = state_.view(measuring).shimmering;
  const std::string number = state_.view(value).text;
  char percent[16];
  std::snprintf(percent, sizeof percent, "%3.0f %%", static_cast<double>(progress) * 100);
  // A narrow terminal keeps the values and loses the bars, then the space between.
  constexpr std::size_t widthOfValue = 2 + 12 + 4 + 1 + 4;
  constexpr std::size_t widthWithBar = widthOfValue + 1 + barWidth + 1 + 5;
  const bool narrow = terminal_.columns <= widthOfValue;
  std::string line =
      (narrow ? "" : "  ") + styled(shimmers ? bold : faint, padded(caption, narrow ? 10 : 12)) +
      styled(bold, std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') + number);
  constexpr std::size_t narrowWidth = 10 + 4 + 1 + 3;
  if (!narrow || terminal_.columns > narrowWidth) line += std::string(" ") + unit;
  if (terminal_.columns > widthWithBar) {
    line += padded("", 4 - std::strlen(unit)) + " " + bar(progress) + " " + percent;
  }
  return line;
}

std::string LiveView::bar(float progress) const {
  const auto filled = static_cast<std::size_t>(std::floor(progress * static_cast<float>(barWidth)));
  const bool unicode = terminal_.unicode;
  return styled(accent, repeated(unicode ? "━" : "#", filled)) +
         styled(faint, repeated(unicode ? "─" : ".", barWidth - filled));
}

std::string LiveView::textLine(const char* code, const std::string& text) const {
  // The screen's texts are plain ASCII, a byte a column.
  const std::size_t fits = terminal_.columns > 3 ? terminal_.columns - 3 : 0;
  return "  " + styled(code, text.substr(0, fits));
}

std::string LiveView::styled(const char* code, const std::string& text) const {
  if (!terminal_.color || text.empty()) return text;
  return std::string("\x1b[") + code + "m" + text + "\x1b[0m";
}

}  // namespace veyla
