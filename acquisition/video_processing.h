#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "acquisition/frame_averaging.h"
#include "acquisition/video_delegate.h"
#include "platform/capture.h"
#include "platform/date.h"

namespace veyla {

/// Turns the rear camera, with a fingertip over lens and light, into frame records for a delegate.
///
/// Starts and stops the capture, configures the camera from the camera settings, averages each
/// frame and counts delivered and dropped ones. The torch is switched on by the delegate through
/// `videoDevice` and switched off here, at the stop.
class VideoProcessing : public SampleBufferDelegate {
 public:
  /// What the user is told where the light stays dark.
  static constexpr const char* noTorch = "Torch not found or not supported by this device.";

  /// False when there is no camera or no torch, which the user is told by an alert. A device that
  /// cannot be opened ends the process.
  bool startRecording();
  void stopRecording();
  void pauseRecording();
  void continueRecording();
  bool isRecording() const;

  /// The telephoto camera where there is one, else the wide-angle one; null without either.
  std::shared_ptr<CaptureDevice> backFacingCamera() const;

  /// Writes the camera's state to the log, on every fifteenth frame.
  void avCaptureSettings();

  void captureOutput(PixelBuffer& didOutputSampleBuffer) override;
  void captureOutput(const FrameSample& didOutputSample) override;
  void captureOutput(const AveragedFrame& didOutputFrame) override;
  void captureOutput(DroppedSample didDropSampleBuffer) override;
  std::size_t rowStep(std::size_t height) const override {
    return isIphone4_ ? 1 : GridAverager::rowStep(height);
  }

  /// Whether every pixel is averaged rather than grid cells; set at the start from the profile.
  bool isIphone4() const { return isIphone4_; }
  void setIsIphone4(bool isIphone4) { isIphone4_ = isIphone4; }
  bool isIphone6() const { return isIphone6_; }
  void setIsIphone6(bool isIphone6) { isIphone6_ = isIphone6; }

  /// Frames delivered in this recording, as counted by the delegate.
  std::int32_t counter() const { return counter_; }
  void setCounter(std::int32_t counter) { counter_ = counter; }
  /// Frames that the capture discarded in this recording.
  std::int32_t framedrops() const { return framedrops_; }
  void setFramedrops(std::int32_t framedrops) { framedrops_ = framedrops; }

  /// When the session was last started and stopped; nothing before the first time.
  std::optional<Date> before() const { return before_; }
  void setBefore(std::optional<Date> before) { before_ = before; }
  std::optional<Date> after() const { return after_; }
  void setAfter(std::optional<Date> after) { after_ = after; }

  /// Not owned; null for none.
  VideoDelegate* delegate() const { return delegate_; }
  void setDelegate(VideoDelegate* delegate) { delegate_ = delegate; }

  const std::shared_ptr<CaptureSession>& captureSession() const { return captureSession_; }
  void setCaptureSession(std::shared_ptr<CaptureSession> session) {
    captureSession_ = std::move(session);
  }
  const std::shared_ptr<CaptureDevice>& videoDevice() const { return videoDevice_; }
  void setVideoDevice(std::shared_ptr<CaptureDevice> device) { videoDevice_ = std::move(device); }
  const std::shared_ptr<VideoDataOutput>& videoDataOutput() const { return videoDataOutput_; }
  void setVideoDataOutput(std::shared_ptr<VideoDataOutput> output) {
    videoDataOutput_ = std::move(output);
  }

 private:
  void applyCameraSettings();

  bool isIphone4_ = false;
  bool isIphone6_ = false;
  std::int32_t counter_ = 0;
  std::int32_t framedrops_ = 0;
  std::optional<Date> before_;
  std::optional<Date> after_;
  double startedAt_ = 0;
  VideoDelegate* delegate_ = nullptr;
  std::shared_ptr<CaptureSession> captureSession_;
  std::shared_ptr<CaptureDevice> videoDevice_;
  std::shared_ptr<VideoDataOutput> videoDataOutput_;

  std::vector<int> cells_;
  GridAverager gridAverager_;
};

}  // namespace veyla
