#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

/// The processing settings of this device, chosen at launch from three resources, and the queries
/// about the device that choose them.
namespace veyla::Utils {

/// The entry for this device in the JSON resource `resourceName` ("Spo2Settings",
/// "HeartrateSettings", "CameraSettings"); the last one where several match. Nothing when the
/// resource is missing, no JSON, or has no entry for the device.
std::optional<Value> loadDefaultSettings(std::string_view resourceName);

/// The entry for `profile` in a settings resource that was read, which it points into: the last one
/// where several match, null where none does. `matched` is called for each, in the resource's
/// order.
const Value* entryFor(
    std::string_view profile, const Value& resource,
    const std::function<void(const Value&)>& matched = [](const Value&) {});

/// Appends the cell numbers of a "grids" value, none for anything but a list.
void appendCells(const Value& grids, std::vector<int>& cells);

/// Replace a held set; null empties it.
void setSpo2Settings(std::optional<Value> settings);
void setHeartrateSettings(std::optional<Value> settings);
void setCameraSettings(std::optional<Value> settings);

/// The value under `key` in the held set; null, which reads as 0 and false, when there is none.
const Value& getSpo2Settings(std::string_view key);
const Value& getHeartrateSettings(std::string_view key);
const Value& getCameraSettings(std::string_view key);

/// The whole held set.
const std::optional<Value>& getSpo2Settings();
const std::optional<Value>& getHeartrateSettings();
const std::optional<Value>& getCameraSettings();

/// The device's profile name, "iphone4" to "iphone7plus"; "iphone6" for hardware that is not known.
/// "iphoneSE" is a profile, too, with settings of its own, but no hardware model leads to it: that
/// phone is one of the unknown ones.
std::string platformString();

/// The profile name of a hardware model.
std::string profileOf(const std::string& hardwareModel);

/// Whether the profile is the named one; the first answer is kept.
bool isIphone4();
bool isIphone4s();
bool isIphone5();
bool isIphone5s();
/// Asked anew at every call.
bool isIphone6or6plus();

/// The build's version.
std::string appVersion();
/// The version of the system, whichever it is.
std::string iOSVersion();

}  // namespace veyla::Utils
