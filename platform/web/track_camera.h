#pragma once

#include <emscripten/val.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/capture.h"
#include "platform/web/area_scaler.h"
#include "platform/web/frame_pacer.h"
#include "platform/web/pending.h"

namespace veyla {

/// The phone's rear camera as a video track of the browser's.
///
/// What a track can do is known once it is open, so preparing opens it; it is closed when a session
/// stops, or at once when none was started on it. The frames of the track come through
/// `frameBuffer` and `takeFrame`, are scaled to the low preset and go to the running session's
/// output 15 times a second of the video's time. A browser tells neither the lens of a camera nor
/// its restriction of the focus range, and has no boost in low light.
class TrackCamera : public Camera {
 public:
  /// `page` answers:
  ///   authorization()         "prompt", "granted", "denied" or "unknown"
  ///   request(pending)        asks the user; 1 when granted
  ///   open(pending)           opens the track; answered when it is open or cannot be
  ///   close()                 closes it
  ///   hasTrack(), hasTorch()  of the open track
  ///   supports(name, mode)    whether the track takes this mode of a constraint
  ///   setting(name)           the mode in force, a text, or a number; null where unknown
  ///   apply(constraints)      an object of all constraints set so far
  ///   play(), pause()         whether frames are wanted
  TrackCamera(emscripten::val page, Pending& pending);

  CameraAuthorization authorizationStatus() const override;
  void requestAccess(std::function<void(bool granted)> completion) override;
  void prepare(const std::function<void()>& ready) override;
  std::optional<std::vector<std::shared_ptr<CaptureDevice>>> discoverBackDevices() override;
  std::shared_ptr<CaptureDevice> defaultVideoDevice() override;
  std::shared_ptr<CaptureDeviceInput> makeDeviceInput(
      const std::shared_ptr<CaptureDevice>& device) override;
  std::shared_ptr<CaptureSession> makeSession() override;

  /// Whoever waits for the camera does not want it any more.
  void abandonPreparing();

  /// Room for a frame's pixels, red, green, blue and alpha, to be filled before `takeFrame`.
  emscripten::val frameBuffer(int width, int height);
  /// The pixels in the buffer were taken at `time`.
  void takeFrame(double time);

 private:
  class Device;
  class Session;

  void run(Session* session);
  void closeUnlessRunning();

  emscripten::val page_;
  Pending& pending_;
  std::optional<int> preparing_;
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
