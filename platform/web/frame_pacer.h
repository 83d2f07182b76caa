#pragma once

#include <cstdint>
#include <optional>

#include "platform/portable/frame_ticks.h"

namespace veyla {

/// Makes 15 frames a second of a camera's, by the times at which the camera took them.
///
/// Every tick of 1/15 s takes the newest frame at or before it. What a frame is good for is known
/// when the next one has come: until then its taker holds it.
class FramePacer {
 public:
  /// What the ticks since the last frame come to, in this order.
  struct Due {
    /// Those that take the held frame.
    int delivered = 0;
    /// Those that take none.
    int dropped = 0;

    bool operator==(const Due&) const = default;
  };

  /// Begins anew: the next frame is the first.
  void restart() { *this = {}; }

  /// The camera's next frame. `time` is in seconds of the camera's own time; one that does not go
  /// on makes nothing due.
  Due frameAt(double time);

 private:
  double secondsOfTick(std::int64_t tick) const;

  std::optional<double> first_;
  std::int64_t nextTick_ = 0;
  bool heldIsNew_ = false;
  FrameTicks ticks_;
};

}  // namespace veyla
