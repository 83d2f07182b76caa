#include "measuring/app_delegate.h"

#include <gmock/gmock.h>

#include "acquisition/settings.h"
#include "history/history_store.h"
#include "measuring/notification_center.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

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

TEST(NotificationCenterTest, AHandlerMayRegisterAndRemoveAnybodyItselfIncluded) {
  NotificationCenter center;
  std::string told;
  const int leaving = 0, removed = 0, staying = 0;
  center.add(&leaving, "news", [&] {
    center.remove(&leaving);
    center.remove(&removed);
    center.add(&staying, "news", [&] { told += "late "; });
    told += "leaving ";
  });
  center.add(&removed, "news", [&] { told += "removed "; });
  center.add(&staying, "news", [&] { told += "staying "; });
  center.post("news");
  center.post("news");
  EXPECT_EQ(told, "leaving staying staying late ");
}

}  // namespace
}  // namespace veyla
