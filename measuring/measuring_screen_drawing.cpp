#include "measuring/measuring_screen_drawing.h"

#include <algorithm>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace veyla {

namespace {

using namespace MeasuringScreen;

constexpr Color ink{0.11, 0.11, 0.12, 1};
constexpr Color grey{0.39, 0.39, 0.42, 1};
constexpr Color panelColor{0.965, 0.965, 0.972, 1};
constexpr Color hairlineColor{0, 0, 0, 0.08};
constexpr Color checkboxEdgeColor{0.6, 0.6, 0.63, 1};
constexpr Color stopColor{0.23, 0.23, 0.25, 1};
constexpr Color barTopColor{216.0 / 255, 20.0 / 255, 16.0 / 255, 1};

constexpr std::string_view light = "HelveticaNeue-Light";
constexpr std::string_view regular = "HelveticaNeue";
constexpr std::string_view medium = "HelveticaNeue-Medium";

Font fontOf(std::string_view name, double size) { return {name, static_cast<float>(size)}; }

/// Draws with an element's opacity; nothing of one that cannot be seen.
template <class Draw>
void drawElement(Canvas& canvas, const ScreenState& views, Element element, const Draw& draw) {
  const ScreenState::View& view = views.view(element);
  if (!view.isVisible()) return;
  canvas.save();
  canvas.multiplyAlpha(view.opacity);
  draw(view);
  canvas.restore();
}

/// Draws a widget in its own coordinates.
template <class Widget>
void drawWidget(Canvas& canvas, const Widget& widget, const Rect& frame) {
  canvas.save();
  canvas.translate(frame.x, frame.y);
  widget.drawRect(canvas, {frame.width, frame.height});
  canvas.restore();
}

/// One line in the middle of a frame, smaller where it would not fit.
void drawLine(Canvas& canvas, std::string_view line, const Rect& frame, Font font,
              const Color& color) {
  if (line.empty()) return;
  const std::string text(line);
  const double width = canvas.measureText(text, font).width;
  if (width > frame.width)
    font = fontOf(font.name, static_cast<double>(font.size) * frame.width / width);
  // Capitals and digits stand in the middle, descenders hang below.
  const double height = canvas.measureText("H", font).ascent;
  const Point center = frame.center();
  canvas.drawText(text, {center.x, center.y + height / 2}, TextAlign::center, font, color);
}

void roundedRect(Canvas& canvas, const Rect& rect, double radius) {
  constexpr double quarter = std::numbers::pi / 2;
  const double left = rect.x + radius;
  const double top = rect.y + radius;
  const double right = rect.x + rect.width - radius;
  const double bottom = rect.y + rect.height - radius;
  canvas.beginPath();
  canvas.arc({left, top}, radius, 2 * quarter, 3 * quarter);
  canvas.arc({right, top}, radius, 3 * quarter, 4 * quarter);
  canvas.arc({right, bottom}, radius, 0, quarter);
  canvas.arc({left, bottom}, radius, quarter, 2 * quarter);
  canvas.closePath();
}

void fillRect(Canvas& canvas, const Rect& rect, const Paint& paint) {
  canvas.beginPath();
  canvas.moveTo(rect.x, rect.y);
  canvas.lineTo(rect.x + rect.width, rect.y);
  canvas.lineTo(rect.x + rect.width, rect.y + rect.height);
  canvas.lineTo(rect.x, rect.y + rect.height);
  canvas.fill(paint);
}

void drawCheckbox(Canvas& canvas, const Rect& frame, bool isMarked) {
  constexpr double inset = 2.75;
  constexpr double radius = 5;
  const double side = frame.width - 2 * inset;
  const Rect box{frame.x + inset, frame.y + inset, side, side};
  roundedRect(canvas, box, radius);
  if (!isMarked) {
    canvas.fill(white);
    canvas.stroke({.color = checkboxEdgeColor, .width = 1.5});
    return;
  }
  canvas.fill(accentRed);
  canvas.beginPath();
  canvas.moveTo(box.x + 0.24 * side, box.y + 0.53 * side);
  canvas.lineTo(box.x + 0.43 * side, box.y + 0.72 * side);
  canvas.lineTo(box.x + 0.78 * side, box.y + 0.30 * side);
  canvas.stroke({.color = white, .width = 2.2, .cap = LineCap::round, .join = LineJoin::round});
}

void drawButton(Canvas& canvas, const Rect& frame, std::string_view text, const Color& color) {
  constexpr double edge = 3;
  constexpr double spacing = 3;
  const Point center = frame.center();
  const double radius = frame.width / 2;
  canvas.beginPath();
  canvas.arc(center, radius - edge / 2, 0, 2 * std::numbers::pi);
  canvas.stroke({.color = color, .width = edge});
  canvas.beginPath();
  canvas.arc(center, radius - edge - spacing, 0, 2 * std::numbers::pi);
  canvas.fill(color);
  drawLine(canvas, text, frame, fontOf(medium, 0.19 * frame.width), white);
}

/// The measuring screen on one canvas.
class Drawing {
 public:
  Drawing(Canvas& canvas, const MeasuringLayout& layout, const ScreenState& views)
      : canvas_(canvas), layout_(layout), views_(views) {}

  void drawBar(const std::string& title) {
    drawElement(canvas_, views_, navBar, [&](const auto&) {
      const Rect& bar = layout_.navBar;
      fillRect(canvas_, bar,
               LinearGradient{{0, 0}, {0, bar.y + bar.height}, {{0, barTopColor}, {1, accentRed}}});
      drawLine(canvas_, title, layout_.title, fontOf(medium, 18), white);
    });
  }

  struct ValueElements {
    Element gaugePanel;
    Element gauge;
    Element ring;
    Element value;
    Element caption;
    Element checkbox;
  };

  void drawValue(const MeasuringLayout::ValueFrames& frames, const ValueElements& elements,
                 const WMGaugeView& gauge, const CircleProgressBar& ring,
                 std::string_view caption) {
    drawElement(canvas_, views_, elements.gaugePanel, [&](const auto&) {
      drawElement(canvas_, views_, elements.gauge,
                  [&](const auto&) { drawWidget(canvas_, gauge, frames.gauge); });
      drawElement(canvas_, views_, elements.ring,
                  [&](const auto&) { drawWidget(canvas_, ring, frames.ring); });
      drawElement(canvas_, views_, elements.value, [&](const ScreenState::View& view) {
        const double inner = frames.ring.width - 4 * static_cast<double>(ring.progressBarWidth);
        const Point center = frames.value.center();
        drawLine(canvas_, view.text, {center.x - inner / 2, center.y - inner / 2, inner, inner},
                 view.font, white);
      });
    });
    drawElement(canvas_, views_, elements.caption, [&](const ScreenState::View& view) {
      drawLine(canvas_, caption, frames.caption, fontOf(medium, 15),
               view.shimmering                                ? accentRed
               : views_.view(elements.gaugePanel).isVisible() ? ink
                                                              : grey);
    });
    drawElement(canvas_, views_, elements.checkbox, [&](const ScreenState::View& view) {
      drawCheckbox(canvas_, frames.checkbox, view.image != "checkbox_unmarked.png");
    });
  }

  void drawCenter(const ChartFourierView& chart, CenterPanel center) {
    drawElement(canvas_, views_, viewCenter, [&](const auto&) {
      constexpr double radius = 16;
      roundedRect(canvas_, layout_.center, radius);
      canvas_.fill(panelColor);
      canvas_.stroke({.color = hairlineColor, .width = 1});
      if (center == CenterPanel::pulse && chart.data().size() >= ChartFourierView::fewestDrawn) {
        drawPulse(chart);
        return;
      }
      drawElement(canvas_, views_, viewLastMeasurements, [&](const auto&) {
        drawHeading(captions.lastMeasurement);
        drawLast(labelLastHeartrate, layout_.heartrate.lastValue, captions.heartrateUnit);
        drawLast(labelLastSpo2, layout_.spo2.lastValue, captions.spo2Unit);
      });
      drawElement(canvas_, views_, chartFourierView, [&](const auto&) { drawPulse(chart); });
    });
  }

  void drawLines() {
    drawElement(canvas_, views_, labelRed, [&](const ScreenState::View& view) {
      drawLine(canvas_, view.text, layout_.status, fontOf(medium, 17), accentRed);
    });
    drawElement(canvas_, views_, labelGrey, [&](const ScreenState::View& view) {
      drawLine(canvas_, view.text, layout_.instruction, fontOf(regular, 15), grey);
    });
    drawRemarks();
  }

  void drawButtons() {
    // Many lines above it move it down, as far as the screen goes.
    Rect frame = layout_.button;
    const double lowest = layout_.screen.height - frame.height;
    frame.y = std::min(std::max(frame.y, remarksEnd_), std::max(frame.y, lowest));
    drawElement(canvas_, views_, stopButton,
                [&](const auto&) { drawButton(canvas_, frame, captions.stop, stopColor); });
    drawElement(canvas_, views_, beginButton,
                [&](const auto&) { drawButton(canvas_, frame, captions.start, accentRed); });
  }

 private:
  void drawPulse(const ChartFourierView& chart) {
    drawHeading(captions.pulse);
    drawWidget(canvas_, chart, layout_.chart);
  }

  void drawHeading(std::string_view text) {
    drawLine(canvas_, text, layout_.centerHeading, fontOf(medium, 13), grey);
  }

  /// What is said of finger and values: below the instruction, whichever panel the picture shows,
  /// in as many lines as it needs.
  void drawRemarks() {
    constexpr double lineHeight = 14;
    const Font font = fontOf(regular, 11);
    Rect place = layout_.instruction;
    place.y += place.height + 4;
    place.height = lineHeight;
    std::vector<std::string> lines;
    for (const Element remark : {labelFinger, labelDoubtHeartrate, labelDoubtSpo2}) {
      std::istringstream words(views_.visibleText(remark));
      std::string line;
      for (std::string word; words >> word;) {
        std::string longer = line;
        if (!longer.empty()) longer += ' ';
        longer += word;
        if (canvas_.measureText(longer, font).width > place.width) {
          lines.push_back(std::exchange(line, word));
        } else {
          line = longer;
        }
      }
      if (!line.empty()) lines.push_back(line);
    }
    for (const std::string& line : lines) {
      drawLine(canvas_, line, place, font, ink);
      place.y += lineHeight;
    }
    remarksEnd_ = place.y;
  }

  /// A number with its unit behind it, the two of them in the middle.
  void drawLast(Element element, const Rect& frame, std::string_view unitText) {
    const std::string unit(unitText);
    drawElement(canvas_, views_, element, [&](const ScreenState::View& view) {
      const Font numberFont = fontOf(light, std::clamp(0.4 * frame.height, 28.0, 44.0));
      const Font unitFont = fontOf(regular, 14);
      constexpr double space = 5;
      const double number = canvas_.measureText(view.text, numberFont).width;
      const double width = number + space + canvas_.measureText(unit, unitFont).width;
      const Point center = frame.center();
      const double baseline = center.y + canvas_.measureText("H", numberFont).ascent / 2;
      const double left = center.x - width / 2;
      canvas_.drawText(view.text, {left, baseline}, TextAlign::left, numberFont, ink);
      canvas_.drawText(unit, {left + number + space, baseline}, TextAlign::left, unitFont, grey);
    });
  }

  Canvas& canvas_;
  const MeasuringLayout& layout_;
  const ScreenState& views_;
  /// Where the lines below the instruction end.
  double remarksEnd_ = 0;
};

}  // namespace

void drawMeasuringScreen(Canvas& canvas, const MeasuringLayout& layout,
                         const MainViewController& screen, const ScreenState& views,
                         const std::string& title, CenterPanel center) {
  fillRect(canvas, {0, 0, layout.screen.width, layout.screen.height}, white);
  Drawing drawing(canvas, layout, views);
  drawing.drawBar(title);
  drawing.drawValue(layout.heartrate,
                    {viewGaugeHeartrate, gaugeHR, circleprogressHeartrate, labelHeartrate,
                     labelMeasuringHeartrate, buttonCheckboxHeartrate},
                    screen.gaugeHR(), screen.circleprogressHeartrate(), captions.heartrate);
  drawing.drawValue(layout.spo2,
                    {viewGaugeSpo2, gaugeSpo2, circleprogressSpo2, labelSpo2, labelMeasuringSpo2,
                     buttonCheckboxSpo2},
                    screen.gaugeSpo2(), screen.circleprogressSpo2(), captions.spo2);
  drawing.drawCenter(screen.chartFourierView(), center);
  drawing.drawLines();
  drawing.drawButtons();
}

}  // namespace veyla
