#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/capture.h"
#include "platform/web/area_scaler.h"
#include "platform/web/frame_pacer.h"
#include "platform/web/pending.h"
#include "platform/web/video_track.h"

namespace veyla {

/// The phone's rear camera as a video track of the browser's.
///
/// What a track can do is known once it is open, so preparing opens it. It stays open while
/// somebody waits for it or a session has it as its input. Its frames come through `frameBuffer`
/// and `takeFrame`, are scaled to the low preset and go to the running session's output. A browser
/// tells neither the lens of a camera nor its restriction of the focus range, and has no boost in
/// low light.
class TrackCamera : public Camera {
 public:
  /// Both must outlive the camera and its sessions.
  TrackCamera(VideoTrack& track, Pending& pending) : track_(track), pending_(pending) {}

  CameraAuthorization authorizationStatus() const override;
  void requestAccess(std::function<void(bool granted)> completion) override;
  std::shared_ptr<void> prepare(std::function<void()> ready) override;
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() override;
  std::shared_ptr<CaptureDevice> defaultVideoDevice() override;
  bool hasNextBackCamera() const override { return track_.hasNext(); }
  void useNextBackCamera() override { track_.useNext(); }
  std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::shared_ptr<CaptureSession> makeSession() override;

  /// Room for a frame's pixels, red, green, blue and alpha, to be filled before `takeFrame`.
  std::span<std::uint8_t> frameBuffer(int width, int height);
  /// The pixels in the buffer were taken at `time`.
  void takeFrame(double time);

 private:
  class Device;
  class Session;
  class Wait;

  void run(Session* session);
  void closeUnlessNeeded();

  VideoTrack& track_;
  Pending& pending_;
  int waiting_ = 0;
  int inputs_ = 0;
  std::shared_ptr<Device> device_;
  Session* running_ = nullptr;

  FramePacer pacer_;
  AreaScaler scaler_;
  std::size_t width_ = 0;
  std::size_t height_ = 0;
  std::vector<std::uint8_t> taken_;
  std::array<std::uint8_t, AreaScaler::width * AreaScaler::height * AreaScaler::bytesPerPixel>
      held_{};
};

}  // namespace veyla
