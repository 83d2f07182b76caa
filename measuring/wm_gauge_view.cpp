#include "measuring/wm_gauge_view.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/format.h"
#include "platform/platform.h"

namespace veyla {

namespace {

constexpr double redrawInterval = 1.0 / 60;

// The dial's own measures, in fractions of its side from its centre.
constexpr double rimRadius = 0.475;
constexpr double rimWidth = 0.022;
constexpr double scaleRadius = 0.445;
constexpr double labelRadius = 0.335;
constexpr double unitDistance = 0.2;
constexpr double scaleShadowDistance = 0.006;
/// Of the needle's height, behind the screw.
constexpr double tailShare = 0.11;

/// More ticks than any dial can show.
constexpr double mostTicks = 1000;

constexpr Color faceColor{0.965, 0.965, 0.972, 1};
constexpr Color faceEdgeColor{0.87, 0.87, 0.89, 1};
constexpr Color rimColor{0, 0, 0, 0.09};
constexpr Color tickColor{0.24, 0.24, 0.26, 1};
constexpr Color labelColor{0.2, 0.2, 0.22, 1};
constexpr Color shadowColor{0, 0, 0, 0.25};
constexpr Color litColor{0.36, 0.36, 0.39, 1};
constexpr Color shadedColor{0.13, 0.13, 0.15, 1};
constexpr Color screwColor{0.62, 0.62, 0.65, 1};

constexpr double radians(double degrees) { return degrees / 180 * std::numbers::pi; }

/// The canvas's angle for one that counts from pointing up.
constexpr double fromUp(double angle) { return angle - std::numbers::pi / 2; }

double scaled(float fraction, double side) { return static_cast<double>(fraction) * side; }

void fillDisc(Canvas& canvas, double radius, const Paint& paint) {
  canvas.beginPath();
  canvas.arc({0, 0}, radius, 0, 2 * std::numbers::pi);
  canvas.closePath();
  canvas.fill(paint);
}

void drawCentered(Canvas& canvas, const std::string& text, Point at, const Font& font,
                  const Color& color) {
  const double height = canvas.measureText(text, font).ascent;
  canvas.drawText(text, {at.x, at.y + height / 2}, TextAlign::center, font, color);
}

}  // namespace

void WMGaugeView::setValue(float value, bool animated) {
  angleBefore_ = needleAngle();
  // Not std::clamp: a not-a-number must end at the minimum, and the range may be empty.
  value_ = std::max(minValue, std::min(value, maxValue));
  animated_ = animated;
  timer_.stop();
  if (animated && std::isfinite(angleBefore_) && angleBefore_ != needleAngleFor(value_)) {
    movesSince_ = services().mainQueue.elapsed();
    timer_.start(redrawInterval, [this] { moveOn(); });
  }
  if (needsDisplay) needsDisplay();
}

void WMGaugeView::moveOn() {
  if (services().mainQueue.elapsed() - movesSince_ >= animationDuration) timer_.stop();
  if (needsDisplay) needsDisplay();
}

void WMGaugeView::finishAnimation() {
  if (!timer_.isRunning()) return;
  timer_.stop();
  if (needsDisplay) needsDisplay();
}

void WMGaugeView::setUnitOfMeasurement(const std::string& text) {
  unitOfMeasurement_ = text;
  if (needsDisplay) needsDisplay();
}

double WMGaugeView::needleAngleFor(float value) const {
  const double part = static_cast<double>((value - minValue) / (maxValue - minValue));
  const double sweep = static_cast<double>(scaleEndAngle - scaleStartAngle);
  return radians(static_cast<double>(scaleStartAngle) + part * sweep) + std::numbers::pi;
}

double WMGaugeView::needleAngle() const {
  const double target = needleAngleFor(value_);
  if (!timer_.isRunning()) return target;
  const double elapsed = services().mainQueue.elapsed() - movesSince_;
  // Fast at first: values follow each other sooner than the needle comes to rest.
  const double left = 1 - std::clamp(elapsed / animationDuration, 0.0, 1.0);
  return target + (angleBefore_ - target) * left * left * left;
}

void WMGaugeView::drawRect(Canvas& canvas, Size bounds) const {
  const double side = std::min(bounds.width, bounds.height);
  canvas.save();
  canvas.translate(bounds.width / 2, bounds.height / 2);
  if (showInnerBackground) drawFace(canvas, side);
  drawRim(canvas, side);
  if (showScale) drawScale(canvas, side);
  if (showUnitOfMeasurement) drawUnitOfMeasurement(canvas, side);
  drawNeedle(canvas, side);
  canvas.restore();
}

void WMGaugeView::drawFace(Canvas& canvas, double side) const {
  const double radius = side / 2;
  if (innerBackgroundStyle == 0) {
    fillDisc(canvas, radius, RadialGradient{{0, 0}, radius, {{0, faceColor}, {1, faceEdgeColor}}});
  } else {
    fillDisc(canvas, radius, faceColor);
  }
}

void WMGaugeView::drawRim(Canvas& canvas, double side) const {
  const double start = fromUp(needleAngleFor(minValue));
  const double end = fromUp(needleAngleFor(maxValue));
  const double needle = fromUp(needleAngle());
  if (!std::isfinite(start) || !std::isfinite(end) || !std::isfinite(needle)) return;
  const auto arc = [&](double to, const Color& color) {
    if (to <= start) return;
    canvas.beginPath();
    canvas.arc({0, 0}, rimRadius * side, start, to);
    canvas.stroke({.color = color, .width = rimWidth * side, .cap = LineCap::round});
  };
  arc(end, rimColor);
  arc(needle, accentRed);
}

void WMGaugeView::drawScale(Canvas& canvas, double side) const {
  const double ticks = static_cast<double>(scaleDivisions * scaleSubdivisions);
  if (!(ticks >= 1 && ticks <= mostTicks)) return;
  for (int tick = 0; tick <= static_cast<int>(ticks); ++tick) {
    if (showScaleShadow) drawTick(canvas, side, tick, scaleShadowDistance * side);
    drawTick(canvas, side, tick, 0);
  }
}

void WMGaugeView::drawTick(Canvas& canvas, double side, int tick, double lower) const {
  const bool isShadow = lower > 0;
  const bool isMajor = tick % std::max(1, static_cast<int>(scaleSubdivisions)) == 0;
  const double angle =
      radians(scaleRotation() + static_cast<double>(static_cast<float>(tick) * subdivisionAngle()));
  const double length = scaled(isMajor ? scaleDivisionsLength : scaleSubdivisionsLength, side);
  const bool isAtMiddle = scalesubdivisionsAligment == 1;
  const double outer =
      scaleRadius * side - (isAtMiddle ? (scaled(scaleDivisionsLength, side) - length) / 2 : 0);

  canvas.save();
  canvas.translate(0, lower);
  canvas.save();
  canvas.rotate(angle);
  canvas.beginPath();
  canvas.moveTo(0, -outer);
  canvas.lineTo(0, -outer + length);
  canvas.stroke({.color = isShadow ? shadowColor : tickColor,
                 .width = scaled(isMajor ? scaleDivisionsWidth : scaleSubdivisionsWidth, side)});
  canvas.restore();
  if (isMajor) {
    // Upright, wherever on the dial.
    const Point at{labelRadius * side * std::sin(angle), -labelRadius * side * std::cos(angle)};
    drawCentered(canvas, formatText("%g", static_cast<double>(valueAtTick(tick))), at,
                 {scaleFont.name, scaleFont.size * static_cast<float>(side)},
                 isShadow ? shadowColor : labelColor);
  }
  canvas.restore();
}

void WMGaugeView::drawUnitOfMeasurement(Canvas& canvas, double side) const {
  drawCentered(canvas, unitOfMeasurement_, {0, unitDistance * side},
               {unitOfMeasurementFont.name, unitOfMeasurementFont.size * static_cast<float>(side)},
               unitOfMeasurementColor);
}

void WMGaugeView::drawNeedle(Canvas& canvas, double side) const {
  const double angle = needleAngle();
  const double halfWidth = scaled(needleWidth, side) / 2;
  const Point tail{0, scaled(needleHeight, side) * tailShare};
  const Point tip{0, tail.y - scaled(needleHeight, side)};
  canvas.save();
  canvas.rotate(std::isfinite(angle) ? angle : radians(scaleRotation()));
  // Widest at the screw, pointed at both ends.
  const auto fillFrom = [&](double left, const Color& color) {
    canvas.beginPath();
    canvas.moveTo(tip.x, tip.y);
    canvas.lineTo(halfWidth, 0);
    canvas.lineTo(tail.x, tail.y);
    canvas.lineTo(left, 0);
    canvas.closePath();
    canvas.fill(color);
  };
  fillFrom(-halfWidth, needleStyle == 0 ? shadedColor : litColor);
  if (needleStyle != 0) fillFrom(0, shadedColor);
  canvas.restore();

  const double radius = scaled(needleScrewRadius, side);
  if (needleScrewStyle == 0) {
    fillDisc(canvas, radius, shadedColor);
  } else {
    fillDisc(canvas, radius,
             LinearGradient{{0, -radius}, {0, radius}, {{0, screwColor}, {1, shadedColor}}});
    fillDisc(canvas, radius * 0.6, shadedColor);
  }
}

}  // namespace veyla
