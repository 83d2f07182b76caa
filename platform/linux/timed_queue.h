#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/main_queue.h"

namespace veyla {

/// The main queue of a program: in a recording's own time, which jumps from one piece of work to
/// the next, or at the wall's pace, where it stands still between runs.
class TimedQueue : public MainQueue {
 public:
  enum class Pace { recording, wall };

  explicit TimedQueue(Pace pace = Pace::recording) : pace_(pace) {}

  void after(double seconds, std::function<void()> work) override;

  /// Seconds since construction; while work runs, the moment at which that work fell due.
  double elapsed() const override;

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
  std::chrono::steady_clock::time_point wallStart_;
  /// Whole nanoseconds, so that moments reached by different sums are the same moment.
  std::int64_t elapsed_ = 0;
  bool stopped_ = false;
  std::uint64_t handedOver_ = 0;
  /// By due time, then by order of handing over.
  std::map<std::pair<std::int64_t, std::uint64_t>, std::function<void()>> work_;
};

}  // namespace veyla
