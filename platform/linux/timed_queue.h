#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/main_queue.h"

namespace veyla {

/// The main queue and clock of a program: in a recording's own time, which jumps from one piece of
/// work to the next, or in the wall's.
///
/// The wall's clock stands still between runs and keeps the wall's time within them. A recording's
/// starts a minute earlier: it runs ahead while the recording is measured, and what is stored then,
/// seldom after more than a minute of it, must not be dated in the future.
class TimedQueue : public MainQueue, public Clock {
 public:
  enum class Pace { recording, wall };

  explicit TimedQueue(Pace pace);
  /// Starts the recording's clock at `start`, for runs that are the same every time.
  explicit TimedQueue(Date start);

  void after(double seconds, std::function<void()> work) override;
  Date now() const override;

  /// Seconds since construction; while work runs, the moment at which that work fell due.
  double elapsed() const;

  /// By how many seconds the work that is running started too late; 0 in a recording's time.
  double lateness() const;

  /// Runs what falls due, in its order, until nothing is left or `stop` is called.
  void run();
  /// As `run`, but leaves what falls due more than `seconds` from now.
  void runFor(double seconds);
  void stop() { stopped_ = true; }

 private:
  void runUntil(std::int64_t end);

  Pace pace_;
  Date start_;
  std::chrono::steady_clock::time_point wallStart_;
  /// Whole nanoseconds, so that moments reached by different sums are the same moment.
  std::int64_t elapsed_ = 0;
  bool stopped_ = false;
  std::uint64_t handedOver_ = 0;
  /// By due time, then by order of handing over.
  std::map<std::pair<std::int64_t, std::uint64_t>, std::function<void()>> work_;
};

}  // namespace veyla
