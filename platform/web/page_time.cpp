#include "platform/web/page_time.h"

#include <emscripten/emscripten.h>
#include <emscripten/html5.h>

#include <utility>

namespace veyla {

double PageTime::sincePageOpened() const { return emscripten_get_now(); }

Date PageTime::now() const { return {emscripten_date_now() / 1000}; }

void PageTime::wakeAfter(double milliseconds, std::function<void()> due) {
  due_ = std::move(due);
  emscripten_clear_timeout(timer_);
  const auto wake = [](void* time) {
    // It may ask to be woken again.
    std::exchange(static_cast<PageTime*>(time)->due_, nullptr)();
  };
  timer_ = emscripten_set_timeout(wake, milliseconds, this);
}

}  // namespace veyla
