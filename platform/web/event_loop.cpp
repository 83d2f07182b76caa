#include "platform/web/event_loop.h"

#include <algorithm>

namespace veyla {

namespace {

constexpr double millisecondsPerSecond = 1000;

}  // namespace

void EventLoop::after(double seconds, std::function<void()> work) {
  const double due = time_.sincePageOpened() + seconds * millisecondsPerSecond;
  const auto added = work_.emplace(Due(due, handedOver_++), std::move(work)).first;
  if (!running_ && added == work_.begin()) setTimer();
}

double EventLoop::elapsed() const { return time_.sincePageOpened() / millisecondsPerSecond; }

void EventLoop::setTimer() {
  if (work_.empty()) return;
  const double wait = std::max(0.0, work_.begin()->first.first - time_.sincePageOpened());
  time_.wakeAfter(wait, [this] { runDue(); });
}

void EventLoop::runDue() {
  running_ = true;
  // What falls due while this runs has its turn after the browser has had its own.
  const double now = time_.sincePageOpened();
  const Due last(now, handedOver_);
  while (!work_.empty() && work_.begin()->first < last) {
    const auto next = work_.extract(work_.begin());
    next.mapped()();
  }
  running_ = false;
  setTimer();
}

}  // namespace veyla
