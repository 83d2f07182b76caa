#include "shell/launch_history.h"

#include <gtest/gtest.h>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

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
