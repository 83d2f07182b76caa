#pragma once

#include <string>

namespace veyla {

/// What the application is told about the machine and about itself.
class DeviceInfo {
 public:
  virtual ~DeviceInfo() = default;

  /// The hardware model, such as "iPhone8,1".
  virtual std::string hardwareModel() const = 0;
  virtual std::string systemVersion() const = 0;
  /// The build's version, such as "1.0.0".
  virtual std::string bundleVersion() const = 0;
  /// The version that users are told, which builds may share; the build's own where there is none.
  virtual std::string bundleShortVersion() const { return bundleVersion(); }
  virtual std::string bundleName() const { return "Veyla"; }
};

}  // namespace veyla
