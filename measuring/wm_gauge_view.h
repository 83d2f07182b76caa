#pragma once

#include <functional>
#include <string>

#include "platform/color.h"
#include "platform/display.h"

namespace veyla {

/// A dial gauge with a needle. Lengths and font sizes are fractions of the gauge's side, angles are
/// degrees; a style is one of the widget's two, 0 or 1.
class WMGaugeView {
 public:
  float minValue = 0;
  float maxValue = 0;
  float scaleDivisions = 10;
  float scaleSubdivisions = 10;
  float scaleStartAngle = 30;
  float scaleEndAngle = 330;
  int innerBackgroundStyle = 0;
  bool showScaleShadow = true;
  Font scaleFont;
  int scalesubdivisionsAligment = 0;
  float scaleSubdivisionsWidth = 0;
  float scaleSubdivisionsLength = 0;
  float scaleDivisionsWidth = 0;
  float scaleDivisionsLength = 0;
  Font unitOfMeasurementFont;
  Color unitOfMeasurementColor;
  int needleStyle = 0;
  float needleWidth = 0;
  float needleHeight = 0;
  int needleScrewStyle = 0;
  float needleScrewRadius = 0;
  bool showUnitOfMeasurement = true;
  bool showScale = true;
  bool showInnerBackground = true;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// The value that the needle points to or moves to, within [minValue, maxValue].
  float value() const { return value_; }
  /// Pins the value to the nearer end of the range where it lies outside.
  void setValue(float value, bool animated);
  /// Whether the last change moves the needle rather than putting it there.
  bool animated() const { return animated_; }

  const std::string& unitOfMeasurement() const { return unitOfMeasurement_; }
  void setUnitOfMeasurement(const std::string& text);

 private:
  float value_ = 0;
  bool animated_ = false;
  std::string unitOfMeasurement_;
};

}  // namespace veyla
