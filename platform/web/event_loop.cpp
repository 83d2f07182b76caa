#include "platform/web/event_loop.h"

#include <emscripten/emscripten.h>
#include <emscripten/html5.h>

#include <algorithm>

namespace veyla {

namespace {

constexpr double millisecondsPerSecond = 1000;

}  // namespace

void EventLoop::after(double seconds, std::function<void()> work) {
  const double due = emscripten_get_now() + seconds * millisecondsPerSecond;
  const auto added = work_.emplace(Due(due, handedOver_++), std::move(work)).first;
  if (!running_ && added == work_.begin()) setTimer();
}

double EventLoop::elapsed() const { return emscripten_get_now() / millisecondsPerSecond; }

Date EventLoop::now() const { return {emscripten_date_now() / millisecondsPerSecond}; }

void EventLoop::setTimer() {
  emscripten_clear_timeout(timer_);
  if (work_.empty()) return;
  const double wait = std::max(0.0, work_.begin()->first.first - emscripten_get_now());
  timer_ = emscripten_set_timeout([](void* loop) { static_cast<EventLoop*>(loop)->runDue(); }, wait,
                                  this);
}

void EventLoop::runDue() {
  running_ = true;
  // What falls due while this runs has its turn after the browser has had its own.
  const double now = emscripten_get_now();
  const Due last(now, handedOver_);
  while (!work_.empty() && work_.begin()->first < last) {
    const auto next = work_.extract(work_.begin());
    next.mapped()();
  }
  running_ = false;
  setTimer();
}

}  // namespace veyla
