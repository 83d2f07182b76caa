#pragma once

#include "platform/web/event_loop.h"

namespace veyla {

/// The clocks of the page, and one timer of its.
class PageTime : public BrowserTime {
 public:
  double sincePageOpened() const override;
  Date now() const override;
  void wakeAfter(double milliseconds, std::function<void()> due) override;

 private:
  std::function<void()> due_;
  /// The browser's number of the timer.
  long timer_ = 0;
};

}  // namespace veyla
