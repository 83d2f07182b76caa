#include "acquisition/video_processing.h"

#include <cstdio>
#include <cstdlib>

#include "acquisition/settings.h"
#include "platform/platform.h"
#include "shell/alerts.h"

namespace veyla {

namespace {

constexpr int dumpInterval = 15;

[[noreturn]] void assertionFailure(const char* assertion) {
  logLine("assertion failed: %s", assertion);
  std::fprintf(stderr, "assertion failed: %s\n", assertion);
  std::abort();
}

const char* yesOrNo(bool answer) { return answer ? "YES" : "NO"; }

template <class Mode>
int numberOf(Mode mode) {
  return static_cast<int>(mode);
}

template <class Mode>
Mode cameraSetting(const char* key) {
  return static_cast<Mode>(Utils::getCameraSettings(key).intValue());
}

/// One part of the dump: which modes the device supports, under the names of the modes 0 to 2.
template <class Mode>
void logSupportedModes(const char* const (&names)[3], const CaptureDevice& device,
                       bool (CaptureDevice::*isSupported)(Mode) const) {
  logLine("\tsupported:");
  for (int mode = 0; mode < 3; ++mode) {
    logLine("\t\t%s: %s", names[mode], yesOrNo((device.*isSupported)(static_cast<Mode>(mode))));
  }
}

}  // namespace

bool VideoProcessing::startRecording() {
  counter_ = 0;
  framedrops_ = 0;

  captureSession_ = services().camera.makeSession();
  captureSession_->beginConfiguration();
  captureSession_->setSessionPreset(SessionPreset::low);

  videoDevice_ = backFacingCamera();
  if (!videoDevice_) {
    Utils::showOkAlert("", "Camera not found");
    return false;
  }
  if (!videoDevice_->hasTorch()) {
    Utils::showOkAlert("", noTorch);
    return false;
  }

  videoDevice_->lockForConfiguration();
  const std::string profile = Utils::platformString();
  isIphone4_ = profile == wholeFrameProfile;
  isIphone6_ = profile == "iphone6";
  applyCameraSettings();
  videoDevice_->unlockForConfiguration();

  auto input = services().camera.makeDeviceInput(videoDevice_);
  if (!input) assertionFailure("error == nil");
  captureSession_->addInput(std::move(input));

  videoDataOutput_ = std::make_shared<VideoDataOutput>();
  videoDataOutput_->alwaysDiscardsLateVideoFrames = true;
  videoDataOutput_->pixelFormat = "BGRA";
  videoDataOutput_->sampleBufferDelegate = this;
  captureSession_->addOutput(videoDataOutput_);
  captureSession_->commitConfiguration();

  before_ = services().clock.now();
  startedAt_ = services().mainQueue.elapsed();
  captureSession_->startRunning();
  return true;
}

void VideoProcessing::applyCameraSettings() {
  CaptureDevice& device = *videoDevice_;

  const auto exposureMode = cameraSetting<CaptureMode>("exposureMode");
  if (device.isExposureModeSupported(exposureMode)) {
    logLine("setting exposure: %i", numberOf(exposureMode));
    device.setExposureMode(exposureMode);
  } else {
    // Readers of old logs look for this wording.
    logLine("Device does not support focusMode: %i", numberOf(exposureMode));
  }

  const auto whiteBalanceMode = cameraSetting<CaptureMode>("whiteBalanceMode");
  if (device.isWhiteBalanceModeSupported(whiteBalanceMode)) {
    logLine("setting whitebalance: %i", numberOf(whiteBalanceMode));
    device.setWhiteBalanceMode(whiteBalanceMode);
  } else {
    logLine("Device does not support whitebalance: %i", numberOf(whiteBalanceMode));
  }

  const auto focusMode = cameraSetting<CaptureMode>("focusMode");
  if (device.isFocusModeSupported(focusMode)) {
    logLine("setting focusMode: %i", numberOf(focusMode));
    device.setFocusMode(focusMode);
  } else {
    logLine("Device does not support focusMode: %i", numberOf(focusMode));
  }

  // A device that restricts its focus range already takes another restriction; whether it could
  // take one at all is not asked. The value travels under the flash's key.
  const auto rangeRestriction = cameraSetting<FocusRange>("flashMode");
  if (device.autoFocusRangeRestriction() != FocusRange::unrestricted) {
    logLine("setting autoFocusRangeRestriction: %i", numberOf(rangeRestriction));
    device.setAutoFocusRangeRestriction(rangeRestriction);
  } else {
    logLine("Device does not support autoFocusRangeRestriction: %i", numberOf(rangeRestriction));
  }

  const bool lowLightBoost =
      Utils::getCameraSettings("automaticallyEnablesLowLightBoostWhenAvailable").boolValue();
  if (device.isLowLightBoostSupported()) {
    logLine("setting automaticallyEnablesLowLightBoostWhenAvailable=%i", lowLightBoost);
    device.setAutomaticallyEnablesLowLightBoostWhenAvailable(lowLightBoost);
  } else {
    logLine("Device does not support automaticallyEnablesLowLightBoostWhenAvailable: %i",
            lowLightBoost);
  }
}

void VideoProcessing::stopRecording() {
  if (videoDevice_) {
    videoDevice_->lockForConfiguration();
    videoDevice_->setTorchMode(LightMode::off);
    videoDevice_->unlockForConfiguration();
  }
  after_ = services().clock.now();

  // Of the frames' own time: a recording's seconds are measured in milliseconds of the wall's.
  const double seconds = before_ ? services().mainQueue.elapsed() - startedAt_ : 0;
  const double fps = counter_ == 0 ? 0 : counter_ / seconds;
  logLine("seconds: %f, frames %i, framedrops %i, fps: %f", seconds, counter_, framedrops_, fps);

  if (!captureSession_) return;
  captureSession_->stopRunning();
  if (const auto inputs = captureSession_->inputs(); !inputs.empty()) {
    captureSession_->removeInput(inputs.front());
  }
  if (const auto outputs = captureSession_->outputs(); !outputs.empty()) {
    captureSession_->removeOutput(outputs.front());
  }
  captureSession_ = nullptr;
}

void VideoProcessing::pauseRecording() {
  if (captureSession_) captureSession_->stopRunning();
}

void VideoProcessing::continueRecording() {
  if (captureSession_) captureSession_->startRunning();
}

bool VideoProcessing::isRecording() const {
  return captureSession_ && captureSession_->isRunning();
}

std::shared_ptr<CaptureDevice> VideoProcessing::backFacingCamera() const {
  const auto devices = services().camera.discoverBackDevices();
  if (!devices) return services().camera.defaultVideoDevice();

  std::shared_ptr<CaptureDevice> wideAngle;
  for (const auto& device : *devices) {
    if (device->deviceType() == CaptureDeviceType::telephotoCamera) return device;
    if (device->deviceType() == CaptureDeviceType::wideAngleCamera) wideAngle = device;
  }
  return wideAngle;
}

void VideoProcessing::captureOutput(PixelBuffer& didOutputSampleBuffer) {
  PixelBuffer& buffer = didOutputSampleBuffer;
  const bool isLocked = buffer.lockBaseAddress();
  if (isIphone4_ && !isLocked) return;
  const FramePixels pixels{buffer.baseAddress(), buffer.width(), buffer.height(),
                           buffer.bytesPerRow()};
  cells_.clear();
  if (!isIphone4_) {
    // A whole frame's buffer stays locked: it is released after the callback.
    buffer.unlockBaseAddress();
    Utils::appendCells(Utils::getSpo2Settings("grids"), cells_);
  }
  captureOutput(averagedFrame(pixels, isIphone4_, cells_, gridAverager_));
}

void VideoProcessing::captureOutput(const FrameSample& didOutputSample) {
  captureOutput(averagedFrame(didOutputSample, isIphone4_));
}

void VideoProcessing::captureOutput(const AveragedFrame& didOutputFrame) {
  if (!delegate_) return;
  const FrameSample& record = didOutputFrame.record;
  delegate_->frameColours(didOutputFrame.colours);
  delegate_->updateMeasurementsWithRed(record.red, record.green, record.blue, record.hr);
}

void VideoProcessing::captureOutput(DroppedSample /*didDropSampleBuffer*/) {
  ++framedrops_;
  logLine("frame dropped: %i, counter: %i", framedrops_, counter_);
  if (delegate_) delegate_->frameDropped();
}

void VideoProcessing::avCaptureSettings() {
  if (counter_ % dumpInterval != 0 || !videoDevice_) return;
  static constexpr const char* lockAutoContinuous[3] = {"locked", "auto", "continuous"};
  static constexpr const char* offOnAuto[3] = {"off", "on", "auto"};
  CaptureDevice& device = *videoDevice_;

  device.lockForConfiguration();
  logLine("-------------CAN CHANGE---");
  logLine("exposureMode: %ld", long{numberOf(device.exposureMode())});
  logSupportedModes(lockAutoContinuous, device, &CaptureDevice::isExposureModeSupported);
  logLine("torchMode: %ld", long{numberOf(device.torchMode())});
  logSupportedModes(offOnAuto, device, &CaptureDevice::isTorchModeSupported);
  logLine("focusMode: %ld", long{numberOf(device.focusMode())});
  logSupportedModes(lockAutoContinuous, device, &CaptureDevice::isFocusModeSupported);
  logLine("whiteBalanceMode: %ld", long{numberOf(device.whiteBalanceMode())});
  logSupportedModes(lockAutoContinuous, device, &CaptureDevice::isWhiteBalanceModeSupported);
  logLine("videoZoomFactor: %f", device.videoZoomFactor());
  logLine("autoFocusRangeRestriction: %ld", long{numberOf(device.autoFocusRangeRestriction())});
  logLine("automaticallyEnablesLowLightBoostWhenAvailable: %i",
          device.automaticallyEnablesLowLightBoostWhenAvailable());
  logLine("\tsupported: %s", yesOrNo(device.isLowLightBoostSupported()));
  logLine("-------------CAN NOT CHANGE---");
  logLine("isAdjustingWhiteBalance: %d", device.isAdjustingWhiteBalance());
  logLine("isAdjustingFocus: %d", device.isAdjustingFocus());
  logLine("isAdjustingExposure: %d", device.isAdjustingExposure());
  logLine("torchLevel: %f", static_cast<double>(device.torchLevel()));
  logLine("-----------------------------------------");
  device.unlockForConfiguration();
}

}  // namespace veyla
