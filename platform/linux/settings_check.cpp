#include "platform/linux/settings_check.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "acquisition/settings.h"
#include "platform/format.h"

namespace veyla {

namespace {

using Kind = SettingsProblem::Kind;

constexpr std::string_view profileKey = "iPhoneModel";

struct Key {
  enum class Type { integer, number, boolean, cells };

  std::string_view name;
  Type type = Type::integer;
  /// Of a number, both included.
  double least = 0;
  double most = 0;
};

/// Of two frames a line through both leaves nothing.
constexpr double fewestFrames = 3;

constexpr Key cells{"grids", Key::Type::cells, 1, 16};

constexpr Key spo2Keys[]{
    cells,
    // Far more frames than anyone waits for.
    {"rawDataSize", Key::Type::integer, fewestFrames, 100000},
    {"framesBeforeBeginning", Key::Type::integer, 0, 100000},
    {"skipFramesBetweenMeasurements", Key::Type::integer, 1, 100000},
    {"neededValidSpo2", Key::Type::integer, 1, 10000},
    {"useNewAlgorithm", Key::Type::boolean},
    {"useTrend", Key::Type::boolean},
};

constexpr Key heartrateKeys[]{
    // As many samples as the transform takes.
    {"rawDataSize", Key::Type::integer, fewestFrames, 1024},
    {"skipFramesBetweenMeasurements", Key::Type::integer, 1, 100000},
    {"neededValidHeartrate", Key::Type::integer, 1, 10000},
    // Nothing falls short of the strongest bin by all of it, but another that is empty.
    {"TTValidPercent", Key::Type::integer, 0, 99},
    // The cut at the spectrum's end mirrors the one at its start: above half of its 450 beats per
    // minute they meet, and no bin is left.
    {"minimumBpm", Key::Type::number, 1, 225},
    // As many bins as the spectrum has neighbours.
    {"TTMaxDistance", Key::Type::number, 0, 511},
};

constexpr Key cameraKeys[]{
    // 3 is a custom mode, which some cameras have.
    {"exposureMode", Key::Type::integer, 0, 3},
    {"whiteBalanceMode", Key::Type::integer, 0, 3},
    {"focusMode", Key::Type::integer, 0, 3},
    {"flashMode", Key::Type::integer, 0, 2},
    {"automaticallyEnablesLowLightBoostWhenAvailable", Key::Type::boolean},
};

bool isBoolean(const Value& value) {
  return value.visit([](const auto& held) { return std::is_same_v<decltype(held), const bool&>; });
}

bool isWithin(const Value& value, const Key& key) {
  return value.isNumber() && value.doubleValue() >= key.least && value.doubleValue() <= key.most;
}

bool isWhole(const Value& value) { return value.doubleValue() == std::trunc(value.doubleValue()); }

bool isAllowed(const Value& value, const Key& key) {
  switch (key.type) {
    case Key::Type::boolean:
      return isBoolean(value);
    case Key::Type::number:
      return isWithin(value, key);
    case Key::Type::integer:
      return isWithin(value, key) && isWhole(value);
    case Key::Type::cells: {
      const auto* elements = value.array();
      return elements && !elements->empty() &&
             std::all_of(elements->begin(), elements->end(), [&](const Value& element) {
               return isWithin(element, key) && isWhole(element);
             });
    }
  }
  return false;
}

std::string allowed(const Key& key) {
  const std::string range = formatText("%g to %g", key.least, key.most);
  switch (key.type) {
    case Key::Type::boolean:
      return "true or false";
    case Key::Type::number:
      return "a number from " + range;
    case Key::Type::integer:
      return "a whole number from " + range;
    case Key::Type::cells:
      return "a list of at least one whole number from " + range;
  }
  return {};
}

/// Whether 0, as which a missing key reads, is as good as a value.
bool maybeMissing(const Key& key) {
  return key.type == Key::Type::boolean || (key.type != Key::Type::cells && key.least <= 0);
}

class FileCheck {
 public:
  FileCheck(std::string_view name, std::span<const Key> keys,
            std::vector<SettingsProblem>& problems)
      : name_(name), keys_(keys), problems_(problems) {}

  void check(const Resources& resources, const JsonParser& json, std::string_view profile) {
    const auto text = resources.read(name_, "json");
    if (!text) {
      return add(Kind::error, "is missing or cannot be read; put it there and allow reading it");
    }
    const auto value = json.parse(*text);
    if (!value) return add(Kind::error, "is no JSON; correct it or put the original one there");
    const auto* entries = (*value)["results"].array();
    if (!entries) {
      return add(Kind::error, "has no list under \"results\"; put the profiles' entries there");
    }

    const Value* chosen = Utils::entryFor(profile, *value);
    std::size_t number = 0;
    for (const Value& entry : *entries) checkEntry(entry, ++number, &entry == chosen);
    if (!chosen) {
      add(Kind::noEntry, "has no entry for the profile \"" + std::string(profile) +
                             "\", so every setting is 0 and nothing can be measured; add one or "
                             "choose another profile");
    }
  }

 private:
  void checkEntry(const Value& entry, std::size_t number, bool chosen) {
    std::string place = "entry " + std::to_string(number);
    if (!entry.dictionary()) return add(Kind::error, place + " is no object; correct or remove it");
    const auto* model = entry[profileKey].text();
    if (!model) {
      return add(Kind::warning, place + " names no profile under \"" + std::string(profileKey) +
                                    "\" and is never used; name one or remove it");
    }
    place += " (\"" + *model + "\")";
    for (const Key& key : keys_) checkKey(entry, key, place, chosen);
    for (const auto& [name, value] : *entry.dictionary()) {
      const auto isKnown = [&, &known = name](const Key& key) { return key.name == known; };
      if (name == profileKey || std::any_of(keys_.begin(), keys_.end(), isKnown)) continue;
      add(Kind::warning, formatText("%s: nothing reads \"%s\"; correct its name or remove it",
                                    place.c_str(), name.c_str()));
    }
  }

  void checkKey(const Value& entry, const Key& key, const std::string& place, bool chosen) {
    const Value& value = entry[key.name];
    if (isAllowed(value, key)) return;
    const bool missing = value.isNull();
    const Kind kind = chosen && !(missing && maybeMissing(key)) ? Kind::error : Kind::warning;
    add(kind, place + ": \"" + std::string(key.name) + "\" " +
                  (missing ? "is missing and reads as 0" : "is not as it must be") + "; make it " +
                  allowed(key));
  }

  void add(Kind kind, const std::string& what) {
    problems_.push_back({kind, std::string(name_) + ".json: " + what});
  }

  std::string_view name_;
  std::span<const Key> keys_;
  std::vector<SettingsProblem>& problems_;
};

}  // namespace

std::vector<SettingsProblem> checkSettings(const Resources& resources, const JsonParser& json,
                                           std::string_view profile) {
  std::vector<SettingsProblem> problems;
  FileCheck("Spo2Settings", spo2Keys, problems).check(resources, json, profile);
  FileCheck("HeartrateSettings", heartrateKeys, problems).check(resources, json, profile);
  FileCheck("CameraSettings", cameraKeys, problems).check(resources, json, profile);
  return problems;
}

}  // namespace veyla
