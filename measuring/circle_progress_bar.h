#pragma once

#include <functional>
#include <string>

#include "platform/color.h"

namespace veyla {

/// A ring that fills as accepted values are collected.
class CircleProgressBar {
 public:
  /// In points.
  float progressBarWidth = 0;
  /// In degrees, clockwise from the right; 270 is the top.
  float startAngle = 0;
  Color progressBarTrackColor;
  Color progressBarProgressColor;
  Color hintViewBackgroundColor;
  /// In points, between the ring and the hint area inside it.
  float hintViewSpacing = 0;
  /// The text inside the ring for a progress.
  std::function<std::string(float progress)> hintTextGenerationBlock;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// The fraction that the ring shows or moves to, in [0, 1].
  float progress() const { return progress_; }
  /// Pins the fraction to the nearer end of [0, 1] where it lies outside.
  void setProgress(float progress, bool animated);
  /// Whether the last change fills the ring gradually.
  bool animated() const { return animated_; }

 private:
  float progress_ = 0;
  bool animated_ = false;
};

}  // namespace veyla
