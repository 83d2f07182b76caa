#pragma once

#include "platform/capture.h"

namespace veyla {

/// What becomes of a session's ticks, `VideoDataOutput::framesPerSecond` of them a second: the one
/// rule of every binding.
///
/// A tick whose frame did not come is filled with the frame before it for at most 0.3 s, so that
/// counting frames keeps time, and is delivered and counted as any other; beyond that nothing is
/// delivered, and each tick is a drop.
class FrameTicks {
 public:
  enum class Tick {
    /// No frame has come yet.
    early,
    /// Takes the newest frame.
    delivered,
    dropped,
  };

  /// Ticks in a row: one more would be more than 0.3 s.
  static constexpr int mostFills = VideoDataOutput::framesPerSecond * 3 / 10;

  /// The next tick; whether a frame has come since the last one.
  Tick next(bool frameCame) {
    if (frameCame) {
      hasFrame_ = true;
      fills_ = 0;
      return Tick::delivered;
    }
    if (!hasFrame_) return Tick::early;
    if (fills_ == mostFills) return Tick::dropped;
    ++fills_;
    return Tick::delivered;
  }

 private:
  bool hasFrame_ = false;
  int fills_ = 0;
};

}  // namespace veyla
