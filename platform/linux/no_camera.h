#pragma once

#include "platform/capture.h"

namespace veyla {

/// A machine without cameras.
class NoCamera : public Camera {
 public:
  CameraAuthorization authorizationStatus() const override {
    return CameraAuthorization::restricted;
  }
  void requestAccess(std::function<void(bool granted)> completion) override { completion(false); }
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() override {
    return std::nullopt;
  }
  std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return nullptr; }
  std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& /*device*/) override {
    return nullptr;
  }
  std::shared_ptr<CaptureSession> makeSession() override { return nullptr; }
};

}  // namespace veyla
