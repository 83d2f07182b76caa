#pragma once

#include <chrono>

#include "platform/main_queue.h"

namespace veyla {

/// The machine's time of day.
///
/// A measurement bears the date that the wall shows when it ends. Where somebody sets the machine's
/// clock back between two of them, the later one bears the earlier date, like every other file of
/// that hour; it still comes after the other in the history and in the health records, which keep
/// the order in which they were written; charts go by the dates.
class WallClock : public Clock {
 public:
  Date now() const override {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(now).count()};
  }
};

}  // namespace veyla
