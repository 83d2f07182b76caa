#include "platform/web/frame_pacer.h"

#include <utility>

namespace veyla {

namespace {

/// Ticks fall between a camera's frames and not on them, or times that waver a little would make
/// it chance which frame a tick takes.
constexpr double phase = 1.0 / 60;

}  // namespace

FramePacer::Due FramePacer::frameAt(double time) {
  if (!first_) first_ = time;
  Due due;
  for (; secondsOfTick(nextTick_) < time; ++nextTick_) {
    const auto tick = ticks_.next(std::exchange(heldIsNew_, false));
    ++(tick == FrameTicks::Tick::delivered ? due.delivered : due.dropped);
  }
  heldIsNew_ = true;
  return due;
}

double FramePacer::secondsOfTick(std::int64_t tick) const {
  return *first_ + phase + static_cast<double>(tick) / VideoDataOutput::framesPerSecond;
}

}  // namespace veyla
