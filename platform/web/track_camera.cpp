#include "platform/web/track_camera.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace veyla {

namespace {

/// The constraints' names of locked, automatic and continuous.
const std::array<std::string, 3> modeNames{"manual", "single-shot", "continuous"};

class HeldPixels : public PixelBuffer {
 public:
  explicit HeldPixels(const std::uint8_t* pixels) : pixels_(pixels) {}

  bool lockBaseAddress() override { return true; }
  void unlockBaseAddress() override {}
  std::size_t width() const override { return AreaScaler::width; }
  std::size_t height() const override { return AreaScaler::height; }
  std::size_t bytesPerRow() const override { return AreaScaler::width * AreaScaler::bytesPerPixel; }
  const std::uint8_t* baseAddress() const override { return pixels_; }

 private:
  const std::uint8_t* pixels_;
};

}  // namespace

/// Changes reach the track when the lock is given back.
class TrackCamera::Device : public CaptureDevice {
 public:
  explicit Device(VideoTrack& track) : track_(track) {}

  CaptureDeviceType deviceType() const override { return CaptureDeviceType::wideAngleCamera; }

  bool lockForConfiguration() override { return true; }
  void unlockForConfiguration() override {
    if (std::exchange(modesChanged_, false)) track_.setModes(modes_);
    if (std::exchange(torchChanged_, false)) track_.setTorch(torchWanted_);
  }

  bool isExposureModeSupported(CaptureMode mode) const override {
    return supports("exposureMode", mode);
  }
  CaptureMode exposureMode() const override { return modeOf("exposureMode"); }
  void setExposureMode(CaptureMode mode) override { setMode("exposureMode", mode); }

  bool isWhiteBalanceModeSupported(CaptureMode mode) const override {
    return supports("whiteBalanceMode", mode);
  }
  CaptureMode whiteBalanceMode() const override { return modeOf("whiteBalanceMode"); }
  void setWhiteBalanceMode(CaptureMode mode) override { setMode("whiteBalanceMode", mode); }

  bool isFocusModeSupported(CaptureMode mode) const override { return supports("focusMode", mode); }
  CaptureMode focusMode() const override { return modeOf("focusMode"); }
  void setFocusMode(CaptureMode mode) override { setMode("focusMode", mode); }

  FocusRange autoFocusRangeRestriction() const override { return FocusRange::unrestricted; }
  void setAutoFocusRangeRestriction(FocusRange) override {}

  bool isLowLightBoostSupported() const override { return false; }
  bool automaticallyEnablesLowLightBoostWhenAvailable() const override { return false; }
  void setAutomaticallyEnablesLowLightBoostWhenAvailable(bool) override {}

  bool hasTorch() const override { return track_.hasTorch(); }
  bool isTorchModeSupported(LightMode mode) const override {
    return hasTorch() && (mode == LightMode::off || mode == LightMode::on);
  }
  LightMode torchMode() const override {
    return track_.isTorchLit() ? LightMode::on : LightMode::off;
  }
  void setTorchMode(LightMode mode) override {
    const bool wanted = mode != LightMode::off;
    if (std::exchange(torchWanted_, wanted) != wanted) torchChanged_ = true;
  }
  float torchLevel() const override { return track_.isTorchLit() ? 1.0F : 0.0F; }
  // A video track has a torch and no flash.
  void setFlashMode(LightMode) override {}

  double videoZoomFactor() const override { return track_.zoom(); }
  // Not told by browsers.
  bool isAdjustingWhiteBalance() const override { return false; }
  bool isAdjustingFocus() const override { return false; }
  bool isAdjustingExposure() const override { return false; }

 private:
  bool supports(const char* name, CaptureMode mode) const {
    const auto index = static_cast<std::size_t>(mode);
    return index < modeNames.size() && track_.supports(name, modeNames[index]);
  }

  CaptureMode modeOf(const char* name) const {
    const auto found = std::find(modeNames.begin(), modeNames.end(), track_.mode(name));
    if (found == modeNames.end()) return CaptureMode::locked;
    return static_cast<CaptureMode>(found - modeNames.begin());
  }

  void setMode(const char* name, CaptureMode mode) {
    modes_[name] = modeNames.at(static_cast<std::size_t>(mode));
    modesChanged_ = true;
  }

  VideoTrack& track_;
  std::map<std::string, std::string> modes_;
  bool modesChanged_ = false;
  bool torchWanted_ = false;
  bool torchChanged_ = false;
};

class TrackCamera::Session final : public CaptureSession {
 public:
  explicit Session(TrackCamera& camera) : camera_(camera) {}
  ~Session() override {
    stopRunning();
    while (!inputs_.empty()) removeInput(inputs_.back());
  }

  void beginConfiguration() override {}
  // The track is opened for the one preset there is.
  void setSessionPreset(SessionPreset) override {}
  void addInput(std::shared_ptr<CaptureDeviceInput> input) override {
    inputs_.push_back(std::move(input));
    ++camera_.inputs_;
  }
  void addOutput(std::shared_ptr<VideoDataOutput> output) override {
    outputs_.push_back(std::move(output));
  }
  void commitConfiguration() override {}

  void startRunning() override {
    if (!isRunning()) camera_.run(this);
  }
  void stopRunning() override {
    if (isRunning()) camera_.run(nullptr);
  }
  bool isRunning() const override { return camera_.running_ == this; }

  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs() const override { return inputs_; }
  std::vector<std::shared_ptr<VideoDataOutput>> outputs() const override { return outputs_; }
  void removeInput(const std::shared_ptr<CaptureDeviceInput>& input) override {
    camera_.inputs_ -= static_cast<int>(std::erase(inputs_, input));
    camera_.closeUnlessNeeded();
  }
  void removeOutput(const std::shared_ptr<VideoDataOutput>& output) override {
    std::erase(outputs_, output);
  }

 private:
  TrackCamera& camera_;
  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs_;
  std::vector<std::shared_ptr<VideoDataOutput>> outputs_;
};

/// Somebody's waiting for the track, for as long as this lives.
class TrackCamera::Wait {
 public:
  Wait(TrackCamera& camera, std::function<void()> ready)
      : camera_(camera), number_(camera.pending_.keep([this, ready = std::move(ready)](int) {
          // What it leads to may end this.
          TrackCamera& opened = camera_;
          answered_ = true;
          if (!opened.device_ && opened.track_.isOpen()) {
            opened.device_ = std::make_shared<Device>(opened.track_);
          }
          ready();
          --opened.waiting_;
          opened.closeUnlessNeeded();
        })) {
    ++camera_.waiting_;
    camera_.track_.open(number_);
  }
  ~Wait() {
    if (answered_) return;
    camera_.pending_.forget(number_);
    --camera_.waiting_;
    camera_.closeUnlessNeeded();
  }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

 private:
  TrackCamera& camera_;
  bool answered_ = false;
  int number_;
};

CameraAuthorization TrackCamera::authorizationStatus() const {
  const std::string state = track_.authorization();
  if (state == "granted") return CameraAuthorization::authorized;
  if (state == "denied") return CameraAuthorization::denied;
  if (state == "prompt") return CameraAuthorization::notDetermined;
  return CameraAuthorization::unknown;
}

void TrackCamera::requestAccess(std::function<void(bool granted)> completion) {
  track_.request(pending_.keep([completion = std::move(completion)](int answer) {
    if (completion) completion(answer != 0);
  }));
}

std::shared_ptr<void> TrackCamera::prepare(std::function<void()> ready) {
  return std::make_shared<Wait>(*this, std::move(ready));
}

std::optional<std::vector<std::shared_ptr<CaptureDevice>>> TrackCamera::discoverBackDevices() {
  std::vector<std::shared_ptr<CaptureDevice>> devices;
  if (device_) devices.push_back(device_);
  return devices;
}

std::shared_ptr<CaptureDevice> TrackCamera::defaultVideoDevice() { return device_; }

std::shared_ptr<CaptureDeviceInput> TrackCamera::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  return std::make_shared<CaptureDeviceInput>(CaptureDeviceInput{device});
}

std::shared_ptr<CaptureSession> TrackCamera::makeSession() {
  return std::make_shared<Session>(*this);
}

std::span<std::uint8_t> TrackCamera::frameBuffer(int width, int height) {
  width_ = static_cast<std::size_t>(width);
  height_ = static_cast<std::size_t>(height);
  taken_.resize(width_ * height_ * AreaScaler::bytesPerPixel);
  return taken_;
}

void TrackCamera::takeFrame(double time) {
  if (taken_.empty()) return;
  const auto due = pacer_.frameAt(time);
  for (int i = 0; i < due.delivered + due.dropped; ++i) {
    // A frame can end the measurement.
    if (!running_ || running_->inputs().empty() || running_->outputs().empty()) return;
    SampleBufferDelegate* delegate = running_->outputs().front()->sampleBufferDelegate;
    if (!delegate) return;
    if (i < due.delivered) {
      HeldPixels pixels(held_.data());
      delegate->captureOutput(pixels);
    } else {
      delegate->captureOutput(DroppedSample{});
    }
  }
  scaler_.scale(taken_, width_, height_, held_);
}

void TrackCamera::run(Session* session) {
  running_ = session;
  if (running_) {
    pacer_.restart();
    track_.play();
  } else {
    track_.pause();
  }
}

void TrackCamera::closeUnlessNeeded() {
  if (waiting_ > 0 || inputs_ > 0) return;
  device_.reset();
  track_.close();
}

}  // namespace veyla
