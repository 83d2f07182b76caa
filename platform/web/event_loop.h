#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/main_queue.h"

namespace veyla {

/// The main queue on the browser's event loop, and its clock.
///
/// One timer of the browser stands for the work that falls due next: several of them would run in
/// the order in which the browser rounds their times.
class EventLoop : public MainQueue, public Clock {
 public:
  void after(double seconds, std::function<void()> work) override;
  /// Since the page was opened.
  double elapsed() const override;
  Date now() const override;

 private:
  void setTimer();
  void runDue();

  /// In milliseconds since the page was opened, and in the order of handing over.
  using Due = std::pair<double, std::uint64_t>;
  std::map<Due, std::function<void()>> work_;
  std::uint64_t handedOver_ = 0;
  /// The browser's number of it.
  long timer_ = 0;
  bool running_ = false;
};

}  // namespace veyla
