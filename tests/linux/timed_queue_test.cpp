#include "platform/linux/timed_queue.h"

#include <gtest/gtest.h>

#include <string>

namespace veyla {
namespace {

TEST(TimedQueueTest, WorkRunsByDueTimeAndThenInTheOrderItCame) {
  TimedQueue queue;
  std::string order;
  queue.after(2, [&] { order += 'c'; });
  queue.after(1, [&] { order += 'a'; });
  queue.after(1, [&] {
    order += 'b';
    queue.after(1, [&] { order += 'd'; });
  });
  queue.run();
  EXPECT_EQ(order, "abcd");
  EXPECT_EQ(queue.elapsed(), 2);
}

TEST(TimedQueueTest, RunForLeavesWhatFallsDueLater) {
  TimedQueue queue;
  int runs = 0;
  queue.after(1, [&] { ++runs; });
  queue.after(3, [&] { ++runs; });
  queue.runFor(2);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(queue.elapsed(), 2);
  queue.runFor(1);
  EXPECT_EQ(runs, 2);
}

TEST(TimedQueueTest, StopLeavesTheRest) {
  TimedQueue queue;
  int runs = 0;
  queue.after(1, [&] {
    ++runs;
    queue.stop();
  });
  queue.after(1, [&] { ++runs; });
  queue.run();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace veyla
