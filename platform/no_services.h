#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/alert_view.h"
#include "platform/capture.h"
#include "platform/device_info.h"
#include "platform/health_store.h"
#include "platform/log.h"
#include "platform/screens.h"
#include "platform/sharing.h"
#include "platform/text_services.h"

/// The services that the core can do without, as a machine has them that does not offer them. None
/// keeps anything, so one of each serves everybody.
namespace veyla {

class NoLog : public Log {
 public:
  bool enabled() const override { return false; }
  void line(std::string_view) override {}
};

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

/// A machine without health records.
class NoHealthStore : public HealthStore {
 public:
  bool isHealthDataAvailable() const override { return false; }
  void requestAuthorization(const std::vector<HealthSampleType>& /*types*/,
                            std::function<void(bool success)> completion) override {
    completion(false);
  }
  HealthSharing authorizationStatus(HealthSampleType /*type*/) const override {
    return HealthSharing::denied;
  }
  void save(const HealthSample& /*sample*/, std::function<void(bool success)> completion) override {
    completion(false);
  }
};

/// Nobody sees alerts; those with a duration go away by themselves all the same.
class NoAlertView : public AlertView {
 public:
  void show(int /*id*/, const Alert& /*alert*/) override {}
  void hide(int /*id*/) override {}
};

/// A program with the measuring screen alone, and no bars to colour.
class NoScreens : public Screens {
 public:
  void performTransition(std::string_view /*name*/) override {}
  void showIntro() override {}
  void showFaq() override {}
  void showRemoteReleaseNotes() override {}
  void showRatingPrompt() override {}
  void setTitle(std::string_view /*title*/) override {}
  void setBackSwipeEnabled(bool /*enabled*/) override {}
  void setIdleTimerDisabled(bool /*disabled*/) override {}
  void setAppearance(const Appearance& /*appearance*/) override {}
  void setNavigationBarTint(std::optional<Color> /*tint*/) override {}
};

/// A machine that hands nothing on. What is composed all the same is cancelled.
class NoSharing : public Sharing {
 public:
  bool canSendMail() const override { return false; }
  void composeMail(const Mail& /*mail*/, MailFinished finished) override {
    finished(MailResult::cancelled, "");
  }
  void dismissMail() override {}
  bool canSendText() const override { return false; }
  void composeMessage(const std::string& /*body*/, MessageFinished finished) override {
    finished(MessageResult::cancelled);
  }
  void dismissMessage() override {}
  void open(const std::string& /*address*/) override {}
};

/// A machine of no known model, whose settings are those of "iphone6".
class NoDevice : public DeviceInfo {
 public:
  std::string hardwareModel() const override { return {}; }
  std::string systemVersion() const override { return {}; }
  std::string bundleVersion() const override { return {}; }
};

/// A machine that says nothing in anybody's language and reads nothing back. Estimates and the
/// measuring flow need no more; lists, charts, mails, options and health records do, so that it is
/// handed to `servicesOf` by whoever goes without them, as is `noDevice`.
class NoText : public DateFormatting,
               public NumberFormatting,
               public RegularExpressions,
               public Characters,
               public UuidGenerator {
 public:
  LocalTime localTime(Date /*date*/) const override { return {}; }
  std::string mediumDateShortTime(Date /*date*/) const override { return {}; }
  std::optional<Date> parseMediumDateShortTime(std::string_view /*text*/) const override {
    return std::nullopt;
  }
  std::string formatted(Date /*date*/, std::string_view /*pattern*/) const override { return {}; }
  std::optional<Date> parse(std::string_view /*text*/,
                            std::string_view /*pattern*/) const override {
    return std::nullopt;
  }
  std::string decimal(double /*value*/, int /*maximumFractionDigits*/) const override { return {}; }
  bool matchesWholeIgnoringCase(std::string_view /*pattern*/,
                                std::string_view /*text*/) const override {
    return false;
  }
  bool findsIgnoringCase(std::string_view /*pattern*/, std::string_view /*text*/,
                         std::size_t /*length*/) const override {
    return false;
  }
  std::size_t count(std::string_view /*text*/) const override { return 0; }
  std::string lowerCased(std::string_view /*text*/) const override { return {}; }
  std::string randomUuid() override { return {}; }
};

inline NoLog noLog;
inline NoCamera noCamera;
inline NoHealthStore noHealthStore;
inline NoAlertView noAlertView;
inline NoScreens noScreens;
inline NoSharing noSharing;
inline NoDevice noDevice;
inline NoText noText;

}  // namespace veyla
