#include <gtest/gtest.h>

#include "shell/launch_history.h"
#include "shell/rating_prompt.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

TEST(RatingPromptTest, AsksOnceWhenADayThreeUsesAndThreeMeasurementsHaveAllBeenReached) {
  for (const auto& [uses, events, seconds, asks] : {std::tuple{3, 3, 86400, true},
                                                    {3, 3, 86399, false},
                                                    {2, 9, 86400, false},
                                                    {9, 2, 86400, false}}) {
    TestPlatform platform;
    RatingPrompt& prompt = RatingPrompt::instance();
    prompt.configure(1, 3, 3);
    for (int i = 1; i < uses; ++i) prompt.logUse();
    for (int i = 1; i < events; ++i) prompt.logSignificantEvent();
    platform.time.runFor(seconds);
    prompt.logUse();
    prompt.logSignificantEvent();
    if (asks) prompt.logUse();
    EXPECT_EQ(platform.journal.of("screens").size(), asks ? 1U : 0U) << uses << ' ' << events;
    EXPECT_EQ(platform.store.values.contains("rating_asked"), asks);
  }
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
