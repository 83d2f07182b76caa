#include "platform/linux/timed_queue.h"

#include <limits>
#include <thread>

namespace veyla {

namespace {

Date wallNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(now).count()};
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

TimedQueue::TimedQueue(Pace pace)
    : pace_(pace), start_(wallNow()), wallStart_(std::chrono::steady_clock::now()) {}

TimedQueue::TimedQueue(Date start) : TimedQueue(Pace::recording) { start_ = start; }

void TimedQueue::after(double seconds, std::function<void()> work) {
  work_.emplace(std::pair(elapsed_ + seconds, handedOver_++), std::move(work));
}

Date TimedQueue::now() const { return {start_.secondsSince1970 + elapsed_}; }

double TimedQueue::lateness() const {
  return pace_ == Pace::wall ? secondsSince(wallStart_) - elapsed_ : 0;
}

void TimedQueue::run() { runUntil(std::numeric_limits<double>::infinity()); }

void TimedQueue::runFor(double seconds) {
  const double end = elapsed_ + seconds;
  runUntil(end);
  if (!stopped_) elapsed_ = end;
}

void TimedQueue::runUntil(double end) {
  stopped_ = false;
  while (!stopped_ && !work_.empty() && work_.begin()->first.first <= end) {
    auto next = work_.extract(work_.begin());
    elapsed_ = next.key().first;
    if (pace_ == Pace::wall) {
      std::this_thread::sleep_until(wallStart_ + std::chrono::duration<double>(elapsed_));
    }
    next.mapped()();
  }
}

}  // namespace veyla
