#pragma once

#include <memory>
#include <string>

#include "platform/resources.h"

namespace veyla {

/// The settings resources that a command measures with, checked for the device: the built-in ones
/// or a folder's.
class SettingsSource {
 public:
  /// `folder` empty for the built-in ones; `device` is the hardware model. Warnings go to standard
  /// error. Throws `InputError` for settings that cannot be measured with.
  SettingsSource(const std::string& folder, const std::string& device);

  const Resources& resources() const { return *resources_; }

 private:
  std::unique_ptr<Resources> resources_;
};

}  // namespace veyla
