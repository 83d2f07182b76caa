#include "platform/linux/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/timed_queue.h"
#include "platform/linux/uuid.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

TEST(FileLogTest, EveryEventIsOneLineAtTheMainClocksTime) {
  const ScratchFolder folder;
  const auto file = folder.path() / "log";
  TimedQueue queue(Date{1709647620.5});
  FileLog(file, queue).line("first");
  FileLog log(file, queue);
  queue.runFor(1.25);
  log.line("second\nhalf");
  EXPECT_EQ(contentsOf(file),
            "2024-03-05T14:07:00.500Z first\n2024-03-05T14:07:01.750Z second\\nhalf\n");
}

TEST(FileLogTest, AFailureIsRememberedAndEndsTheLog) {
  const TimedQueue queue(Date{0});
  FileLog full("/dev/full", queue);
  EXPECT_TRUE(full.enabled());
  full.line("lost");
  full.line("lost too");
  EXPECT_FALSE(full.enabled());
  EXPECT_THAT(
      full.failure().value_or(""),
      testing::StartsWith("/dev/full: the disk is full; make room or choose another folder"));
  const ScratchFolder folder;
  EXPECT_THAT(FileLog(folder.path(), queue).failure().value_or(""),
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
