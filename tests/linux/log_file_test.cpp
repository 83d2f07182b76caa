#include "platform/linux/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/queue_clock.h"
#include "platform/linux/timed_queue.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

TEST(FileLogTest, EveryEventIsOneLineWithTheTimeAndTheSecondOfTheRecordingUntilAFailure) {
  const ScratchFolder folder;
  TimedQueue queue;
  TimedQueue wall;
  const QueueClock clock(Date{1709647620.5}, wall);
  FileLog(folder.file("log"), clock, queue).line("first");
  wall.runFor(1.25);
  queue.runFor(3);
  FileLog(folder.file("log"), clock, queue, 20).line("second\nhalf");
  EXPECT_EQ(contentsOf(folder.file("log")),
            "2024-03-05T14:07:00.500Z 0.000 first\n"
            "2024-03-05T14:07:01.750Z 23.000 second\\nhalf\n");

  FileLog full("/dev/full", clock, queue);
  EXPECT_TRUE(full.enabled());
  full.line("lost");
  EXPECT_FALSE(full.enabled());
  EXPECT_EQ(full.failure(), "/dev/full: the disk is full; make room or choose another folder");
  EXPECT_THAT(FileLog("/", clock, queue).failure().value_or(""),
              testing::HasSubstr(": a folder; name a file in it"));
}

}  // namespace
}  // namespace veyla
