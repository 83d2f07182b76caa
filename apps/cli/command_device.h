#pragma once

#include <string>
#include <utility>

#include "platform/device_info.h"

namespace veyla {

/// The hardware model that is measured for unless another one is named.
inline constexpr const char* defaultDevice = "iPhone8,1";

/// The phone that a command stands in for.
class CommandDevice : public DeviceInfo {
 public:
  explicit CommandDevice(std::string hardwareModel = defaultDevice)
      : hardwareModel_(std::move(hardwareModel)) {}

  std::string hardwareModel() const override { return hardwareModel_; }
  std::string systemVersion() const override { return "Linux"; }
  std::string bundleVersion() const override { return VEYLA_VERSION; }

 private:
  std::string hardwareModel_;
};

}  // namespace veyla
