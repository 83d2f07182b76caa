#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "acquisition/settings.h"
#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "measuring/hk_utils.h"
#include "measuring/notification_center.h"
#include "measuring/usage_utils.h"
#include "platform/portable/json.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

class AppDelegateTest : public testing::Test {
 protected:
  TestPlatform platform_;
  AppDelegate& application_ = AppDelegate::instance();
};

TEST_F(AppDelegateTest, LaunchMigratesThenLoadsTextsAndSettingsThenSetsTheLooks) {
  platform_.store.values["history"] =
      Value::Array{Value::Array{"at 6", "72 bpm", "97%"}, Value::Array{"at 5", "64 bpm", "98%"}};
  for (const auto& [name, setting] : {std::pair{"Spo2Settings", "rawDataSize\": 1"},
                                      {"HeartrateSettings", "rawDataSize\": 2"},
                                      {"CameraSettings", "focusMode\": 2"}}) {
    platform_.resources.files[name + std::string(".json")] =
        R"({"results": [{"iPhoneModel": "iphone6s", ")" + std::string(setting) + "}]}";
  }
  application_.setActivatedFromBackground(true);
  EXPECT_TRUE(application_.application(LaunchOptions{}));

  const std::string found = " | found ya!: {iPhoneModel = iphone6s, ";
  EXPECT_EQ(joined(platform_.log.lines),
            "AppDelegate didFinishLaunchingWithOptions, using iPhone: iphone6s" + found +
                "rawDataSize = 1}" + found + "rawDataSize = 2}" + found + "focusMode = 2}");
  EXPECT_EQ(joined(platform_.journal.lines()),
            "store set values | store flush | store set values | store flush | "
            "store remove history | store flush | screens appearance | screens idle timer off | "
            "store set rating_first_use | store set rating_uses | store flush");
  EXPECT_EQ(Utils::getHeartrateSettings("rawDataSize").intValue(), 2);
  EXPECT_EQ(Utils::getSpo2Settings("rawDataSize").intValue(), 1);
  EXPECT_EQ(Utils::getCameraSettings("focusMode").intValue(), 2);
  EXPECT_FALSE(application_.activatedFromBackground());
  EXPECT_EQ(platform_.store.exclusivePieces, 2) << "the migration, and the count of uses";
  const Color red{1, 0, 0, 1};
  const Color grey{2.0 / 3, 2.0 / 3, 2.0 / 3, 1};
  EXPECT_EQ(platform_.screens.appearance,
            (Appearance{red, white, white, "topbar.png", grey, black, white, red}));
}

TEST_F(AppDelegateTest, EveryActivationIsPostedAfterTheFirstReturnFromTheBackground) {
  std::vector<std::string> posted;
  for (const char* name : {"didEnterBackground", "didBecomeActive"}) {
    NotificationCenter::instance().add(this, name, [&posted, name] { posted.push_back(name); });
  }
  application_.applicationDidBecomeActive();
  application_.applicationWillResignActive();
  application_.applicationDidBecomeActive();
  application_.applicationWillTerminate();
  EXPECT_TRUE(posted.empty());
  EXPECT_THAT(platform_.log.lines,
              ElementsAre("AppDelegate didBecomeActive", "AppDelegate willResignActive",
                          "AppDelegate didBecomeActive", "AppDelegate willTerminate"));
  application_.applicationDidEnterBackground();
  EXPECT_THAT(posted, ElementsAre("didEnterBackground"));
  application_.applicationWillEnterForeground();
  application_.applicationDidBecomeActive();
  application_.applicationWillResignActive();
  application_.applicationDidBecomeActive();
  EXPECT_THAT(posted, ElementsAre("didEnterBackground", "didBecomeActive", "didBecomeActive"));
}

class HKUtilsTest : public testing::Test {
 protected:
  /// Answers the last question as a health store does: from a thread of its own.
  void complete(bool success) {
    std::thread([&] { platform_.health.completions.back()(success); }).join();
  }

  TestPlatform platform_;
};

TEST_F(HKUtilsTest, ValuesAreRoundedHalfAwayFromZeroBeforeTheyBecomeSamples) {
  platform_.date.tick = 1;
  HKUtils().writeHeartrateWithValue(72.5);
  complete(true);
  HKUtils().writeSpo2WithValue(96.5);
  complete(false);
  const auto now = [](double later) { return Date{TestPlatform::start.secondsSince1970 + later}; };
  EXPECT_THAT(
      platform_.health.samples,
      ElementsAre(HealthSample{HealthSampleType::heartRate, 73, "count/min", now(1), now(2)},
                  HealthSample{HealthSampleType::oxygenSaturation, 0.97, "%", now(3), now(4)}));
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

TEST(UsageUtilsTest, EachCounterIsItsOwnAndDurableAtOnce) {
  TestPlatform platform;
  using U = UsageUtils;
  const std::tuple<void (*)(std::int64_t), std::int64_t (*)(), std::int64_t> counters[] = {
      {U::setTotal_finished, U::total_finished, 1},
      {U::setTotal_finished_percent, U::total_finished_percent, 2},
      {U::setTotal_hr_low, U::total_hr_low, 3},
      {U::setTotal_hr_low_percent, U::total_hr_low_percent, 4},
      {U::setTotal_lowsig, U::total_lowsig, -5},
      {U::setTotal_lowsig_percent, U::total_lowsig_percent, std::int64_t{1} << 62}};
  for (const auto& [set, get, value] : counters) set(value);
  for (const auto& [set, get, value] : counters) EXPECT_EQ(get(), value);
  EXPECT_EQ(platform.journal.of("store").back(), "flush");
}

TEST(UsageUtilsTest, AddressesAreJudgedAsTheTableOfBothBindingsSays) {
  TestPlatform platform;
  std::ifstream file(VEYLA_ADDRESSES);
  const auto table = NlohmannJsonParser().parse(std::string(std::istreambuf_iterator(file), {}));
  ASSERT_TRUE(table);
  const auto& addresses = *(*table)["addresses"].array();
  ASSERT_GT(addresses.size(), 40U);
  for (const Value& address : addresses) {
    const std::string& text = *address["text"].text();
    EXPECT_EQ(UsageUtils().isEmailWithEmail(text), address["isEmail"].boolValue()) << text;
    EXPECT_EQ(Utils::validateEmail(text), address["validateEmail"].boolValue()) << text;
  }
}

}  // namespace
}  // namespace veyla
