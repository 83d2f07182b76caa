#include "platform/linux/timed_queue.h"

#include <cmath>
#include <limits>
#include <thread>

namespace veyla {

namespace {

constexpr double nanosecondsPerSecond = 1e9;

std::int64_t nanosecondsOf(double seconds) { return std::llround(seconds * nanosecondsPerSecond); }

double secondsOf(std::int64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / nanosecondsPerSecond;
}

}  // namespace

void TimedQueue::after(double seconds, std::function<void()> work) {
  work_.emplace(std::pair(elapsed_ + nanosecondsOf(seconds), handedOver_++), std::move(work));
}

double TimedQueue::elapsed() const { return secondsOf(elapsed_); }

double TimedQueue::lateness() const {
  if (pace_ == Pace::recording) return 0;
  const auto due = wallStart_ + std::chrono::nanoseconds(elapsed_);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - due).count();
}

void TimedQueue::run() { runUntil(std::numeric_limits<std::int64_t>::max()); }

void TimedQueue::runFor(double seconds) {
  const std::int64_t end = elapsed_ + nanosecondsOf(seconds);
  runUntil(end);
  if (!stopped_) elapsed_ = end;
}

void TimedQueue::runUntil(std::int64_t end) {
  stopped_ = false;
  if (pace_ == Pace::wall) {
    // What came before, such as a question to the user, has not been part of the measurement.
    wallStart_ = std::chrono::steady_clock::now() - std::chrono::nanoseconds(elapsed_);
  }
  while (!stopped_ && !work_.empty() && work_.begin()->first.first <= end) {
    auto next = work_.extract(work_.begin());
    elapsed_ = next.key().first;
    if (pace_ == Pace::wall) {
      std::this_thread::sleep_until(wallStart_ + std::chrono::nanoseconds(elapsed_));
    }
    next.mapped()();
  }
}

}  // namespace veyla
