#pragma once

#include <functional>

#include "platform/date.h"

namespace veyla {

/// The queue of the main thread, on which everything in the core runs.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  /// Runs `work` once, `seconds` (0 or more) from now. Work that falls due at the same moment runs
  /// in the order in which it was handed over.
  virtual void after(double seconds, std::function<void()> work) = 0;
};

/// The time of day; with a recording, the recording's own time.
class Clock {
 public:
  virtual ~Clock() = default;

  virtual Date now() const = 0;
};

}  // namespace veyla
