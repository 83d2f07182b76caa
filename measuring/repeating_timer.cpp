#include "measuring/repeating_timer.h"

#include <utility>

#include "platform/platform.h"

namespace veyla {

void RepeatingTimer::start(double interval, std::function<void()> tick) {
  stop();
  run_ = std::make_shared<Run>(Run{interval, std::move(tick)});
  schedule(run_);
}

void RepeatingTimer::stop() {
  if (run_) run_->stopped = true;
  run_.reset();
}

void RepeatingTimer::schedule(const std::shared_ptr<Run>& run) {
  services().mainQueue.after(run->interval, [weak = std::weak_ptr(run)] {
    const auto due = weak.lock();
    if (!due) return;
    due->tick();
    if (!due->stopped) schedule(due);
  });
}

}  // namespace veyla
