#include "measuring/circle_progress_bar.h"

#include <algorithm>
#include <numbers>

namespace veyla {

namespace {

constexpr double radians(double degrees) { return degrees / 180 * std::numbers::pi; }

/// The area between two radii, from one angle to another.
void fillBand(Canvas& canvas, Point center, double outer, double inner, double from, double to,
              const Color& color) {
  if (to <= from) return;
  canvas.beginPath();
  canvas.arc(center, outer, from, to);
  canvas.arcNegative(center, inner, to, from);
  canvas.closePath();
  canvas.fill(color);
}

}  // namespace

void CircleProgressBar::setProgress(float progress, bool animated) {
  // Not std::clamp: a not-a-number must end at 0.
  target_ = std::max(0.0F, std::min(progress, 1.0F));
  animated_ = animated;
  timer_.stop();
  if (!animated || target_ == progress_) {
    show(target_);
    return;
  }
  const float difference = (target_ - progress_) * animationInterval / animationDuration;
  timer_.start(static_cast<double>(animationInterval), [this, difference] { step(difference); });
}

void CircleProgressBar::step(float difference) {
  const float next = progress_ + difference;
  // A step too small for the fraction to move would never arrive.
  const bool arrived = next == progress_ || (difference > 0 ? next >= target_ : next <= target_);
  if (arrived) timer_.stop();
  show(arrived ? target_ : next);
}

void CircleProgressBar::finishAnimation() {
  if (!timer_.isRunning()) return;
  timer_.stop();
  show(target_);
}

void CircleProgressBar::show(float progress) {
  progress_ = progress;
  if (needsDisplay) needsDisplay();
}

void CircleProgressBar::drawRect(Canvas& canvas, Size bounds) const {
  const Point center{bounds.width / 2, bounds.height / 2};
  const double outer = std::min(bounds.width, bounds.height) / 2;
  const double inner = outer - std::min(static_cast<double>(progressBarWidth), outer);
  const double start = radians(static_cast<double>(startAngle));
  const double shown = radians(static_cast<double>(startAngle + 360 * progress_));
  const double end = radians(static_cast<double>(startAngle + 360));
  fillBand(canvas, center, outer, inner, start, shown, progressBarProgressColor);
  fillBand(canvas, center, outer, inner, shown, end, progressBarTrackColor);

  const double hintRadius = inner - static_cast<double>(hintViewSpacing);
  if (hintRadius <= 0) return;
  canvas.beginPath();
  canvas.arc(center, hintRadius, 0, 2 * std::numbers::pi);
  canvas.closePath();
  canvas.fill(hintViewBackgroundColor);
  const std::string hint = hintTextGenerationBlock ? hintTextGenerationBlock(progress_) : "";
  if (hint.empty()) return;
  const double height = canvas.measureText(hint, hintTextFont).ascent;
  canvas.drawText(hint, {center.x, center.y + height / 2}, TextAlign::center, hintTextFont,
                  hintTextColor);
}

}  // namespace veyla
