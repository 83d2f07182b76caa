#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/recording_camera.h"
#include "tests/support/recorders.h"

namespace veyla {

/// A camera whose abilities a test sets; what is done to it stands in the journal as "device …".
class ScriptedDevice : public RecordedDevice {
 public:
  explicit ScriptedDevice(Journal& journal,
                          CaptureDeviceType type = CaptureDeviceType::wideAngleCamera)
      : type_(type), journal_(journal) {}

  bool lockable = true;
  bool torch = true;
  bool lowLightBoost = true;
  FocusRange rangeRestriction = FocusRange::near;
  std::set<CaptureMode> exposureModes = allModes;
  std::set<CaptureMode> whiteBalanceModes = allModes;
  std::set<CaptureMode> focusModes = allModes;
  /// Called when the torch is switched; may be empty.
  std::function<void()> lights;

  CaptureDeviceType deviceType() const override { return type_; }
  bool lockForConfiguration() override {
    journal_.add("device lock");
    return lockable;
  }
  void unlockForConfiguration() override { journal_.add("device unlock"); }
  bool isExposureModeSupported(CaptureMode mode) const override {
    return exposureModes.contains(mode);
  }
  CaptureMode exposureMode() const override { return CaptureMode::continuous; }
  void setExposureMode(CaptureMode mode) override { record("exposure", mode); }
  bool isWhiteBalanceModeSupported(CaptureMode mode) const override {
    return whiteBalanceModes.contains(mode);
  }
  CaptureMode whiteBalanceMode() const override { return CaptureMode::automatic; }
  void setWhiteBalanceMode(CaptureMode mode) override { record("white balance", mode); }
  bool isFocusModeSupported(CaptureMode mode) const override { return focusModes.contains(mode); }
  void setFocusMode(CaptureMode mode) override { record("focus", mode); }
  FocusRange autoFocusRangeRestriction() const override { return rangeRestriction; }
  void setAutoFocusRangeRestriction(FocusRange restriction) override {
    record("focus range", restriction);
  }
  bool isLowLightBoostSupported() const override { return lowLightBoost; }
  bool automaticallyEnablesLowLightBoostWhenAvailable() const override { return true; }
  void setAutomaticallyEnablesLowLightBoostWhenAvailable(bool enabled) override {
    record("low-light boost", enabled);
  }
  bool hasTorch() const override { return torch; }
  bool isTorchModeSupported(LightMode mode) const override { return mode != LightMode::automatic; }
  void setTorchMode(LightMode mode) override {
    RecordedDevice::setTorchMode(mode);
    if (lights) lights();
    record("torch", mode);
  }
  float torchLevel() const override { return 0.5F; }
  void setFlashMode(LightMode mode) override { record("flash", mode); }
  double videoZoomFactor() const override { return 1.25; }
  bool isAdjustingWhiteBalance() const override { return true; }
  bool isAdjustingExposure() const override { return true; }

 private:
  template <class Value>
  void record(const std::string& what, Value value) {
    journal_.add("device " + what + ' ' + std::to_string(static_cast<int>(value)));
  }

  inline static const std::set<CaptureMode> allModes{CaptureMode::locked, CaptureMode::automatic,
                                                     CaptureMode::continuous};

  CaptureDeviceType type_;
  Journal& journal_;
};

/// A session that stands in the journal as "session …" and whose frames a test delivers.
class ScriptedSession : public CaptureSession {
 public:
  explicit ScriptedSession(Journal& journal) : journal_(journal) {}

  void beginConfiguration() override { journal_.add("session begin"); }
  void setSessionPreset(SessionPreset /*preset*/) override { journal_.add("session preset low"); }
  void addInput(std::shared_ptr<CaptureDeviceInput> input) override {
    inputs_.push_back(std::move(input));
    journal_.add("session add input");
  }
  void addOutput(std::shared_ptr<VideoDataOutput> output) override {
    outputs_.push_back(std::move(output));
    journal_.add("session add output");
  }
  void commitConfiguration() override { journal_.add("session commit"); }
  void startRunning() override {
    running_ = true;
    journal_.add("session start");
  }
  void stopRunning() override {
    running_ = false;
    journal_.add("session stop");
  }
  bool isRunning() const override { return running_; }
  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs() const override { return inputs_; }
  std::vector<std::shared_ptr<VideoDataOutput>> outputs() const override { return outputs_; }
  void removeInput(const std::shared_ptr<CaptureDeviceInput>& input) override {
    std::erase(inputs_, input);
    journal_.add("session remove input");
  }
  void removeOutput(const std::shared_ptr<VideoDataOutput>& output) override {
    std::erase(outputs_, output);
    journal_.add("session remove output");
  }

 private:
  bool running_ = false;
  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs_;
  std::vector<std::shared_ptr<VideoDataOutput>> outputs_;
  Journal& journal_;
};

/// The cameras of a machine that a test describes: one wide-angle camera, allowed, to begin with.
class ScriptedCamera : public Camera {
 public:
  /// Called when a recording begins; may be empty.
  std::function<void()> begins;

  explicit ScriptedCamera(Journal& journal)
      : device(std::make_shared<ScriptedDevice>(journal)),
        backDevices({device}),
        journal_(journal) {}

  CameraAuthorization authorization = CameraAuthorization::authorized;
  /// The answer to a request for access.
  bool grants = true;
  std::shared_ptr<ScriptedDevice> device;
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> backDevices;
  std::shared_ptr<CaptureDevice> defaultDevice;
  /// The last one made.
  std::shared_ptr<ScriptedSession> session;

  /// Keeps what waits for the camera to open, where a test wants to open it later.
  bool opensLater = false;
  std::weak_ptr<std::function<void()>> waiting;

  CameraAuthorization authorizationStatus() const override { return authorization; }
  std::shared_ptr<void> prepare(std::function<void()> ready) override {
    if (!opensLater) return Camera::prepare(std::move(ready));
    const auto wait = std::make_shared<std::function<void()>>(std::move(ready));
    waiting = wait;
    return wait;
  }
  void opened() {
    if (const auto call = waiting.lock()) (*call)();
  }
  bool isWaitedFor() const { return !waiting.expired(); }
  /// Those that are left to go on to.
  int nextCameras = 0;
  bool hasNextBackCamera() const override { return nextCameras > 0; }
  void useNextBackCamera() override { --nextCameras; }
  void requestAccess(std::function<void(bool granted)> completion) override { completion(grants); }
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() override {
    return backDevices;
  }
  std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return defaultDevice; }
  std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& from) override {
    return std::make_shared<CaptureDeviceInput>(CaptureDeviceInput{from});
  }
  std::shared_ptr<CaptureSession> makeSession() override {
    if (begins) begins();
    session = std::make_shared<ScriptedSession>(journal_);
    return session;
  }

 private:
  Journal& journal_;
};

}  // namespace veyla
