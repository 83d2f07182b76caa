#include <gtest/gtest.h>

#include "shell/launch_history.h"
#include "shell/rating_prompt.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

/// After so many uses and finished measurements, the last ones on the next launch so many seconds
/// later, and a few more where that has asked.
int timesAskedForARating(int uses, int events, double seconds) {
  TestPlatform first;
  const auto log = [](int newUses, int newEvents) {
    RatingPrompt& prompt = RatingPrompt::instance();
    prompt.configure(1, 3, 3);
    for (int i = 0; i < newUses; ++i) prompt.logUse();
    for (int i = 0; i < newEvents; ++i) prompt.logSignificantEvent();
  };
  log(uses - 1, events - 1);
  TestPlatform later;
  later.store.values = first.store.values;
  later.time.runFor(seconds);
  log(1, 1);
  if (!later.journal.of("screens").empty()) log(5, 5);
  return static_cast<int>(later.journal.of("screens").size());
}

TEST(RatingPromptTest, AsksOnceWhenADayThreeUsesAndThreeMeasurementsHaveAllBeenReached) {
  EXPECT_EQ(timesAskedForARating(3, 3, 86400), 1);
  EXPECT_EQ(timesAskedForARating(3, 3, 86399), 0);
  EXPECT_EQ(timesAskedForARating(2, 3, 86400), 0);
  EXPECT_EQ(timesAskedForARating(3, 2, 86400), 0);
}

TEST(LaunchHistoryTest, TheFirstLaunchIsNoUpdateAndRecordsItsVersion) {
  std::map<std::string, Value, std::less<>> kept;
  for (const auto& [version, isFirst, isUpdated] :
       {std::tuple{"1.0.0", true, false}, {"1.0.0", false, false}, {"1.1.0", false, true}}) {
    TestPlatform platform;
    platform.store.values = kept;
    platform.device.version = version;
    EXPECT_EQ(Utils::isAppOnFirstLaunch(), isFirst) << version;
    EXPECT_EQ(Utils::isAppVersionUpdated(), isUpdated) << version;
    EXPECT_EQ(Utils::isAppOnFirstLaunch(), isFirst) << "the answer holds for the whole launch";
    EXPECT_EQ(platform.journal.of("store").back(), "flush");
    kept = platform.store.values;
  }
}

}  // namespace
}  // namespace veyla
