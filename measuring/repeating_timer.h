#pragma once

#include <functional>
#include <memory>

namespace veyla {

/// Calls a function again and again on the main queue until it is stopped, started anew or
/// destroyed.
class RepeatingTimer {
 public:
  RepeatingTimer() = default;
  ~RepeatingTimer() { stop(); }
  RepeatingTimer(const RepeatingTimer&) = delete;
  RepeatingTimer& operator=(const RepeatingTimer&) = delete;

  /// The first call comes after `interval` seconds. `tick` may stop or start the timer.
  void start(double interval, std::function<void()> tick);
  void stop();
  bool isRunning() const { return run_ != nullptr; }

 private:
  struct Run {
    double interval = 0;
    std::function<void()> tick;
    bool stopped = false;
  };
  static void schedule(const std::shared_ptr<Run>& run);

  std::shared_ptr<Run> run_;
};

}  // namespace veyla
