#include "platform/linux/settings_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "acquisition/settings.h"
#include "platform/capture.h"
#include "platform/linux/resource_files.h"
#include "platform/portable/json.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = SettingsProblem::Kind;

class SettingsCheckTest : public testing::Test, public Resources {
 protected:
  SettingsCheckTest() {
    set("Spo2Settings",
        R"("grids": [6, 7], "rawDataSize": 120, "framesBeforeBeginning": 30,
           "skipFramesBetweenMeasurements": 3, "neededValidSpo2": 20, "useNewAlgorithm": true,
           "useTrend": false)");
    set("HeartrateSettings",
        R"("rawDataSize": 150, "skipFramesBetweenMeasurements": 5, "neededValidHeartrate": 10,
           "TTValidPercent": 30, "minimumBpm": 40.5, "TTMaxDistance": 4)");
    set("CameraSettings",
        R"("exposureMode": 2, "whiteBalanceMode": 0, "focusMode": 0, "flashMode": 1,
           "automaticallyEnablesLowLightBoostWhenAvailable": false)");
  }

  std::optional<std::string> read(std::string_view name, std::string_view type) const override {
    const auto found = files_.find(std::string(name));
    if (type != "json" || found == files_.end()) return std::nullopt;
    return found->second;
  }

  /// The file `name` with entries for "iphone6" of these keys.
  void set(const std::string& name, const std::string& keys, const std::string& more = "") {
    files_[name] = R"({"results": [{"iPhoneModel": "iphone6", )" + keys + "}" + more + "]}";
  }
  void change(const std::string& name, const std::string& from, const std::string& to) {
    std::string& text = files_.at(name);
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
  }
  std::vector<SettingsProblem> problems(std::string_view profile = "iphone6") const {
    return checkSettings(*this, NlohmannJsonParser(), profile);
  }
  static auto problem(Kind kind, const std::string& start, const std::string& text) {
    return AllOf(Field(&SettingsProblem::kind, kind),
                 Field(&SettingsProblem::line, AllOf(StartsWith(start), HasSubstr(text))));
  }

  std::map<std::string, std::string> files_;
};

TEST_F(SettingsCheckTest, GoodSettingsHaveNoProblemAndWrongOnesAreToldInWhole) {
  EXPECT_THAT(problems(), IsEmpty());
  change("HeartrateSettings", "40.5", "226");
  EXPECT_THAT(problems(), ElementsAre(problem(Kind::error, "HeartrateSettings.json: entry 1",
                                              "\"minimumBpm\" is not as it must be; make it a "
                                              "number from 1 to 225")));
}

TEST_F(SettingsCheckTest, EveryShippedProfileIsWholeAndShowsItsFirstValuesInTenSeconds) {
  const EmbeddedResources shipped;
  const NlohmannJsonParser json;
  constexpr int tenSeconds = 10 * VideoDataOutput::framesPerSecond;
  constexpr int framesBeforeChart = 30;
  for (const char* profile :
       {"iphone4", "iphone4s", "iphone5", "iphone5s", "iphone6", "iphone6plus", "iphone6s",
        "iphone6splus", "iphone7", "iphone7plus", "iphoneSE"}) {
    SCOPED_TRACE(profile);
    EXPECT_THAT(checkSettings(shipped, json, profile), IsEmpty());
    const auto setting = [&](const char* name, const char* key) {
      const auto settings = json.parse(*shipped.read(name, "json"));
      return (*Utils::entryFor(profile, *settings))[key].intValue();
    };
    EXPECT_LE(setting("HeartrateSettings", "rawDataSize") + framesBeforeChart, tenSeconds);
    EXPECT_LE(
        setting("Spo2Settings", "framesBeforeBeginning") + setting("Spo2Settings", "rawDataSize"),
        tenSeconds);
  }
}

TEST_F(SettingsCheckTest, AFileThatGivesNoEntriesIsAnError) {
  files_.erase("Spo2Settings");
  files_["HeartrateSettings"] = "{";
  files_["CameraSettings"] = R"({"result": []})";
  EXPECT_THAT(problems(),
              ElementsAre(problem(Kind::error, "Spo2Settings.json: ", "cannot be read"),
                          problem(Kind::error, "HeartrateSettings.json: ", "no JSON"),
                          problem(Kind::error, "CameraSettings.json: ", "\"results\"")));
}

TEST_F(SettingsCheckTest, EveryBrokenBoundNamesItsKey) {
  struct {
    const char *file, *from, *to, *key;
  } const cases[] = {
      {"Spo2Settings", "[6, 7]", "[]", "grids"},
      {"Spo2Settings", "[6, 7]", "[0]", "grids"},
      {"Spo2Settings", "[6, 7]", "[1, 17]", "grids"},
      {"Spo2Settings", "[6, 7]", "[1.5]", "grids"},
      {"Spo2Settings", "[6, 7]", "6", "grids"},
      {"Spo2Settings", "120", "2", "rawDataSize"},
      {"Spo2Settings", ": 30", ": -1", "framesBeforeBeginning"},
      {"Spo2Settings", ": 3,", ": 0,", "skipFramesBetweenMeasurements"},
      {"Spo2Settings", "true", "1", "useNewAlgorithm"},
      {"HeartrateSettings", "150", "1025", "rawDataSize"},
      {"HeartrateSettings", "150", "\"150\"", "rawDataSize"},
      {"HeartrateSettings", "150", "150.5", "rawDataSize"},
      {"HeartrateSettings", "\"neededValidHeartrate\"", "\"x\"", "neededValidHeartrate"},
      {"HeartrateSettings", "150", "2", "rawDataSize"},
      {"HeartrateSettings", ": 30", ": 100", "TTValidPercent"},
      {"HeartrateSettings", "40.5", "0", "minimumBpm"},
      {"HeartrateSettings", ": 4}", ": 512}", "TTMaxDistance"},
      {"CameraSettings", ": 2", ": 4", "exposureMode"},
      {"CameraSettings", ": 1", ": 3", "flashMode"}};
  for (const auto& [file, from, to, key] : cases) {
    const auto kept = files_;
    change(file, from, to);
    const auto found = problems();
    ASSERT_FALSE(found.empty()) << key << " " << to;
    EXPECT_THAT(found.front(), problem(Kind::error, std::string(file) + ".json: entry 1",
                                       "\"" + std::string(key) + "\""));
    files_ = kept;
  }
}

TEST_F(SettingsCheckTest, WhatDoesNotStopMeasuringIsAWarning) {
  set("CameraSettings", R"("exposureModes": 1)");
  const auto found = problems();
  ASSERT_EQ(found.size(), 6U);
  for (const auto& each : found) EXPECT_EQ(each.kind, Kind::warning) << each.line;
  EXPECT_THAT(found.back().line, HasSubstr("nothing reads \"exposureModes\""));
}

TEST_F(SettingsCheckTest, TheLastEntryOfTheProfileIsJudgedAndMustBeThere) {
  const std::string good = files_.at("HeartrateSettings");
  change("HeartrateSettings", "150", "5000");
  EXPECT_THAT(problems(), ElementsAre(problem(Kind::error, "HeartrateSettings", "entry 1")));
  const std::string entry = good.substr(13, good.size() - 15);
  change("HeartrateSettings", "}]}", "}, " + entry + ", 5]}");
  EXPECT_THAT(problems(), ElementsAre(problem(Kind::warning, "HeartrateSettings", "rawDataSize"),
                                      problem(Kind::error, "HeartrateSettings", "entry 3")));
  files_.at("HeartrateSettings") = good;
  EXPECT_THAT(problems("iphoneSE"),
              ElementsAre(problem(Kind::noEntry, "Spo2Settings", "\"iphoneSE\""),
                          problem(Kind::noEntry, "HeartrateSettings", "\"iphoneSE\""),
                          problem(Kind::noEntry, "CameraSettings", "\"iphoneSE\"")));
}

TEST(FolderResourcesTest, TakesTheSettingsFromTheFolderAndTheRestFromTheProgram) {
  const ScratchFolder folder;
  const FolderResources resources(folder.path());
  const std::string text = std::string(10000, 'x') + '\0';
  folder.write("HeartrateSettings.json", text);
  folder.write("Faq.json", "mine");
  std::filesystem::create_directory(folder.file("CameraSettings.json"));
  EXPECT_EQ(resources.read("HeartrateSettings", "json"), text);
  EXPECT_EQ(resources.read("Spo2Settings", "json"), std::nullopt);
  EXPECT_EQ(resources.read("CameraSettings", "json"), std::nullopt);
  EXPECT_EQ(resources.read("Faq", "json"), EmbeddedResources().read("Faq", "json"));
  EXPECT_NE(resources.read("Faq", "json"), std::nullopt);
  EXPECT_EQ(EmbeddedResources().read("Faq", "txt"), std::nullopt);
}

}  // namespace
}  // namespace veyla
