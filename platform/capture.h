#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/frame_colours.h"

namespace veyla {

/// One video frame: 32-bit pixels in the byte order blue, green, red, alpha.
///
/// The buffer and its pixels stay valid and unchanged until the delegate's call that got it
/// returns, locked or not: they are read after the unlock, and one reader never unlocks.
class PixelBuffer {
 public:
  virtual ~PixelBuffer() = default;

  /// To be called before the pixels are asked for; false when they cannot be had.
  virtual bool lockBaseAddress() = 0;
  virtual void unlockBaseAddress() = 0;
  /// In pixels.
  virtual std::size_t width() const = 0;
  virtual std::size_t height() const = 0;
  /// From one row to the next: 4 × width. Rows carry no padding, for not every reader would skip
  /// it.
  virtual std::size_t bytesPerRow() const = 0;
  virtual const std::uint8_t* baseAddress() const = 0;
};

/// The red, green, blue and pulse value of one frame, each in 0 to 255.
struct FrameSample {
  float red = 0;
  float green = 0;
  float blue = 0;
  float hr = 0;

  bool operator==(const FrameSample&) const = default;
};

/// What the measurement has of one frame: its record, and its colours for whoever judges the
/// finger.
struct AveragedFrame {
  FrameSample record;
  FrameColours colours;
};

/// Names a frame that the capture discarded.
struct DroppedSample {};

/// What a video data output calls on the main thread, once per frame, with one of the four.
class SampleBufferDelegate {
 public:
  virtual ~SampleBufferDelegate() = default;

  virtual void captureOutput(PixelBuffer& didOutputSampleBuffer) = 0;
  /// A frame of which the channel means are known and no pixels, such as a row of a recorded colour
  /// series.
  virtual void captureOutput(const FrameSample& didOutputSample) = 0;
  /// A frame that was averaged before, by the same profile and settings: a recording of which many
  /// parts are measured is decoded once.
  virtual void captureOutput(const AveragedFrame& didOutputFrame) = 0;
  virtual void captureOutput(DroppedSample didDropSampleBuffer) = 0;

  /// Of a frame of so many rows it reads the first one and every so many-th after it: what the
  /// others hold does not matter, so that nobody has to make them.
  virtual std::size_t rowStep(std::size_t /*height*/) const { return 1; }
};

enum class CaptureDeviceType { dualCamera, wideAngleCamera, telephotoCamera };

// The numbers are the settings' and the log's. Settings may hold one that stands for none of these;
// devices are asked whether they support it.

/// Of exposure, white balance and focus; automatic is once, then locked.
enum class CaptureMode : int { locked = 0, automatic = 1, continuous = 2 };
/// Of torch and flash.
enum class LightMode : int { off = 0, on = 1, automatic = 2 };
enum class FocusRange : int { unrestricted = 0, near = 1, far = 2 };

/// A camera with its light. Changes need the lock for configuration.
class CaptureDevice {
 public:
  virtual ~CaptureDevice() = default;

  virtual CaptureDeviceType deviceType() const = 0;

  virtual bool lockForConfiguration() = 0;
  virtual void unlockForConfiguration() = 0;

  virtual bool isExposureModeSupported(CaptureMode mode) const = 0;
  virtual CaptureMode exposureMode() const = 0;
  virtual void setExposureMode(CaptureMode mode) = 0;

  virtual bool isWhiteBalanceModeSupported(CaptureMode mode) const = 0;
  virtual CaptureMode whiteBalanceMode() const = 0;
  virtual void setWhiteBalanceMode(CaptureMode mode) = 0;

  virtual bool isFocusModeSupported(CaptureMode mode) const = 0;
  virtual CaptureMode focusMode() const = 0;
  virtual void setFocusMode(CaptureMode mode) = 0;

  virtual FocusRange autoFocusRangeRestriction() const = 0;
  virtual void setAutoFocusRangeRestriction(FocusRange restriction) = 0;

  virtual bool isLowLightBoostSupported() const = 0;
  virtual bool automaticallyEnablesLowLightBoostWhenAvailable() const = 0;
  virtual void setAutomaticallyEnablesLowLightBoostWhenAvailable(bool enabled) = 0;

  virtual bool hasTorch() const = 0;
  virtual bool isTorchModeSupported(LightMode mode) const = 0;
  /// What the device itself says, which may come a moment after it was set.
  virtual LightMode torchMode() const = 0;
  virtual void setTorchMode(LightMode mode) = 0;
  /// 0 to 1.
  virtual float torchLevel() const = 0;
  virtual void setFlashMode(LightMode mode) = 0;

  virtual double videoZoomFactor() const = 0;
  virtual bool isAdjustingWhiteBalance() const = 0;
  virtual bool isAdjustingFocus() const = 0;
  virtual bool isAdjustingExposure() const = 0;
};

/// A camera as the input of a session.
struct CaptureDeviceInput {
  std::shared_ptr<CaptureDevice> device;
};

/// What a session delivers its frames to, and how.
struct VideoDataOutput {
  /// A running session delivers as many, whatever the camera's own rate is: rates are measured by
  /// counting frames. What takes the place of one that does not come, `FrameTicks` tells.
  static constexpr int framesPerSecond = 15;

  bool alwaysDiscardsLateVideoFrames = false;
  /// Four-character code; "BGRA" is the one there is.
  std::string pixelFormat;
  /// Called on the main queue; must outlive the session's run.
  SampleBufferDelegate* sampleBufferDelegate = nullptr;
};

enum class SessionPreset { low };

/// Leads the frames of its input to its output while it runs. Without one of the two nothing is
/// delivered, no drop either, while the time of what is filmed passes.
class CaptureSession {
 public:
  virtual ~CaptureSession() = default;

  virtual void beginConfiguration() = 0;
  virtual void setSessionPreset(SessionPreset preset) = 0;
  /// The device is the session's from here on, and in use, until the input is removed or the
  /// session ends: only then is it closed, and its light out.
  virtual void addInput(std::shared_ptr<CaptureDeviceInput> input) = 0;
  virtual void addOutput(std::shared_ptr<VideoDataOutput> output) = 0;
  virtual void commitConfiguration() = 0;

  /// From now on frames come, `VideoDataOutput::framesPerSecond` of them a second, the first tick
  /// now or, where frames come when the camera has them, with its first frame; a drop is told no
  /// later than with the next frame. Nothing when it runs already.
  virtual void startRunning() = 0;
  /// No frame comes after this. The device stays as it is, its light included: a session that is
  /// started again goes on with it.
  virtual void stopRunning() = 0;
  virtual bool isRunning() const = 0;

  virtual std::vector<std::shared_ptr<CaptureDeviceInput>> inputs() const = 0;
  virtual std::vector<std::shared_ptr<VideoDataOutput>> outputs() const = 0;
  virtual void removeInput(const std::shared_ptr<CaptureDeviceInput>& input) = 0;
  virtual void removeOutput(const std::shared_ptr<VideoDataOutput>& output) = 0;
};

enum class CameraAuthorization { notDetermined, restricted, denied, authorized, unknown };

/// The machine's cameras: which there are, whether they may be used, and sessions on them.
class Camera {
 public:
  virtual ~Camera() = default;

  virtual CameraAuthorization authorizationStatus() const = 0;
  /// Asks the user; `completion` gets the answer on the main thread.
  virtual void requestAccess(std::function<void(bool granted)> completion) = 0;

  /// Opens what the machine must open before its cameras can be asked what they are, and calls
  /// `ready` then, whether that could be done or not: at once where nothing needs opening. What is
  /// returned is the wait: whoever drops it before is not called, and a camera that nobody waits
  /// for, and that `ready` gave to no session, is closed again.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): one that opens something keeps it.
  [[nodiscard]] virtual std::shared_ptr<void> prepare(std::function<void()> ready) {
    ready();
    return nullptr;
  }

  /// The back cameras of all three types in the platform's order; nothing where the platform cannot
  /// list cameras at all.
  virtual std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() = 0;
  /// The platform's default video device, or null.
  virtual std::shared_ptr<CaptureDevice> defaultVideoDevice() = 0;
  /// Whether there is another back camera to go on to: phones have several, and the light is near
  /// to one of them. False where one is all there is, and before the first was opened.
  virtual bool hasNextBackCamera() const { return false; }
  /// What is prepared from now on is the next back camera that has a light, after the last one the
  /// first; nothing where there is none.
  virtual void useNextBackCamera() {}
  /// Null when the device cannot be opened.
  virtual std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) = 0;
  virtual std::shared_ptr<CaptureSession> makeSession() = 0;
};

}  // namespace veyla
