#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/main_queue.h"

namespace veyla {

/// The browser's clocks and its timer.
class BrowserTime {
 public:
  virtual ~BrowserTime() = default;

  /// In milliseconds.
  virtual double sincePageOpened() const = 0;
  virtual Date now() const = 0;
  /// Calls `due` once, in place of what it was asked to call before.
  virtual void wakeAfter(double milliseconds, std::function<void()> due) = 0;
};

/// The main queue on the browser's event loop, and its clock.
///
/// One timer of the browser stands for the work that falls due next: several of them would run in
/// the order in which the browser rounds their times.
class EventLoop : public MainQueue, public Clock {
 public:
  /// `time` must outlive the queue.
  explicit EventLoop(BrowserTime& time) : time_(time) {}

  void after(double seconds, std::function<void()> work) override;
  /// Since the page was opened.
  double elapsed() const override;
  Date now() const override { return time_.now(); }

 private:
  void setTimer();
  void runDue();

  /// In milliseconds since the page was opened, and in the order of handing over.
  using Due = std::pair<double, std::uint64_t>;
  std::map<Due, std::function<void()>> work_;
  BrowserTime& time_;
  std::uint64_t handedOver_ = 0;
  bool running_ = false;
};

}  // namespace veyla
