#include "measuring/measuring_layout.h"

#include <algorithm>

#include "analysis/chart_fourier_view.h"

namespace veyla {

namespace {

constexpr double barHeight = 44;
constexpr double margin = 16;
constexpr double widestContent = 480;
constexpr double betweenDials = 14;
constexpr double captionHeight = 30;
constexpr double checkboxSide = 24;
constexpr double statusHeight = 24;
constexpr double instructionHeight = 22;
constexpr double headingHeight = 20;
constexpr double padding = 14;
constexpr double leastGap = 8;
constexpr double largestGap = 30;

// Shares of the screen's height.
constexpr double centerShare = 0.225;
constexpr double buttonShare = 0.105;
// Shares of a dial's side: the ring lies in the gap at the foot of the scale.
constexpr double ringShare = 0.42;
constexpr double ringCenterShare = 0.775;

MeasuringLayout::ValueFrames valueFrames(double x, double y, double side, const Rect& last) {
  const double ring = side * ringShare;
  const double dialY = y + captionHeight;
  const Rect ringFrame{x + (side - ring) / 2, dialY + side * ringCenterShare - ring / 2, ring,
                       ring};
  return {.gauge = {x, dialY, side, side},
          .ring = ringFrame,
          .value = ringFrame,
          .caption = {x, y, side, captionHeight},
          .checkbox = {x, y + (captionHeight - checkboxSide) / 2, checkboxSide, checkboxSide},
          .lastValue = last};
}

}  // namespace

MeasuringLayout::MeasuringLayout(Size size, SafeArea safeArea) : screen(size) {
  const double content = std::min(size.width, widestContent) - 2 * margin;
  const double left = (size.width - content) / 2;
  navBar = {0, 0, size.width, safeArea.top + barHeight};
  title = {0, safeArea.top, size.width, barHeight};

  const double centerHeight = std::clamp(centerShare * size.height, 112.0, 240.0);
  const double buttonSide = std::clamp(buttonShare * size.height, 56.0, 96.0);
  constexpr double lines = statusHeight + instructionHeight;
  // What the dials may take, with the least of the five gaps between and around the groups.
  constexpr int gaps = 5;
  const double free = size.height - navBar.height - safeArea.bottom - captionHeight - centerHeight -
                      lines - buttonSide - gaps * leastGap;
  const double side = std::max(0.0, std::min((content - betweenDials) / 2, free));
  const double gap = std::clamp(leastGap + (free - side) / gaps, leastGap, largestGap);
  // Beyond that the space goes below: the upper part stays together.
  double y = navBar.height + gap;

  const double dialsY = y;
  y += captionHeight + side + gap;
  center = {left, y, content, centerHeight};
  centerHeading = {left + padding, y + padding, content - 2 * padding, headingHeight};
  const double below = centerHeading.y + headingHeight;
  const double valuesHeight = center.y + centerHeight - padding - below;
  const Rect lastHeartrate{left, below, content / 2, valuesHeight};
  const Rect lastSpo2{left + content / 2, below, content / 2, valuesHeight};
  constexpr double chartWidth = ChartFourierView::spacing * ChartFourierView::capacity;
  chart = {left + (content - chartWidth) / 2, below + padding / 2, chartWidth,
           valuesHeight - padding / 2};
  const double dialsX = left + (content - 2 * side - betweenDials) / 2;
  heartrate = valueFrames(dialsX, dialsY, side, lastHeartrate);
  spo2 = valueFrames(dialsX + side + betweenDials, dialsY, side, lastSpo2);

  y += centerHeight + gap;
  status = {left, y, content, statusHeight};
  instruction = {left, y + statusHeight, content, instructionHeight};
  y += lines;
  const double rest = size.height - safeArea.bottom - y;
  button = {(size.width - buttonSide) / 2, y + std::max(0.0, (rest - buttonSide) / 2), buttonSide,
            buttonSide};
}

}  // namespace veyla
