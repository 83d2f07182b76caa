#include <gtest/gtest.h>

#include "shell/launch_history.h"
#include "shell/rating_prompt.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

/// After so many uses and finished measurements, and so many seconds later one more of each, on the
/// next launch of the application.
bool isAskedForARating(int uses, int events, double seconds) {
  TestPlatform first;
  const auto log = [](int more, bool isUse) {
    RatingPrompt& prompt = RatingPrompt::instance();
    prompt.configure(1, 3, 3);
    for (int i = 0; i < more; ++i) isUse ? prompt.logUse() : prompt.logSignificantEvent();
  };
  log(uses - 1, true);
  log(events - 1, false);
  TestPlatform later;
  later.store.values = first.store.values;
  later.time.runFor(seconds);
  log(1, true);
  log(1, false);
  const std::size_t asked = later.journal.of("screens").size();
  log(5, true);
  log(5, false);
  EXPECT_EQ(later.journal.of("screens").size(), seconds < 86400 ? 0U : 1U) << "late or twice";
  return asked > 0;
}

TEST(RatingPromptTest, AsksOnceWhenADayThreeUsesAndThreeMeasurementsHaveAllBeenReached) {
  EXPECT_TRUE(isAskedForARating(3, 3, 86400));
  EXPECT_FALSE(isAskedForARating(3, 3, 86399));
  EXPECT_FALSE(isAskedForARating(2, 3, 86400));
  EXPECT_FALSE(isAskedForARating(3, 2, 86400));
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
