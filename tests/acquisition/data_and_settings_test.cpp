#include <gmock/gmock.h>

#include "acquisition/data.h"
#include "acquisition/raw_signal_upload.h"
#include "acquisition/sd_ios_version.h"
#include "acquisition/settings.h"
#include "history/table_view_controller.h"
#include "tests/support/builders.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

TEST(DataTest, ResetStartsNewSequencesAndLeavesAHandedOutOneAlone) {
  const TestPlatform platform;
  // Nonsense where a size hint is expected harms nothing.
  withHeartrateSettings({{"neededValidHeartrate", -5}});
  withSpo2Settings({{"neededValidSpo2", 2'000'000'000}});
  Data& data = Data::instance();
  data.reset();
  for (const auto add : {&Data::addRedValue, &Data::addGreenValue, &Data::addBlueValue,
                         &Data::addHRValue, &Data::addSpo2Value, &Data::addHeartrateValue}) {
    (data.*add)(1.5F);
  }
  data.addFourierValues({});
  const auto before = data.rawRedValues();
  data.reset();
  EXPECT_THAT(*before, SizeIs(1));
  for (const auto& series : {data.rawRedValues(), data.rawGreenValues(), data.rawBlueValues(),
                             data.rawHRValues(), data.spo2Values(), data.heartrateValues()}) {
    EXPECT_THAT(*series, IsEmpty());
  }
  EXPECT_THAT(*data.fourierValues(), IsEmpty());
}

TEST(RawSignalUploadTest, TheRequestCarriesTheSeriesAndTheVersions) {
  const TestPlatform platform;
  const HttpRequest request = Utils::rawSignalRequest({180.1F}, {}, {30});
  EXPECT_THAT(request.url, MatchesRegex("http://.*:8888/OrvaneServer/Slim/index.php/processdata"));
  EXPECT_EQ(request.method, "POST");
  EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "application/json")));
  EXPECT_EQ(request.timeout, 60);
  EXPECT_EQ(replaced(replaced(request.body, "\n", ""), "  ", ""),
            R"({"R": [180.1],"G": [],"B": [30.0],)"
            R"("iosver": "10.3.1","appver": "1.0.0","name": "veyla tester"})");
}

TEST(SettingsTest, TheLastEntryForTheDeviceWinsAndWithoutOneThereIsNone) {
  TestPlatform platform("iPhone8,1");
  auto& files = platform.resources.files;
  files["Spo2Settings.json"] = R"({"results": [{"iPhoneModel": "iphone6s", "rawDataSize": 1},
      {"iPhoneModel": "iphone6s", "rawDataSize": 3}, {"iPhoneModel": "iphone6", "rawDataSize": 2},
      "no entry"]})";
  const auto settings = Utils::loadDefaultSettings("Spo2Settings");
  ASSERT_TRUE(settings);
  EXPECT_EQ((*settings)["rawDataSize"].intValue(), 3);
  files["Broken.json"] = "{";
  files["Other.json"] = R"({"results": [{"iPhoneModel": "iphone7"}]})";
  files["NoList.json"] = R"({"results": 5})";
  for (const char* name : {"Missing", "Broken", "Other", "NoList"}) {
    EXPECT_FALSE(Utils::loadDefaultSettings(name)) << name;
  }
}

TEST(SettingsTest, HardwareModelsHaveTheirNumbersProfilesAndNames) {
  using Models = std::vector<const char*>;
  const std::tuple<int, const char*, const char*, Models> known[] = {
      {3, "iphone4", "iPhone 4", {"iPhone3,1", "iPhone3,2", "iPhone3,3"}},
      {4, "iphone4s", "iPhone 4S", {"iPhone4,1", "iPhone4,2", "iPhone4,3"}},
      {5, "iphone5", "iPhone 5", {"iPhone5,1", "iPhone5,2"}},
      {6, "iphone5", "iPhone 5C", {"iPhone5,3", "iPhone5,4"}},
      {7, "iphone5s", "iPhone 5S", {"iPhone6,1", "iPhone6,2"}},
      {8, "iphone6", "iPhone 6", {"iPhone7,2"}},
      {9, "iphone6plus", "iPhone 6 Plus", {"iPhone7,1"}},
      {10, "iphone6s", "iPhone 6S", {"iPhone8,1"}},
      {11, "iphone6splus", "iPhone 6S Plus", {"iPhone8,2"}},
      {30, "iphone7", "iPhone 7", {"iPhone9,1", "iPhone9,3"}},
      {31, "iphone7plus", "iPhone 7 Plus", {"iPhone9,2", "iPhone9,4"}},
      {0, "iphone6", "Simulator", {"i386", "x86_64", "iPhone8,4", "iPhone14,5", ""}},
      {13, "iphone6", "iPad 1", {"iPad1,1"}},
      {14, "iphone6", "iPad 2", {"iPad2,1", "iPad2,2", "iPad2,3", "iPad2,4"}},
      {15, "iphone6", "iPad Mini", {"iPad2,5", "iPad2,6", "iPad2,7"}},
      {16, "iphone6", "iPad 3", {"iPad3,1", "iPad3,2", "iPad3,3"}},
      {17, "iphone6", "iPad 4", {"iPad3,4", "iPad3,5", "iPad3,6"}},
      {18, "iphone6", "iPad Air", {"iPad4,1", "iPad4,2", "iPad4,3"}},
      {19, "iphone6", "iPad Mini 2", {"iPad4,4", "iPad4,5", "iPad4,6"}},
      {20, "iphone6", "iPad Air 2", {"iPad5,3", "iPad5,4"}},
      {21, "iphone6", "iPad Mini 3", {"iPad4,7", "iPad4,8", "iPad4,9"}},
      {22, "iphone6", "iPad Mini 4", {"iPad5,1", "iPad5,2"}},
      {23, "iphone6", "iPad Pro", {"iPad6,7", "iPad6,8"}},
      {24, "iphone6", "iPod Touch 1st Gen", {"iPod1,1"}},
      {25, "iphone6", "iPod Touch 2nd Gen", {"iPod2,1"}},
      {26, "iphone6", "iPod Touch 3rd Gen", {"iPod3,1"}},
      {27, "iphone6", "iPod Touch 4th Gen", {"iPod4,1"}},
      {28, "iphone6", "iPod Touch 5th Gen", {"iPod5,1"}},
      {29, "iphone6", "iPod Touch 6th Gen", {"iPod7,1"}}};
  for (const auto& [model, told] :
       {std::pair{"i386", "Simulator"}, {"x86_64", "Simulator"}, {"iPhone7,2", "iPhone7,2"}}) {
    TestPlatform platform(model);
    EXPECT_EQ(SDiOSVersion::deviceName(), told);
  }
  OptionsView noView;
  const auto askedOnce = [] {
    return std::array{Utils::isIphone4(), Utils::isIphone4s(), Utils::isIphone5(),
                      Utils::isIphone5s()};
  };
  for (const auto& [number, profile, name, models] : known) {
    const std::array answers{number == 3, number == 4, number == 5 || number == 6, number == 7};
    for (const char* model : models) {
      SCOPED_TRACE(model);
      TestPlatform platform(model);
      EXPECT_EQ(askedOnce(), answers);
      EXPECT_EQ(SDiOSVersion::deviceVersion(), number);
      EXPECT_EQ(Utils::platformString(), profile);
      EXPECT_EQ(Utils::isIphone6or6plus(),
                number == 8 || number == 9 || number == 0 || (number > 11 && number < 30));
      TableViewController(noView, {}).feedback();
      EXPECT_THAT(platform.sharing.mails.back().body,
                  testing::EndsWith("\nModel: " + std::string(name)));
      platform.device.model = "iPhone9,1";
      EXPECT_EQ(askedOnce(), answers) << "the first ones";
    }
  }
  EXPECT_EQ(SDiOSVersion::deviceNamesByCode().size(), 57U);
}

}  // namespace
}  // namespace veyla
