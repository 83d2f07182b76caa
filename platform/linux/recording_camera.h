#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/capture.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/timed_queue.h"

namespace veyla {

/// A camera device that supports every mode, does nothing about any and remembers them all.
class RecordedDevice : public CaptureDevice {
 public:
  CaptureDeviceType deviceType() const override { return CaptureDeviceType::wideAngleCamera; }

  bool lockForConfiguration() override { return true; }
  void unlockForConfiguration() override {}

  bool isExposureModeSupported(CaptureMode) const override { return true; }
  CaptureMode exposureMode() const override { return exposureMode_; }
  void setExposureMode(CaptureMode mode) override { exposureMode_ = mode; }

  bool isWhiteBalanceModeSupported(CaptureMode) const override { return true; }
  CaptureMode whiteBalanceMode() const override { return whiteBalanceMode_; }
  void setWhiteBalanceMode(CaptureMode mode) override { whiteBalanceMode_ = mode; }

  bool isFocusModeSupported(CaptureMode) const override { return true; }
  CaptureMode focusMode() const override { return focusMode_; }
  void setFocusMode(CaptureMode mode) override { focusMode_ = mode; }

  FocusRange autoFocusRangeRestriction() const override { return autoFocusRangeRestriction_; }
  void setAutoFocusRangeRestriction(FocusRange restriction) override {
    autoFocusRangeRestriction_ = restriction;
  }

  bool isLowLightBoostSupported() const override { return true; }
  bool automaticallyEnablesLowLightBoostWhenAvailable() const override { return lowLightBoost_; }
  void setAutomaticallyEnablesLowLightBoostWhenAvailable(bool enabled) override {
    lowLightBoost_ = enabled;
  }

  bool hasTorch() const override { return true; }
  bool isTorchModeSupported(LightMode) const override { return true; }
  LightMode torchMode() const override { return torchMode_; }
  void setTorchMode(LightMode mode) override { torchMode_ = mode; }
  float torchLevel() const override { return torchMode_ == LightMode::off ? 0.0F : 1.0F; }
  void setFlashMode(LightMode mode) override { flashMode_ = mode; }
  LightMode flashMode() const { return flashMode_; }

  double videoZoomFactor() const override { return 1; }
  bool isAdjustingWhiteBalance() const override { return false; }
  bool isAdjustingFocus() const override { return false; }
  bool isAdjustingExposure() const override { return false; }

 private:
  CaptureMode exposureMode_ = CaptureMode::locked;
  CaptureMode whiteBalanceMode_ = CaptureMode::locked;
  CaptureMode focusMode_ = CaptureMode::locked;
  /// Only a device that restricts its range already is given the settings' restriction.
  FocusRange autoFocusRangeRestriction_ = FocusRange::near;
  bool lowLightBoost_ = false;
  LightMode torchMode_ = LightMode::off;
  LightMode flashMode_ = LightMode::off;
};

/// Which part of a recording is played, in seconds of its own time.
struct RecordingSpan {
  double start = 0;
  /// From `start`; to the recording's end when there is none.
  std::optional<double> duration;
};

/// A camera that shows a recording, 15 frames a second of the recording's own time.
///
/// While a session runs, tick k falls due k/15 s after its start and delivers the newest frame at
/// or before that time of the recording to the session's output, on the queue. A tick before the
/// first frame delivers nothing; what becomes of a gap in the recording, `FrameTicks` tells. A
/// session that is stopped and started again, or another one, goes on where the recording stands.
///
/// At the wall's pace, an output that discards late frames never gets the frame of a tick that has
/// its turn more than 1/15 s late: to that tick no frame came, as to a phone too busy to take it.
class RecordingCamera : public Camera {
 public:
  /// `queue` must outlive the camera. A source's `InputError` leaves through the queue's `run`.
  RecordingCamera(std::unique_ptr<RecordingSource> source, TimedQueue& queue,
                  RecordingSpan span = {});

  /// Called once, on the queue, at the first tick after the last frame or at the end of the span.
  /// No tick follows.
  void setOnEnd(std::function<void()> onEnd);

  const RecordingSource& source() const;
  RecordedDevice& device() { return *device_; }

  CameraAuthorization authorizationStatus() const override;
  void requestAccess(std::function<void(bool granted)> completion) override;
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() override;
  std::shared_ptr<CaptureDevice> defaultVideoDevice() override { return device_; }
  std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::shared_ptr<CaptureSession> makeSession() override;

 private:
  class Playback;
  class Session;

  TimedQueue& queue_;
  std::shared_ptr<RecordedDevice> device_ = std::make_shared<RecordedDevice>();
  std::shared_ptr<Playback> playback_;
};

}  // namespace veyla
