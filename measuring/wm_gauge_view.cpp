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
/// Between a number and the needle.
constexpr double labelMargin = 0.012;
/// Of what points on where the value lies beyond the scale: half its height, and how far after the
/// rim's end, in degrees.
constexpr double markSize = 0.025;
constexpr double markDistance = 4;
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
  beyond_ = value == 0 ? 0 : (value > maxValue) - (value < minValue);
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
  drawMarkBeyond(canvas, side);
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
  for (int tick = 0; tick <= lastTick(); ++tick) {
    if (showScaleShadow) drawTick(canvas, side, tick, scaleShadowDistance * side);
    drawTick(canvas, side, tick, 0);
  }
}

int WMGaugeView::lastTick() const {
  const double ticks = static_cast<double>(scaleDivisions * scaleSubdivisions);
  return ticks >= 1 && ticks <= mostTicks ? static_cast<int>(ticks) : -1;
}

bool WMGaugeView::isMajor(int tick) const {
  return tick % std::max(1, static_cast<int>(scaleSubdivisions)) == 0;
}

Point WMGaugeView::labelPlace(int tick, double side) const {
  const double angle = tickAngle(tick);
  return {labelRadius * side * std::sin(angle), -labelRadius * side * std::cos(angle)};
}

Font WMGaugeView::labelFont(double side) const {
  return {scaleFont.name, scaleFont.size * static_cast<float>(side)};
}

std::string WMGaugeView::labelText(int tick) const {
  return formatText("%g", static_cast<double>(valueAtTick(tick)));
}

double WMGaugeView::tickAngle(int tick) const {
  return radians(scaleRotation() +
                 static_cast<double>(static_cast<float>(tick) * subdivisionAngle()));
}

void WMGaugeView::drawMarkBeyond(Canvas& canvas, double side) const {
  const double end = needleAngleFor(beyond_ > 0 ? maxValue : minValue);
  if (beyond_ == 0 || !std::isfinite(end)) return;
  canvas.save();
  canvas.rotate(end + beyond_ * radians(markDistance));
  canvas.translate(0, -rimRadius * side);
  canvas.beginPath();
  canvas.moveTo(0, -markSize * side);
  canvas.lineTo(beyond_ * 2.2 * markSize * side, 0);
  canvas.lineTo(0, markSize * side);
  canvas.closePath();
  canvas.fill(accentRed);
  canvas.restore();
}

void WMGaugeView::drawTick(Canvas& canvas, double side, int tick, double lower) const {
  const bool isShadow = lower > 0;
  const bool major = isMajor(tick);
  const double angle = tickAngle(tick);
  const double length = scaled(major ? scaleDivisionsLength : scaleSubdivisionsLength, side);
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
                 .width = scaled(major ? scaleDivisionsWidth : scaleSubdivisionsWidth, side)});
  canvas.restore();
  // Upright, wherever on the dial.
  if (major) {
    drawCentered(canvas, labelText(tick), labelPlace(tick, side), labelFont(side),
                 isShadow ? shadowColor : labelColor);
  }
  canvas.restore();
}

void WMGaugeView::drawUnitOfMeasurement(Canvas& canvas, double side) const {
  drawCentered(canvas, unitOfMeasurement_, {0, unitDistance * side},
               {unitOfMeasurementFont.name, unitOfMeasurementFont.size * static_cast<float>(side)},
               unitOfMeasurementColor);
}

WMGaugeView::Gap WMGaugeView::gapInNeedle(Canvas& canvas, double side, double angle) const {
  if (!showScale) return {};
  const double right = std::abs(std::sin(angle));
  const double up = std::abs(std::cos(angle));
  const double margin = labelMargin * side;
  for (int tick = 0; tick <= lastTick(); ++tick) {
    if (!isMajor(tick)) continue;
    const TextExtents text = canvas.measureText(labelText(tick), labelFont(side));
    const double away = tickAngle(tick) - angle;
    const double across = std::abs(labelRadius * side * std::sin(away));
    if (std::cos(away) <= 0) continue;
    if (across > text.width / 2 * up + text.ascent / 2 * right + margin) continue;
    const double along = labelRadius * side * std::cos(away);
    const double reach = text.width / 2 * right + text.ascent / 2 * up + margin;
    return {along - reach, along + reach};
  }
  return {};
}

void WMGaugeView::drawNeedle(Canvas& canvas, double side) const {
  const double pointed = needleAngle();
  const double angle = std::isfinite(pointed) ? pointed : radians(scaleRotation());
  const double halfWidth = scaled(needleWidth, side) / 2;
  const Point tail{0, scaled(needleHeight, side) * tailShare};
  const Point tip{0, tail.y - scaled(needleHeight, side)};
  canvas.save();
  canvas.rotate(angle);
  const Gap gap = gapInNeedle(canvas, side, angle);
  const auto narrowed = [&](double reached) { return std::max(0.0, 1 + reached / tip.y); };
  // Widest at the screw, pointed at both ends; interrupted where a number stands.
  const auto fillFrom = [&](double left, const Color& color) {
    if (gap.to > gap.from) {
      canvas.beginPath();
      canvas.moveTo(tip.x, std::min(tip.y, -gap.to));
      canvas.lineTo(halfWidth * narrowed(gap.to), -gap.to);
      canvas.lineTo(left * narrowed(gap.to), -gap.to);
      canvas.closePath();
      canvas.fill(color);
    }
    const double end = gap.to > gap.from ? -gap.from : tip.y;
    canvas.beginPath();
    canvas.moveTo(left * narrowed(-end), end);
    canvas.lineTo(halfWidth * narrowed(-end), end);
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
