#pragma once

#include <functional>
#include <string>

#include "measuring/repeating_timer.h"
#include "platform/canvas.h"
#include "platform/color.h"

namespace veyla {

/// A dial gauge with a needle. Lengths and font sizes are fractions of the gauge's side, angles are
/// degrees; a style is one of the widget's two, 0 or 1.
///
/// The scale's angles count clockwise from the bottom: 70 and 290 leave a gap of 140 degrees there.
/// Everything that turns is drawn pointing up and turned by its angle plus half a turn.
class WMGaugeView {
 public:
  /// How long an animated needle is on its way, in seconds.
  static constexpr double animationDuration = 0.8;

  float minValue = 0;
  float maxValue = 0;
  float scaleDivisions = 10;
  float scaleSubdivisions = 10;
  float scaleStartAngle = 30;
  float scaleEndAngle = 330;
  /// A face behind the scale: 0 domed, 1 flat.
  int innerBackgroundStyle = 0;
  bool showScaleShadow = true;
  Font scaleFont;
  /// Minor ticks begin where the major ones do, at the rim (0), or stand at their middle (1).
  int scalesubdivisionsAligment = 0;
  float scaleSubdivisionsWidth = 0;
  float scaleSubdivisionsLength = 0;
  float scaleDivisionsWidth = 0;
  float scaleDivisionsLength = 0;
  Font unitOfMeasurementFont;
  Color unitOfMeasurementColor;
  /// 0 flat, 1 with a lit and a shaded side.
  int needleStyle = 0;
  float needleWidth = 0;
  /// From the tip to the end of the tail behind the screw.
  float needleHeight = 0;
  /// 0 flat, 1 domed.
  int needleScrewStyle = 0;
  float needleScrewRadius = 0;
  bool showUnitOfMeasurement = true;
  bool showScale = true;
  bool showInnerBackground = true;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// The value that the needle points to or moves to, within [minValue, maxValue].
  float value() const { return value_; }
  /// Pins the value to the nearer end of the range where it lies outside. A mark tells so, except
  /// for 0, which is no value.
  void setValue(float value, bool animated);
  /// Whether the last change moves the needle rather than putting it there.
  bool animated() const { return animated_; }

  /// Puts the needle where it is going, without waiting.
  void finishAnimation();

  // The scale, in the gauge's present settings.

  /// From one major tick to the next, and from one tick to the next.
  float divisionValue() const { return (maxValue - minValue) / scaleDivisions; }
  float subdivisionValue() const { return divisionValue() / scaleSubdivisions; }
  /// In degrees, from one tick to the next.
  float subdivisionAngle() const {
    return (scaleEndAngle - scaleStartAngle) / (scaleDivisions * scaleSubdivisions);
  }
  /// In degrees, of the first tick.
  int scaleRotation() const { return (static_cast<int>(scaleStartAngle) + 180) % 360; }
  /// What is printed at a tick; the first is tick 0.
  float valueAtTick(int tick) const {
    return static_cast<float>(tick) * subdivisionValue() + minValue;
  }
  /// In radians, clockwise from pointing up; not a number where the range is empty.
  double needleAngleFor(float value) const;
  /// Where the needle stands now; during an animation on its way.
  double needleAngle() const;

  /// Draws the gauge, a square, in the middle of an area with its corner at the origin.
  void drawRect(Canvas& canvas, Size bounds) const;

  const std::string& unitOfMeasurement() const { return unitOfMeasurement_; }
  void setUnitOfMeasurement(const std::string& text);

 private:
  void moveOn();
  void drawFace(Canvas& canvas, double side) const;
  void drawRim(Canvas& canvas, double side) const;
  void drawScale(Canvas& canvas, double side) const;
  void drawTick(Canvas& canvas, double side, int tick, double lower) const;
  void drawMarkBeyond(Canvas& canvas, double side) const;
  /// In radians, clockwise from pointing up.
  double tickAngle(int tick) const;
  Point labelPlace(int tick, double side) const;
  Font labelFont(double side) const;
  std::string labelText(int tick) const;
  bool isMajor(int tick) const;
  int lastTick() const;
  void drawUnitOfMeasurement(Canvas& canvas, double side) const;
  void drawNeedle(Canvas& canvas, double side) const;
  /// The part of the needle's length, from the screw, that a number takes; empty without one.
  struct Gap {
    double from = 0;
    double to = 0;
  };
  Gap gapInNeedle(Canvas& canvas, double side, double angle) const;

  float value_ = 0;
  /// -1 below the range, 1 above it.
  int beyond_ = 0;
  bool animated_ = false;
  std::string unitOfMeasurement_;
  RepeatingTimer timer_;
  double angleBefore_ = 0;
  /// By the main queue.
  double movesSince_ = 0;
};

}  // namespace veyla
