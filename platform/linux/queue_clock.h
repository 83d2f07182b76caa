#pragma once

#include "platform/main_queue.h"

namespace veyla {

/// A clock that starts at a date of one's choice and goes with a queue, for runs that are the same
/// every time.
class QueueClock : public Clock {
 public:
  /// `queue` must outlive the clock.
  QueueClock(Date start, const MainQueue& queue) : start_(start), queue_(queue) {}

  Date now() const override { return {start_.secondsSince1970 + queue_.elapsed()}; }

 private:
  Date start_;
  const MainQueue& queue_;
};

}  // namespace veyla
