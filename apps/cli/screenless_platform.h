#pragma once

#include "apps/cli/cli_screens.h"
#include "apps/cli/measurement_run.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/json.h"
#include "platform/linux/kiss_real_fft.h"
#include "platform/linux/log_file.h"
#include "platform/linux/no_health_store.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/timed_queue.h"
#include "platform/linux/uuid.h"
#include "platform/platform.h"

namespace veyla {

/// A machine without a camera, and the program itself as the device.
class NoCamera : public Camera, public DeviceInfo {
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

  std::string hardwareModel() const override { return defaultDevice; }
  std::string systemVersion() const override { return "Linux"; }
  std::string bundleVersion() const override { return VEYLA_VERSION; }
};

class NoDisplay : public Display {
 public:
  void setText(Element /*element*/, const std::string& /*text*/) override {}
  void setFont(Element /*element*/, Font /*font*/) override {}
  void setImage(Element /*element*/, std::string_view /*image*/) override {}
  void setOpacity(Element /*element*/, double /*opacity*/) override {}
  void setHidden(Element /*element*/, bool /*hidden*/) override {}
  void setShimmering(Element /*element*/, bool /*shimmering*/) override {}
  void animate(Element /*element*/, std::string_view /*animation*/,
               std::function<void()> completion) override {
    if (completion) completion();
  }
  void setNeedsDisplay(Element /*element*/) override {}
};

/// The platform of commands that use the application's screens without measuring.
class ScreenlessPlatform {
 public:
  /// Both must outlive it.
  ScreenlessPlatform(KeyValueStore& store, Sharing& sharing)
      : platform_({.log = log_,
                   .mainQueue = queue_,
                   .clock = queue_,
                   .camera = camera_,
                   .realFft = realFft_,
                   .store = store,
                   .healthStore = healthStore_,
                   .resources = resources_,
                   .json = json_,
                   .device = camera_,
                   .dates = text_,
                   .regularExpressions = text_,
                   .characters = text_,
                   .uuids = uuids_,
                   .measuringDisplay = display_,
                   .alertView = alerts_,
                   .screens = screens_,
                   .sharing = sharing}) {}

 private:
  NoLog log_;
  TimedQueue queue_{TimedQueue::Pace::wall};
  NoCamera camera_;
  KissRealFft realFft_;
  NoHealthStore healthStore_;
  EmbeddedResources resources_;
  NlohmannJsonParser json_;
  IcuText text_;
  LibUuid uuids_;
  NoDisplay display_;
  CliAlerts alerts_;
  CliScreens screens_;
  Platform platform_;
};

}  // namespace veyla
