#include "acquisition/settings.h"

#include <gmock/gmock.h>

#include "acquisition/sd_ios_version.h"
#include "tests/support/measuring_rig.h"

namespace veyla {
namespace {

using testing::ElementsAre;

Value entry(const char* profile, int rawDataSize) {
  return Value::Dictionary{{"iPhoneModel", profile}, {"rawDataSize", rawDataSize}};
}

Value resource(Value::Array entries) {
  return Value::Dictionary{{"results", Value(std::move(entries))}};
}

TEST(SettingsTest, TheLastEntryForTheDeviceWins) {
  TestPlatform platform("iPhone8,1");
  platform.resources.give("Spo2Settings", resource({entry("iphone6s", 1), entry("iphone6", 2),
                                                    entry("iphone6s", 3), "no entry"}));
  const auto settings = Utils::loadDefaultSettings("Spo2Settings");
  ASSERT_TRUE(settings);
  EXPECT_EQ((*settings)["rawDataSize"].intValue(), 3);
  EXPECT_THAT(platform.log.lines,
              ElementsAre("found ya!: {iPhoneModel = iphone6s, rawDataSize = 1}",
                          "found ya!: {iPhoneModel = iphone6s, rawDataSize = 3}"));
}

TEST(SettingsTest, AResourceThatIsMissingBrokenOrWithoutTheDeviceYieldsNothing) {
  TestPlatform platform("iPhone8,1");
  platform.resources.files["Broken.json"] = "{";
  platform.resources.give("Other", resource({entry("iphone7", 1)}));
  platform.resources.give("NoList", Value::Dictionary{{"results", 5}});
  for (const char* name : {"Missing", "Broken", "Other", "NoList"}) {
    EXPECT_FALSE(Utils::loadDefaultSettings(name)) << name;
  }
}

struct Hardware {
  const char* model;
  int number;
  const char* profile;
};

TEST(SettingsTest, HardwareModelsHaveTheirNumbersAndProfiles) {
  constexpr Hardware phones[] = {{"iPhone3,1", 3, "iphone4"},
                                 {"iPhone4,1", 4, "iphone4s"},
                                 {"iPhone5,2", 5, "iphone5"},
                                 {"iPhone5,3", 6, "iphone5"},
                                 {"iPhone6,2", 7, "iphone5s"},
                                 {"iPhone7,2", 8, "iphone6"},
                                 {"iPhone7,1", 9, "iphone6plus"},
                                 {"iPhone8,1", 10, "iphone6s"},
                                 {"iPhone8,2", 11, "iphone6splus"},
                                 {"iPhone9,1", 30, "iphone7"},
                                 {"iPhone9,4", 31, "iphone7plus"},
                                 {"iPhone8,4", 0, "iphone6"},
                                 {"iPhone14,5", 0, "iphone6"},
                                 {"x86_64", 0, "iphone6"},
                                 {"iPad2,5", 15, "iphone6"},
                                 {"iPad3,6", 17, "iphone6"},
                                 {"iPad4,7", 21, "iphone6"},
                                 {"iPad5,3", 20, "iphone6"},
                                 {"iPad6,8", 23, "iphone6"},
                                 {"iPod7,1", 29, "iphone6"},
                                 {"", 0, "iphone6"}};
  for (const Hardware& phone : phones) {
    TestPlatform platform(phone.model);
    EXPECT_EQ(SDiOSVersion::deviceVersion(), phone.number) << phone.model;
    EXPECT_EQ(Utils::platformString(), phone.profile) << phone.model;
  }
  EXPECT_EQ(SDiOSVersion::deviceNamesByCode().size(), 57U);
}

TEST(SettingsTest, DeviceQuestionsKeepTheirFirstAnswerButForTheOneAskedAnew) {
  TestPlatform platform("iPhone3,1");
  EXPECT_TRUE(Utils::isIphone4());
  EXPECT_FALSE(Utils::isIphone4s());
  EXPECT_FALSE(Utils::isIphone6or6plus());

  platform.device.model = "iPhone7,1";
  EXPECT_TRUE(Utils::isIphone4());
  EXPECT_FALSE(Utils::isIphone5());
  EXPECT_TRUE(Utils::isIphone6or6plus());
  platform.device.model = "iPhone6,1";
  EXPECT_TRUE(Utils::isIphone5s());
  EXPECT_FALSE(Utils::isIphone6or6plus());
}

TEST(SettingsTest, PhonesAreToldApartAlsoWhereNothingDependsOnIt) {
  MeasuringRig rig;
  ScriptedDeviceInfo& device = rig.platform.device;
  device.model = "iPhone3,1";
  rig.appear();
  rig.startMeasuring();
  rig.frame();
  device.model = "iPhone4,1";
  EXPECT_FALSE(Utils::isIphone4s()) << "the first frame has settled it";

  device.modelQuestions = 0;
  rig.screen.data()->reset();
  EXPECT_EQ(device.modelQuestions, 1);
  rig.screen.spo2Processing()->isDone();
  EXPECT_EQ(device.modelQuestions, 2);
}

}  // namespace
}  // namespace veyla
