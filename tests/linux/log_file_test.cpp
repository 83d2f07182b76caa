#include "platform/linux/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/queue_clock.h"
#include "platform/linux/timed_queue.h"
#include "platform/linux/uuid.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

TEST(FileLogTest, EveryEventIsOneLineWithTheTimeAndTheSecondOfTheRecording) {
  const ScratchFolder folder;
  const auto file = folder.path() / "log";
  TimedQueue queue;
  TimedQueue wall;
  QueueClock clock(Date{1709647620.5}, wall);
  FileLog(file, clock, queue).line("first");
  FileLog log(file, clock, queue, 20);
  wall.runFor(1.25);
  queue.runFor(3);
  log.line("second\nhalf");
  EXPECT_EQ(contentsOf(file),
            "2024-03-05T14:07:00.500Z 0.000 first\n"
            "2024-03-05T14:07:01.750Z 23.000 second\\nhalf\n");
}

TEST(FileLogTest, AFailureIsRememberedAndEndsTheLog) {
  const TimedQueue queue;
  const QueueClock clock({}, queue);
  FileLog full("/dev/full", clock, queue);
  EXPECT_TRUE(full.enabled());
  full.line("lost");
  full.line("lost too");
  EXPECT_FALSE(full.enabled());
  EXPECT_THAT(
      full.failure().value_or(""),
      testing::StartsWith("/dev/full: the disk is full; make room or choose another folder"));
  EXPECT_THAT(FileLog("/", clock, queue).failure().value_or(""),
              testing::HasSubstr(": a folder; name a file in it"));
}

TEST(LibUuidTest, MakesANewRandomOneEachTime) {
  LibUuid uuids;
  const std::string one = uuids.randomUuid();
  EXPECT_THAT(one, testing::MatchesRegex(
                       "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_NE(uuids.randomUuid(), one);
}

}  // namespace
}  // namespace veyla
