#include "platform/web/track_camera.h"

#include <string>
#include <utility>

namespace veyla {

using emscripten::val;

namespace {

/// The constraints' names of the modes 0 to 2: locked, auto (once) and continuous.
constexpr std::array<const char*, 3> modeNames{"manual", "single-shot", "continuous"};

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

/// Changes reach the track together, when the lock is given back: each replaces all constraints
/// that were set before.
class TrackCamera::Device : public CaptureDevice {
 public:
  explicit Device(val page) : page_(std::move(page)) {}

  CaptureDeviceType deviceType() const override { return CaptureDeviceType::wideAngleCamera; }

  bool lockForConfiguration() override { return true; }
  void unlockForConfiguration() override {
    if (std::exchange(changed_, false)) page_.call<void>("apply", constraints_);
  }

  bool isExposureModeSupported(CaptureMode mode) const override {
    return supports("exposureMode", mode);
  }
  CaptureMode exposureMode() const override { return mode("exposureMode"); }
  void setExposureMode(CaptureMode mode) override { setMode("exposureMode", mode); }

  bool isWhiteBalanceModeSupported(CaptureMode mode) const override {
    return supports("whiteBalanceMode", mode);
  }
  CaptureMode whiteBalanceMode() const override { return mode("whiteBalanceMode"); }
  void setWhiteBalanceMode(CaptureMode mode) override { setMode("whiteBalanceMode", mode); }

  bool isFocusModeSupported(CaptureMode mode) const override { return supports("focusMode", mode); }
  CaptureMode focusMode() const override { return mode("focusMode"); }
  void setFocusMode(CaptureMode mode) override { setMode("focusMode", mode); }

  FocusRange autoFocusRangeRestriction() const override { return FocusRange::unrestricted; }
  void setAutoFocusRangeRestriction(FocusRange) override {}

  bool isLowLightBoostSupported() const override { return false; }
  bool automaticallyEnablesLowLightBoostWhenAvailable() const override { return false; }
  void setAutomaticallyEnablesLowLightBoostWhenAvailable(bool) override {}

  bool hasTorch() const override { return page_.call<bool>("hasTorch"); }
  bool isTorchModeSupported(LightMode mode) const override {
    return hasTorch() && (mode == LightMode::off || mode == LightMode::on);
  }
  LightMode torchMode() const override {
    return page_.call<bool>("isTorchRefused") ? LightMode::off : torchMode_;
  }
  void setTorchMode(LightMode mode) override {
    if (mode == torchMode_) return;
    torchMode_ = mode;
    set("torch", val(mode != LightMode::off));
  }
  float torchLevel() const override { return torchMode() == LightMode::off ? 0.0F : 1.0F; }
  // A video track has a torch and no flash.
  void setFlashMode(LightMode) override {}

  double videoZoomFactor() const override {
    const val zoom = page_.call<val>("setting", std::string("zoom"));
    return zoom.isNumber() ? zoom.as<double>() : 1;
  }
  // Not told by browsers.
  bool isAdjustingWhiteBalance() const override { return false; }
  bool isAdjustingFocus() const override { return false; }
  bool isAdjustingExposure() const override { return false; }

 private:
  bool supports(const char* constraint, CaptureMode mode) const {
    const auto index = static_cast<std::size_t>(mode);
    if (index >= modeNames.size()) return false;
    return page_.call<bool>("supports", std::string(constraint), std::string(modeNames[index]));
  }

  CaptureMode mode(const char* constraint) const {
    const val name = page_.call<val>("setting", std::string(constraint));
    for (std::size_t i = 0; name.isString() && i < modeNames.size(); ++i) {
      if (name.as<std::string>() == modeNames[i]) return static_cast<CaptureMode>(i);
    }
    return CaptureMode::locked;
  }

  void setMode(const char* constraint, CaptureMode mode) {
    set(constraint, val(std::string(modeNames.at(static_cast<std::size_t>(mode)))));
  }

  void set(const char* constraint, const val& value) {
    constraints_.set(constraint, value);
    changed_ = true;
  }

  val page_;
  val constraints_ = val::object();
  bool changed_ = false;
  LightMode torchMode_ = LightMode::off;
};

class TrackCamera::Session : public CaptureSession {
 public:
  explicit Session(TrackCamera& camera) : camera_(camera) {}
  ~Session() override { stopRunning(); }

  void beginConfiguration() override {}
  // The track is opened for the one preset there is.
  void setSessionPreset(SessionPreset) override {}
  void addInput(std::shared_ptr<CaptureDeviceInput> input) override {
    inputs_.push_back(std::move(input));
  }
  void addOutput(std::shared_ptr<VideoDataOutput> output) override {
    outputs_.push_back(std::move(output));
  }
  void commitConfiguration() override {}

  void startRunning() override { camera_.run(this); }
  void stopRunning() override {
    if (isRunning()) camera_.run(nullptr);
  }
  bool isRunning() const override { return camera_.running_ == this; }

  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs() const override { return inputs_; }
  std::vector<std::shared_ptr<VideoDataOutput>> outputs() const override { return outputs_; }
  void removeInput(const std::shared_ptr<CaptureDeviceInput>& input) override {
    std::erase(inputs_, input);
  }
  void removeOutput(const std::shared_ptr<VideoDataOutput>& output) override {
    std::erase(outputs_, output);
  }

 private:
  TrackCamera& camera_;
  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs_;
  std::vector<std::shared_ptr<VideoDataOutput>> outputs_;
};

TrackCamera::TrackCamera(val page, Pending& pending) : page_(std::move(page)), pending_(pending) {}

CameraAuthorization TrackCamera::authorizationStatus() const {
  const auto state = page_.call<std::string>("authorization");
  if (state == "granted") return CameraAuthorization::authorized;
  if (state == "denied") return CameraAuthorization::denied;
  if (state == "prompt") return CameraAuthorization::notDetermined;
  return CameraAuthorization::unknown;
}

void TrackCamera::requestAccess(std::function<void(bool granted)> completion) {
  page_.call<void>("request", pending_.keep([completion = std::move(completion)](int answer) {
    if (completion) completion(answer != 0);
  }));
}

void TrackCamera::prepare(const std::function<void()>& ready) {
  // One START opens the camera, however often it is tapped until then.
  if (preparing_) return;
  preparing_ = pending_.keep([this, ready](int) {
    preparing_.reset();
    device_ = page_.call<bool>("hasTrack") ? std::make_shared<Device>(page_) : nullptr;
    if (ready) ready();
    closeUnlessRunning();
  });
  page_.call<void>("open", *preparing_);
}

void TrackCamera::abandonPreparing() {
  if (!preparing_) return;
  pending_.forget(*preparing_);
  preparing_.reset();
  page_.call<void>("close");
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

val TrackCamera::frameBuffer(int width, int height) {
  width_ = static_cast<std::size_t>(width);
  height_ = static_cast<std::size_t>(height);
  taken_.resize(width_ * height_ * AreaScaler::bytesPerPixel);
  return val(emscripten::typed_memory_view(taken_.size(), taken_.data()));
}

void TrackCamera::takeFrame(double time) {
  if (taken_.empty()) return;
  const auto due = pacer_.frameAt(time);
  for (int i = 0; i < due.delivered + due.dropped; ++i) {
    // A frame can end the measurement.
    if (!running_ || running_->outputs().empty()) return;
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
    page_.call<void>("play");
  } else {
    page_.call<void>("pause");
    page_.call<void>("close");
  }
}

void TrackCamera::closeUnlessRunning() {
  if (!running_) page_.call<void>("close");
}

}  // namespace veyla
