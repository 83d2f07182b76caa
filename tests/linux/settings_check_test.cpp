#include "platform/linux/settings_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "acquisition/settings.h"
#include "platform/capture.h"
#include "platform/linux/resource_files.h"
#include "platform/portable/json.h"
#include "tests/linux/scratch.h"
#include "tests/support/scripted_services.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class SettingsCheckTest : public testing::Test {
 protected:
  SettingsCheckTest() {
    const std::string head = R"({"results": [{"iPhoneModel": "iphone6", )";
    resources_.files = {
        {"Spo2Settings.json",
         head + R"("grids": [6, 7], "rawDataSize": 120, "framesBeforeBeginning": 30,
                "skipFramesBetweenMeasurements": 3, "neededValidSpo2": 20, "useNewAlgorithm": true,
                "useTrend": false}]})"},
        {"HeartrateSettings.json", head + R"("rawDataSize": 150, "skipFramesBetweenMeasurements": 5,
                "neededValidHeartrate": 10, "TTValidPercent": 30, "minimumBpm": 40.5,
                "TTMaxDistance": 4}]})"},
        {"CameraSettings.json",
         head + R"("exposureMode": 2, "whiteBalanceMode": 0, "focusMode": 0, "flashMode": 1,
                "automaticallyEnablesLowLightBoostWhenAvailable": false}]})"}};
  }

  void change(const std::string& name, const std::string& from, const std::string& to) {
    std::string& text = resources_.files.at(name + ".json");
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
  }
  /// Their lines with their kinds before them.
  std::vector<std::string> problems(std::string_view profile = "iphone6") const {
    std::vector<std::string> found;
    for (const auto& [kind, line] : checkSettings(resources_, NlohmannJsonParser(), profile)) {
      const bool isError = kind == SettingsProblem::Kind::error;
      const bool isWarning = kind == SettingsProblem::Kind::warning;
      found.push_back((isError ? "error " : isWarning ? "warning " : "no entry ") + line);
    }
    return found;
  }

  ScriptedResources resources_;
};

TEST_F(SettingsCheckTest, GoodSettingsHaveNoProblemAndEveryBrokenBoundNamesItsKey) {
  EXPECT_THAT(problems(), IsEmpty());
  struct {
    const char *file, *from, *to, *told;
  } const cases[] = {
      {"Spo2Settings", "[6, 7]", "[]", R"("grids")"},
      {"Spo2Settings", "[6, 7]", "[0]", R"("grids")"},
      {"Spo2Settings", "[6, 7]", "[1, 17]", R"("grids")"},
      {"Spo2Settings", "[6, 7]", "[1.5]", R"("grids")"},
      {"Spo2Settings", "[6, 7]", "6", R"("grids")"},
      {"Spo2Settings", "120", "2", R"("rawDataSize")"},
      {"Spo2Settings", ": 30", ": -1", R"("framesBeforeBeginning")"},
      {"Spo2Settings", ": 3,", ": 0,", R"("skipFramesBetweenMeasurements")"},
      {"Spo2Settings", "true", "1", R"("useNewAlgorithm")"},
      {"HeartrateSettings", "150", "1025", R"("rawDataSize")"},
      {"HeartrateSettings", "150", "\"150\"", R"("rawDataSize")"},
      {"HeartrateSettings", "150", "150.5", R"("rawDataSize")"},
      {"HeartrateSettings", "\"neededValidHeartrate\"", "\"x\"", R"("neededValidHeartrate")"},
      {"HeartrateSettings", "150", "2", R"("rawDataSize")"},
      {"HeartrateSettings", ": 30", ": 100", R"("TTValidPercent")"},
      {"HeartrateSettings", "40.5", "0", R"("minimumBpm")"},
      {"HeartrateSettings", "40.5", "226",
       R"("minimumBpm" is not as it must be; make it a number from 1 to 225)"},
      {"HeartrateSettings", ": 4}", ": 512}", R"("TTMaxDistance")"},
      {"CameraSettings", ": 2", ": 4", R"("exposureMode")"},
      {"CameraSettings", ": 1", ": 3", R"("flashMode")"}};
  for (const auto& [file, from, to, told] : cases) {
    const auto kept = resources_.files;
    change(file, from, to);
    const auto found = problems();
    ASSERT_FALSE(found.empty()) << told << " " << to;
    EXPECT_THAT(found.front(), StartsWith("error " + std::string(file) +
                                          R"(.json: entry 1 ("iphone6"): )" + told));
    resources_.files = kept;
  }
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
  resources_.files.erase("Spo2Settings.json");
  resources_.files["HeartrateSettings.json"] = "{";
  resources_.files["CameraSettings.json"] = R"({"result": []})";
  EXPECT_THAT(problems(),
              ElementsAre(StartsWith("error Spo2Settings.json: is missing or cannot be read"),
                          StartsWith("error HeartrateSettings.json: is no JSON"),
                          StartsWith("error CameraSettings.json: has no list under \"results\"")));
}

TEST_F(SettingsCheckTest, WhatDoesNotStopMeasuringIsAWarning) {
  resources_.files["CameraSettings.json"] =
      R"({"results": [{"iPhoneModel": "iphone6", "exposureModes": 1}]})";
  const auto found = problems();
  ASSERT_EQ(found.size(), 6U);
  EXPECT_THAT(found, testing::Each(StartsWith("warning ")));
  EXPECT_THAT(found.back(), testing::HasSubstr("nothing reads \"exposureModes\""));
}

TEST_F(SettingsCheckTest, TheLastEntryOfTheProfileIsJudgedAndMustBeThere) {
  const std::string good = resources_.files.at("HeartrateSettings.json");
  change("HeartrateSettings", "150", "5000");
  EXPECT_THAT(problems(), ElementsAre(StartsWith("error HeartrateSettings.json: entry 1")));
  const std::string entry = good.substr(13, good.size() - 15);
  change("HeartrateSettings", "}]}", "}, " + entry + ", 5]}");
  EXPECT_THAT(problems(), ElementsAre(StartsWith("warning HeartrateSettings.json: entry 1"),
                                      StartsWith("error HeartrateSettings.json: entry 3")));
  resources_.files.at("HeartrateSettings.json") = good;
  std::vector<std::string> missing = problems("iphoneSE");
  for (const char* name : {"Spo2Settings", "HeartrateSettings", "CameraSettings"}) {
    EXPECT_THAT(missing.front(), StartsWith("no entry " + std::string(name) +
                                            ".json: has no entry for the profile \"iphoneSE\""));
    missing.erase(missing.begin());
  }
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
