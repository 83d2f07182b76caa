#include "platform/linux/settings_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "acquisition/settings.h"
#include "platform/capture.h"
#include "platform/linux/resource_files.h"
#include "platform/portable/json.h"
#include "tests/support/scripted_services.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

/// The lines of what is wrong for a profile, with their kinds in place of the files and without the
/// ways out.
std::string problemsOf(const Resources& resources, const char* profile = "iphone4") {
  std::vector<std::string> found;
  for (const auto& [kind, line] : checkSettings(resources, NlohmannJsonParser(), profile)) {
    const bool isError = kind == SettingsProblem::Kind::error;
    const bool isWarning = kind == SettingsProblem::Kind::warning;
    const std::string what = line.substr(0, line.find(';'));
    found.push_back((isError     ? "error"
                     : isWarning ? "warning"
                                 : "no entry") +
                    what.substr(what.find(".json: ") + 5));
  }
  return joined(found);
}

TEST(SettingsCheckTest, EveryShippedProfileIsWholeAndShowsItsFirstValuesInTenSeconds) {
  const EmbeddedResources shipped;
  constexpr int tenSeconds = 10 * VideoDataOutput::framesPerSecond;
  constexpr int framesBeforeChart = 30;
  for (const char* profile :
       {"iphone4", "iphone4s", "iphone5", "iphone5s", "iphone6", "iphone6plus", "iphone6s",
        "iphone6splus", "iphone7", "iphone7plus", "iphoneSE"}) {
    EXPECT_EQ(problemsOf(shipped, profile), "");
    const auto setting = [&](const char* name, const char* key) {
      const auto settings = NlohmannJsonParser().parse(*shipped.read(name, "json"));
      return (*Utils::entryFor(profile, *settings))[key].intValue();
    };
    EXPECT_LE(setting("HeartrateSettings", "rawDataSize") + framesBeforeChart, tenSeconds);
    EXPECT_LE(
        setting("Spo2Settings", "framesBeforeBeginning") + setting("Spo2Settings", "rawDataSize"),
        tenSeconds);
  }
}

TEST(SettingsCheckTest, WhatIsWrongIsNamedAndStopsWhoCouldNotMeasureWithIt) {
  // What is shipped but for one change. Of one profile the last entry is used; what is wrong with
  // another one, or a mode that is missing and thus the first, stops nobody.
  for (const auto& [change, told] : rowsOf(R"(
    Spo2: [1, 2 => [0, 2 -> error: E1 "grids" WRONG
    Spo2: 16] => 17] -> error: E1 "grids" WRONG
    Spo2: 150 => 2 -> error: E1 "rawDataSize" WRONG
    Spo2: Algorithm": false => Algorithm": 1 -> error: E1 "useNewAlgorithm" WRONG
    Spo2: Spo2": 20 => Spo2": 0 -> error: E1 "neededValidSpo2" WRONG
    Heartrate: 118 => 1025 -> error: E1 "rawDataSize" WRONG
    Heartrate: 36 => 100 -> error: E1 "TTValidPercent" WRONG
    Heartrate: 46 => 226 -> error: E1 "minimumBpm" WRONG
    Heartrate: e": 5 => e": 512 -> error: E1 "TTMaxDistance" WRONG
    Heartrate: needed => n -> error: E1 "neededValidHeartrate" GONE | warning: E1 nothing reads "nV
    Camera: Mode": 2 => Mode": 4 -> error: E1 "exposureMode" WRONG
    Camera: 4s", "exposureMode": 2 => 4", "exposureMode": 4 -> error: E2 "exposureMode" WRONG
    Camera: 4s", "exposureMode": 2 => x", "exposureMode": 4 -> warning: entry 2 ("iphonex"): "exp
    Camera: "iPhoneModel": "iphone4s", =>  -> warning: entry 2 names no profile under "iPhoneModel"
    Camera: iphone4" => x" -> no entry: has no entry for the profile "iphone4", so every setting
    Camera: ] => , 5] -> error: entry 12 is no object
    Camera: results => result -> error: has no list under "results"
    Camera: ] =>  -> error: is no JSON
    )",
                                           {{"E1", "entry 1 (\"iphone4\"):"},
                                            {"E2", "entry 2 (\"iphone4\"):"},
                                            {"WRONG", "is not as it must be"},
                                            {"GONE", "is missing and reads as 0"}})) {
    std::smatch part;
    ASSERT_TRUE(std::regex_match(change, part, std::regex(" *(\\w+): (.*) => (.*) "))) << change;
    const std::string from = part[2];
    ScriptedResources resources;
    for (const std::string file : {"Spo2", "Heartrate", "Camera"}) {
      std::string& text = resources.files[file + "Settings.json"];
      text = *EmbeddedResources().read(file + "Settings", "json");
      if (file == part[1]) text.replace(text.find(from), from.size(), part[3]);
    }
    EXPECT_EQ(problemsOf(resources).substr(0, told.size()), told) << change;
    EXPECT_EQ(problemsOf(resources).empty(), told.empty()) << change;
  }
  EXPECT_THAT(problemsOf(ScriptedResources()),
              testing::StartsWith("error: is missing or cannot be read | error: is missing"));
}

}  // namespace
}  // namespace veyla
