#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/date.h"

namespace veyla {

/// The queue of the main thread, on which everything in the core runs.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  /// Runs `work` once, `seconds` (0 or more) from now. Work that falls due at the same moment runs
  /// in the order in which it was handed over.
  virtual void after(double seconds, std::function<void()> work) = 0;

  /// Seconds of the queue's own time, which never goes back; while work runs, not before the moment
  /// at which it fell due. Durations are measured by it: with a recording it is the recording's
  /// time.
  virtual double elapsed() const = 0;
};

/// The main queue as the work of one platform knows it: what is handed over here runs only as long
/// as this lives, however long the queue itself goes on.
class BoundQueue {
 public:
  BoundQueue(MainQueue& queue) : queue_(queue) {}
  /// The same queue for another life.
  BoundQueue(const BoundQueue& other) : queue_(other.queue_) {}
  BoundQueue& operator=(const BoundQueue&) = delete;

  // As those of `MainQueue`.

  void after(double seconds, std::function<void()> work) const {
    queue_.after(seconds, [life = std::weak_ptr(life_), work = std::move(work)] {
      if (!life.expired()) work();
    });
  }
  double elapsed() const { return queue_.elapsed(); }

 private:
  struct Life {};

  MainQueue& queue_;
  std::shared_ptr<Life> life_ = std::make_shared<Life>();
};

/// The wall's time of day: what is stored, sent or logged is dated by it.
class Clock {
 public:
  virtual ~Clock() = default;

  virtual Date now() const = 0;
};

}  // namespace veyla
