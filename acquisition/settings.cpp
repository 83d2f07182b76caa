#include "acquisition/settings.h"

#include <utility>

#include "acquisition/sd_ios_version.h"
#include "platform/platform.h"

namespace veyla::Utils {

namespace {

struct HeldSettings {
  std::optional<Value> spo2;
  std::optional<Value> heartrate;
  std::optional<Value> camera;
};

HeldSettings& held() { return Platform::current().shared<HeldSettings>(); }

const Value& read(const std::optional<Value>& settings, std::string_view key) {
  static const Value none;
  return settings ? (*settings)[key] : none;
}

/// The device questions that are asked once: each keeps its first answer.
struct DeviceAnswers {
  std::optional<bool> isIphone4;
  std::optional<bool> isIphone4s;
  std::optional<bool> isIphone5;
  std::optional<bool> isIphone5s;
};

bool answerOnce(std::optional<bool> DeviceAnswers::*question, std::string_view profile) {
  std::optional<bool>& answer = Platform::current().shared<DeviceAnswers>().*question;
  if (!answer) answer = platformString() == profile;
  return *answer;
}

}  // namespace

std::optional<Value> loadDefaultSettings(std::string_view resourceName) {
  const auto text = services().resources.read(resourceName, "json");
  if (!text) return std::nullopt;
  const auto json = services().json.parse(*text);
  if (!json) return std::nullopt;
  const Value* entry = entryFor(platformString(), *json, [](const Value& matching) {
    logLine("found ya!: %s", described(matching).c_str());
  });
  return entry ? std::optional(*entry) : std::nullopt;
}

const Value* entryFor(std::string_view profile, const Value& resource,
                      const std::function<void(const Value&)>& matched) {
  const auto* entries = resource["results"].array();
  if (!entries) return nullptr;
  const Value* last = nullptr;
  for (const Value& entry : *entries) {
    const auto* model = entry["iPhoneModel"].text();
    if (!model || *model != profile) continue;
    matched(entry);
    last = &entry;
  }
  return last;
}

void appendCells(const Value& grids, std::vector<int>& cells) {
  if (const auto* numbers = grids.array()) {
    for (const Value& cell : *numbers) cells.push_back(cell.intValue());
  }
}

void setSpo2Settings(std::optional<Value> settings) { held().spo2 = std::move(settings); }
void setHeartrateSettings(std::optional<Value> settings) { held().heartrate = std::move(settings); }
void setCameraSettings(std::optional<Value> settings) { held().camera = std::move(settings); }

const Value& getSpo2Settings(std::string_view key) { return read(held().spo2, key); }
const Value& getHeartrateSettings(std::string_view key) { return read(held().heartrate, key); }
const Value& getCameraSettings(std::string_view key) { return read(held().camera, key); }

const std::optional<Value>& getSpo2Settings() { return held().spo2; }
const std::optional<Value>& getHeartrateSettings() { return held().heartrate; }
const std::optional<Value>& getCameraSettings() { return held().camera; }

std::string platformString() { return profileOf(services().device.hardwareModel()); }

std::string profileOf(const std::string& hardwareModel) {
  switch (SDiOSVersion::numberOf(hardwareModel)) {
    case 3:
      return "iphone4";
    case 4:
      return "iphone4s";
    case 5:
    case 6:
      return "iphone5";
    case 7:
      return "iphone5s";
    case 8:
      return "iphone6";
    case 9:
      return "iphone6plus";
    case 10:
      return "iphone6s";
    case 11:
      return "iphone6splus";
    case 30:
      return "iphone7";
    case 31:
      return "iphone7plus";
    // No hardware model has this number: the phone runs with the profile of the unknown ones, and
    // its entry in the resources is never chosen.
    case 12:
      return "iphoneSE";
    default:
      return "iphone6";
  }
}

bool isIphone4() { return answerOnce(&DeviceAnswers::isIphone4, "iphone4"); }
bool isIphone4s() { return answerOnce(&DeviceAnswers::isIphone4s, "iphone4s"); }
bool isIphone5() { return answerOnce(&DeviceAnswers::isIphone5, "iphone5"); }
bool isIphone5s() { return answerOnce(&DeviceAnswers::isIphone5s, "iphone5s"); }

bool isIphone6or6plus() {
  const std::string profile = platformString();
  return profile == "iphone6" || profile == "iphone6plus";
}

std::string appVersion() { return services().device.bundleVersion(); }
std::string iOSVersion() { return services().device.systemVersion(); }

}  // namespace veyla::Utils
