#include "platform/web/event_loop.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

class EventLoopTest : public testing::Test {
 protected:
  void after(double seconds, const std::string& name) {
    loop_.after(seconds, [this, name] { ran_.push_back(name); });
  }

  ScriptedTime time_;
  EventLoop loop_{time_};
  std::vector<std::string> ran_;
};

TEST_F(EventLoopTest, WorkRunsByItsMomentAndThenInItsOrder) {
  after(0.5, "late");
  after(0.02, "first");
  time_.milliseconds = 1010;
  after(0.01, "second");
  after(0, "at once");
  EXPECT_EQ(time_.wait, 0) << "for what falls due next";
  EXPECT_EQ(loop_.elapsed(), 1.01);
  time_.wake(1020);
  EXPECT_THAT(ran_, ElementsAre("at once", "first", "second"));
  EXPECT_EQ(time_.wait, 480);
}

TEST_F(EventLoopTest, ATimerThatComesTooEarlyRunsNothing) {
  after(0.02, "work");
  time_.wake(1019.5);
  EXPECT_THAT(ran_, IsEmpty());
  EXPECT_EQ(time_.wait, 0.5);
  time_.wake(1020);
  EXPECT_THAT(ran_, ElementsAre("work"));
  EXPECT_EQ(time_.wait, -1) << "nothing is left";
}

TEST_F(EventLoopTest, WorkThatMakesWorkLetsTheBrowserHaveItsTurn) {
  loop_.after(0, [this] {
    ran_.emplace_back("maker");
    after(0, "made");
  });
  after(0, "beside");
  time_.wake(1000);
  EXPECT_THAT(ran_, ElementsAre("maker", "beside"));
  EXPECT_EQ(time_.wait, 0);
  time_.wake(1000);
  EXPECT_EQ(ran_.back(), "made");
}

}  // namespace
}  // namespace veyla
