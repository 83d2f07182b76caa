#include "platform/linux/timed_queue.h"

#include <gtest/gtest.h>

#include <string>

namespace veyla {
namespace {

TEST(TimedQueueTest, WorkRunsByDueTimeAndThenInTheOrderItCameUntilTheEndOrTheStop) {
  TimedQueue queue;
  std::string order;
  const auto add = [&](double seconds, char name) {
    queue.after(seconds, [&order, name] { order += name; });
  };
  add(2, 'c');
  add(1, 'a');
  queue.after(1, [&] {
    order += 'b';
    add(1, 'd');
  });
  add(3, 'e');
  queue.runFor(2);
  EXPECT_EQ(order, "abcd");
  queue.runFor(0.5);
  EXPECT_EQ(queue.elapsed(), 2.5);
  queue.after(0.5, [&] { queue.stop(); });
  add(0.5, 'f');
  queue.run();
  EXPECT_EQ(order, "abcde");
  queue.run();
  EXPECT_EQ(order, "abcdef");
  EXPECT_EQ(queue.elapsed(), 3);
}

}  // namespace
}  // namespace veyla
