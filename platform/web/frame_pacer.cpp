#include "platform/web/frame_pacer.h"

#include <utility>

namespace veyla {

namespace {

/// Ticks fall between a camera's frames and not on them, or times that waver a little would make
/// it chance which frame a tick takes.
constexpr double phase = 1.0 / 60;

}  // namespace

void FramePacer::restart() {
  first_.reset();
  nextTick_ = 0;
  heldIsNew_ = false;
}

FramePacer::Due FramePacer::frameAt(double time, int missed) {
  if (!first_) {
    first_ = time;
    heldIsNew_ = true;
    return {};
  }
  Due due;
  while (secondsOfTick(nextTick_) < time) {
    ++nextTick_;
    ++due.delivered;
    if (!std::exchange(heldIsNew_, false) && missed > 0) ++due.dropped;
  }
  heldIsNew_ = true;
  return due;
}

double FramePacer::secondsOfTick(std::int64_t tick) const {
  return *first_ + phase + static_cast<double>(tick) / framesPerSecond;
}

}  // namespace veyla
