#include "measuring/circle_progress_bar.h"

namespace veyla {

void CircleProgressBar::setProgress(float progress, bool animated) {
  progress_ = progress > 1.0F ? 1.0F : progress >= 0.0F ? progress : 0.0F;
  animated_ = animated;
  if (needsDisplay) needsDisplay();
}

}  // namespace veyla
