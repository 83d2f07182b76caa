#pragma once

#include <functional>
#include <string>

#include "measuring/repeating_timer.h"
#include "platform/canvas.h"
#include "platform/color.h"

namespace veyla {

/// A ring that fills as accepted values are collected.
class CircleProgressBar {
 public:
  /// How long an animated change takes, and how often it moves on, in seconds.
  static constexpr float animationDuration = 0.2F;
  static constexpr float animationInterval = 0.01F;

  /// In points.
  float progressBarWidth = 0;
  /// In degrees, clockwise from the right; 270 is the top.
  float startAngle = 0;
  Color progressBarTrackColor;
  Color progressBarProgressColor;
  Color hintViewBackgroundColor;
  /// In points, between the ring and the hint area inside it.
  float hintViewSpacing = 0;
  Font hintTextFont{"HelveticaNeue-Light", 14};
  Color hintTextColor = white;
  /// The text inside the ring for a progress; may be empty, which is no text.
  std::function<std::string(float progress)> hintTextGenerationBlock;

  /// Called when the drawing is out of date; may be empty.
  std::function<void()> needsDisplay;

  /// The fraction that the ring shows, in [0, 1]; during an animation on its way to the last one
  /// set.
  float progress() const { return progress_; }
  /// Pins the fraction to the nearer end of [0, 1] where it lies outside. An animation begins where
  /// the ring stands.
  void setProgress(float progress, bool animated);
  /// Whether the last change fills the ring gradually.
  bool animated() const { return animated_; }
  /// Shows the last fraction set, without waiting.
  void finishAnimation();

  /// Draws the ring in the middle of an area with its corner at the origin.
  void drawRect(Canvas& canvas, Size bounds) const;

 private:
  void step(float difference);
  void show(float progress);

  float progress_ = 0;
  float target_ = 0;
  bool animated_ = false;
  RepeatingTimer timer_;
};

}  // namespace veyla
