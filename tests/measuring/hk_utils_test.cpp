#include "measuring/hk_utils.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

class HKUtilsTest : public testing::Test {
 protected:
  /// Answers the last question as a health store does: from a thread of its own.
  void complete(bool success) {
    std::thread([&] { platform_.health.completions.back()(success); }).join();
  }

  TestPlatform platform_;
};

TEST_F(HKUtilsTest, ValuesAreRoundedHalfAwayFromZeroBeforeTheyBecomeSamples) {
  HKUtils().writeHeartrateWithValue(72.5);
  complete(true);
  HKUtils().writeSpo2WithValue(96.5);
  complete(false);
  const Date now = TestPlatform::start;
  EXPECT_THAT(platform_.health.samples,
              ElementsAre(HealthSample{HealthSampleType::heartRate, 73, "count/min", now, now},
                          HealthSample{HealthSampleType::oxygenSaturation, 0.97, "%", now, now}));
  EXPECT_THAT(platform_.log.lines, ElementsAre("success....", "error...."));
}

TEST_F(HKUtilsTest, PermissionIsAskedPerType) {
  platform_.health.sharing[HealthSampleType::heartRate] = HealthSharing::denied;
  HKUtils().writeHeartrateWithValue(70);
  HKUtils().writeSpo2WithValue(97);
  EXPECT_THAT(platform_.journal.of("health"), ElementsAre("0.97 %"));
  platform_.health.sharing[HealthSampleType::oxygenSaturation] = HealthSharing::notDetermined;
  HKUtils().writeSpo2WithValue(97);
  EXPECT_THAT(platform_.log.lines, ElementsAre("I'm sorry. Not authorized to write hr.",
                                               "I'm sorry. Not authorized to write spo2."));
}

TEST_F(HKUtilsTest, ThePermissionSheetComesInTheSystemsColoursWhereThereIsAHealthStore) {
  platform_.health.available = false;
  HKUtils::setupHK();
  HKUtils().writeHeartrateWithValue(70);
  EXPECT_THAT(platform_.health.completions, IsEmpty());
  platform_.health.available = true;
  HKUtils::setupHK();
  EXPECT_EQ(platform_.screens.navigationBarTint, std::nullopt);
  complete(true);
  EXPECT_EQ(platform_.screens.navigationBarTint, white);
  complete(false);
  EXPECT_THAT(platform_.log.lines,
              ElementsAre("HK not available.", "User completed authorisation request.",
                          "The user cancelled the authorisation request. "));
}

}  // namespace
}  // namespace veyla
