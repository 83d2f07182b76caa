#include <gtest/gtest.h>

#include "shell/launch_history.h"
#include "shell/rating_prompt.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

class RatingPromptTest : public testing::Test {
 protected:
  RatingPromptTest() { prompt_.configure(1, 3, 3); }

  void log(int uses, int events) {
    for (int i = 0; i < uses; ++i) prompt_.logUse();
    for (int i = 0; i < events; ++i) prompt_.logSignificantEvent();
  }
  std::size_t asked() { return platform_.journal.of("screens").size(); }

  TestPlatform platform_;
  RatingPrompt& prompt_ = RatingPrompt::instance();
};

TEST_F(RatingPromptTest, AsksOnceWhenDaysUsesAndEventsHaveAllBeenReached) {
  log(3, 2);
  platform_.time.runFor(86399);
  log(0, 1);
  EXPECT_EQ(asked(), 0U) << "too early";
  platform_.time.runFor(1);
  log(0, 1);
  EXPECT_EQ(asked(), 1U);
  log(5, 5);
  EXPECT_EQ(asked(), 1U);
}

TEST_F(RatingPromptTest, DoesNotAskBeforeTheThirdUseOrTheThirdEvent) {
  log(2, 0);
  platform_.time.runFor(2 * 86400.0);
  log(0, 5);
  EXPECT_EQ(asked(), 0U);
  log(1, 0);
  EXPECT_EQ(asked(), 1U);
}

TEST_F(RatingPromptTest, CountsAcrossLaunches) {
  log(3, 2);
  TestPlatform later;
  later.store.values = platform_.store.values;
  later.time.runFor(86400);
  RatingPrompt::instance().configure(1, 3, 3);
  RatingPrompt::instance().logSignificantEvent();
  EXPECT_EQ(later.journal.of("screens").size(), 1U);
}

TEST(LaunchHistoryTest, TheFirstLaunchIsNoUpdateAndRecordsItsVersion) {
  TestPlatform platform;
  EXPECT_TRUE(Utils::isAppOnFirstLaunch());
  EXPECT_FALSE(Utils::isAppVersionUpdated());
  EXPECT_TRUE(Utils::isAppOnFirstLaunch()) << "the answer holds for the whole launch";
  EXPECT_EQ(platform.journal.of("store").back(), "flush");

  TestPlatform second;
  second.store.values = platform.store.values;
  EXPECT_FALSE(Utils::isAppOnFirstLaunch());
  EXPECT_FALSE(Utils::isAppVersionUpdated());

  TestPlatform updated;
  updated.store.values = second.store.values;
  updated.device.version = "1.1.0";
  EXPECT_FALSE(Utils::isAppOnFirstLaunch());
  EXPECT_TRUE(Utils::isAppVersionUpdated());
}

}  // namespace
}  // namespace veyla
