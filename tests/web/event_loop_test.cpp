#include "platform/web/event_loop.h"

#include <gtest/gtest.h>

#include <string>

namespace veyla {
namespace {

/// A browser whose time a test moves on.
class ScriptedTime : public BrowserTime {
 public:
  double milliseconds = 1000;
  /// Until it wakes, from when it was asked.
  double wait = -1;

  double sincePageOpened() const override { return milliseconds; }
  Date now() const override { return {5}; }
  void wakeAfter(double after, std::function<void()> due) override {
    wait = after;
    due_ = std::move(due);
  }
  void wake(double at) {
    milliseconds = at;
    wait = -1;
    std::exchange(due_, nullptr)();
  }

 private:
  std::function<void()> due_;
};

TEST(EventLoopTest, WorkRunsByItsMomentAndThenInItsOrderWithTurnsOfTheBrowserBetween) {
  ScriptedTime time;
  EventLoop loop(time);
  std::string ran;
  const auto add = [&](double seconds, char name) {
    loop.after(seconds, [&ran, name] { ran += name; });
  };
  add(0.5, 'e');
  add(0.02, 'b');
  time.milliseconds = 1010;
  add(0.01, 'c');
  loop.after(0, [&] {
    ran += 'a';
    add(0, 'd');
  });
  EXPECT_EQ(time.wait, 0) << "for what falls due next";
  EXPECT_EQ(loop.elapsed(), 1.01);
  time.wake(1020);
  EXPECT_EQ(ran, "abc");
  EXPECT_EQ(time.wait, 0) << "what work has made waits for the browser's turn";
  time.wake(1020);
  EXPECT_EQ(ran, "abcd");
  EXPECT_EQ(time.wait, 480);
  // A timer that comes too early runs nothing.
  time.wake(1499.5);
  EXPECT_EQ(ran, "abcd");
  EXPECT_EQ(time.wait, 0.5);
  time.wake(1500);
  EXPECT_EQ(ran, "abcde");
  EXPECT_EQ(time.wait, -1) << "nothing is left";
}

}  // namespace
}  // namespace veyla
