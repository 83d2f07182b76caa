#include "measuring/main_view_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "acquisition/settings.h"
#include "analysis/vector_utils.h"
#include "history/history_store.h"
#include "measuring/camera_permission.h"
#include "measuring/display_settings.h"
#include "measuring/hk_utils.h"
#include "measuring/measuring_screen.h"
#include "measuring/notification_center.h"
#include "platform/format.h"
#include "platform/platform.h"
#include "shell/alerts.h"
#include "shell/launch_history.h"
#include "shell/rating_prompt.h"

namespace veyla {

namespace {

using namespace MeasuringScreen;

constexpr std::size_t medianWindow = 11;
constexpr float lowestAcceptedSpo2 = 93.0F;
constexpr std::uint64_t lowSignalLimit = 60;
// Failures before these many leave the live value standing. The SpO2 limit is one higher.
constexpr std::int32_t heartrateFailuresBeforeBlank = 29;
constexpr std::int32_t spo2FailuresBeforeBlank = 30;
constexpr std::size_t framesBeforeChart = 30;
constexpr std::int32_t countdownSeconds = 2;
// Lets the button's tap be seen before the work begins.
constexpr double buttonDelay = 0.020;
constexpr double releaseNotesDelay = 0.5;

constexpr std::string_view runningFont = "HelveticaNeue-Light";
constexpr std::string_view finalFont = "HelveticaNeue-Medium";
constexpr const char* noValue = "--";
constexpr const char* startInstruction = "Tap START to begin - don't cover camera";
constexpr const char* coverInstruction = "Cover flash and camera lens with finger...";

Display& display() { return services().measuringDisplay; }

/// The element comes by this animation, or goes by it.
void enter(Element element, std::string_view animation, std::function<void()> then = {}) {
  display().animate(element, animation, true, std::move(then));
}
void leave(Element element, std::string_view animation, std::function<void()> then = {}) {
  display().animate(element, animation, false, std::move(then));
}

void showGauge(Element panel, bool shown) {
  display().animate(panel, shown ? "zoomIn" : "zoomOut", shown, {});
}

std::string wholeNumber(float value) { return formatText("%.0f", static_cast<double>(value)); }

std::string listed(const std::vector<float>& values) {
  std::string text = "(";
  for (const float value : values) {
    if (text.size() > 1) text += ", ";
    text += formatText("%g", static_cast<double>(value));
  }
  return text + ")";
}

/// The signed remainder; by 0 it is the number itself, so that a skip of 0 selects no frame.
std::int32_t remainder(std::int32_t number, std::int32_t divisor) {
  return divisor == 0 ? number : number % divisor;
}

float medianOfLast(const std::vector<float>& values, std::size_t count) {
  return static_cast<float>(VectorUtils::medianOf(VectorUtils::lastObjectsOf(values, count)));
}

float progressOf(std::size_t accepted, int needed) {
  return std::min(static_cast<float>(accepted) / static_cast<float>(needed), 1.0F);
}

Alert modalAlert(AlertKind kind, const char* title, const char* subtitle) {
  Alert alert;
  alert.kind = kind;
  alert.title = title;
  alert.subtitle = subtitle;
  alert.closeButton = "Done";
  alert.closesOnOutsideTap = true;
  return alert;
}

}  // namespace

MainViewController& MainViewController::instance() {
  return Platform::current().shared<MainViewController>();
}

MainViewController::~MainViewController() {
  if (videoProcessing_) NotificationCenter::instance().remove(this);
}

// The screen's life.

void MainViewController::viewDidLoad() {
  labelValuesFontSize_ = Utils::isIphone4() || Utils::isIphone4s() ? 20.0F : 25.0F;
  runHeartrate_ = true;
  runSpo2_ = true;
  isRunning_ = false;

  Utils::gaugeSettings(gaugeHR_, 50, 100, 10);
  Utils::gaugeSettings(gaugeSpo2_, 93, 100, 7);
  Utils::circleProgressBarSettings(circleprogressHeartrate_);
  Utils::circleProgressBarSettings(circleprogressSpo2_);
  const auto redraw = [](Element element) {
    return [element] { display().setNeedsDisplay(element); };
  };
  gaugeHR_.needsDisplay = redraw(MeasuringScreen::gaugeHR);
  gaugeSpo2_.needsDisplay = redraw(MeasuringScreen::gaugeSpo2);
  circleprogressHeartrate_.needsDisplay = redraw(MeasuringScreen::circleprogressHeartrate);
  circleprogressSpo2_.needsDisplay = redraw(MeasuringScreen::circleprogressSpo2);
  chartFourierView_.needsDisplay = redraw(MeasuringScreen::chartFourierView);

  auto& notifications = NotificationCenter::instance();
  notifications.add(this, "didEnterBackground", [this] { didEnterBackground(); });
  notifications.add(this, "didBecomeActive", [this] { didBecomeActive(); });

  heartrateProcessing_ = &HeartrateProcessing::instance();
  spo2Processing_ = &Spo2Processing::instance();
  videoProcessing_ = std::make_unique<VideoProcessing>();
  data_ = &Data::instance();
  videoProcessing_->setDelegate(this);

  if (!Utils::isAppOnFirstLaunch() && Utils::isAppVersionUpdated()) {
    services().mainQueue.after(releaseNotesDelay,
                               [] { services().screens.showRemoteReleaseNotes(); });
  }
  if (Utils::hasFirstTimeNotePopup()) {
    HKUtils::setupHK();
  } else {
    services().screens.showIntro();
  }
}

void MainViewController::viewWillAppear() {
  services().screens.setBackSwipeEnabled(false);
  stopRunning();
  services().screens.setTitle("Veyla");
  showStateInitial();
}

void MainViewController::viewDidAppear() { cameraRequest(); }

void MainViewController::viewWillDisappear() { stopRunning(); }

void MainViewController::didEnterBackground() { stopRunning(); }

void MainViewController::didBecomeActive() { showStateInitial(); }

// What the user does.

void MainViewController::beginButtonPush() {
  isRunning_ = true;
  if (!runSpo2_ && !runHeartrate_) {
    Alerts::instance().show(modalAlert(
        AlertKind::warning, "Nothing to run",
        "You have disabled both heartrate and spo2 measurements. Enable at least one of them "
        "before tapping START."));
    isRunning_ = false;
    return;
  }
  services().mainQueue.after(buttonDelay,
                             [this] { services().camera.prepare([this] { beginMeasurement(); }); });
}

void MainViewController::beginMeasurement() {
  logLine("Tapped Begin");
  if (!Utils::isCameraAllowed()) {
    Alerts::instance().show(modalAlert(
        AlertKind::warning, "No Camera Access",
        "Without camera access this app won't work. It's essential for Veyla to have access to the "
        "Camera. Please go to the iOS Settings App, scroll down and find Veyla, and allow Veyla to "
        "access the Camera."));
    isRunning_ = false;
    return;
  }

  resetMeasurement();
  showStateTappedStart();
  if (videoProcessing_->startRecording()) {
    countDownToMeasuring();
  } else {
    Alerts::instance().show(modalAlert(
        AlertKind::error, "Error",
        "There seems to be a problem with the video camera. Check your camera settings."));
  }
}

void MainViewController::resetMeasurement() {
  canBegin_ = false;
  isDone_ = false;
  isHeartrateDone_ = false;
  isSpo2Done_ = false;
  failedHeartratesCounter_ = 0;
  failedSpo2Counter_ = 0;
  framesWhereLowSig_ = 0;
  countDown_ = countdownSeconds;

  heartrateProcessing_->reset();
  spo2Processing_->reset();
  data_->reset();
  chartFourierView_.reset();
}

void MainViewController::countDownToMeasuring() {
  Alert starting;
  starting.kind = AlertKind::waiting;
  starting.title = "Starting ...";
  starting.subtitle = coverInstruction;
  starting.duration = countDown_;
  starting.onDismiss = [this] {
    if (isDone_) return;
    startTorch();
    canBegin_ = true;
    showStateMeasuring();
  };
  Alerts::instance().show(std::move(starting));
}

void MainViewController::stopButtonPush() {
  services().mainQueue.after(buttonDelay, [this] {
    stopRunning();
    showStateTappedStop();
  });
}

void MainViewController::buttonCheckboxHeartrateTapped() {
  runHeartrate_ = !runHeartrate_;
  display().setImage(buttonCheckboxHeartrate,
                     runHeartrate_ ? "checkbox_marked.png" : "checkbox_unmarked.png");
  showGauge(viewGaugeHeartrate, runHeartrate_);
}

void MainViewController::buttonCheckboxSpo2Tapped() {
  logLine("hitting spo2 checkbox");
  runSpo2_ = !runSpo2_;
  display().setImage(buttonCheckboxSpo2,
                     runSpo2_ ? "checkbox_marked.png" : "checkbox_unmarked.png");
  showGauge(viewGaugeSpo2, runSpo2_);
}

void MainViewController::swipeLeft() { services().screens.performTransition("settings"); }

void MainViewController::swipeRight() { services().screens.performTransition("results"); }

// The measuring flow.

void MainViewController::updateMeasurementsWithRed(float red, float green, float blue, float hr) {
  const std::int32_t counter = videoProcessing_->counter() + 1;
  videoProcessing_->setCounter(counter);
  if (isDone_ || !canBegin_) return;

  logLine("red %i, green %i, blue: %i", Value(red).intValue(), Value(green).intValue(),
          Value(blue).intValue());
  data_->addRedValue(red);
  data_->addGreenValue(green);
  data_->addBlueValue(blue);
  data_->addHRValue(hr);
  chartFourierView_.addDataPoint(hr);
  chartFourierView_.updateChart();
  if (observer_) observer_->frameStored(counter);

  estimateHeartrateIfDue(counter);
  estimateSpo2IfDue(counter);

  // What differs on these phones are values of settings, not the flow; both answers, which are
  // kept, are settled with the first frame.
  static_cast<void>(Utils::isIphone4());
  static_cast<void>(Utils::isIphone4s());
}

void MainViewController::estimateHeartrateIfDue(std::int32_t counter) {
  const int rawDataSize = Utils::getHeartrateSettings("rawDataSize").intValue();
  const int skipFrames = Utils::getHeartrateSettings("skipFramesBetweenMeasurements").intValue();
  if (!runHeartrate_ || isHeartrateDone_) return;
  const auto count = static_cast<std::int64_t>(data_->rawHRValues()->size());
  if (count < rawDataSize) return;

  if (count == std::int64_t{rawDataSize} + std::int64_t{framesBeforeChart}) showStateChart();
  if (remainder(counter, skipFrames) < 1) {
    logLine("not skipping hr frame %i", counter);
    manageHeartrate();
  } else {
    logLine("skipping hr frame %i", counter);
  }
}

void MainViewController::estimateSpo2IfDue(std::int32_t counter) {
  const std::int64_t rawDataSize = Utils::getSpo2Settings("rawDataSize").intValue();
  const std::int64_t framesBefore = Utils::getSpo2Settings("framesBeforeBeginning").intValue();
  const int skipFrames = Utils::getSpo2Settings("skipFramesBetweenMeasurements").intValue();
  if (remainder(counter, skipFrames) >= 1) {
    logLine("skipping spo2 frame %i", counter);
    return;
  }
  logLine("not skipping spo2 frame %i", counter);
  const auto count = static_cast<std::int64_t>(data_->rawRedValues()->size());
  if (runSpo2_ && count >= framesBefore + rawDataSize && !isSpo2Done_) manageSpo2();
}

void MainViewController::manageHeartrate() {
  HeartrateResult result = heartrateProcessing_->calculateHeartrate();
  const int validPercent = Utils::getHeartrateSettings("TTValidPercent").intValue();
  const bool accepted = result.diffPercent >= static_cast<float>(validPercent);
  if (observer_) {
    const auto rejection =
        std::isnan(result.diffPercent) ? EstimateVerdict::none : EstimateVerdict::rejected;
    observer_->heartrateEstimated(videoProcessing_->counter(), result,
                                  accepted ? EstimateVerdict::accepted : rejection);
  }

  if (!accepted) {
    if (isHeartrateDone_) return;
    if (failedHeartratesCounter_++ >= heartrateFailuresBeforeBlank) showHeartrateDefault();
    return;
  }
  failedHeartratesCounter_ = 0;
  if (isHeartrateDone_) return;
  const float heartrate = result.heartrate;
  data_->addFourierValues(std::move(result));
  data_->addHeartrateValue(heartrate);

  const float median = medianOfLast(*data_->heartrateValues(), medianWindow);
  logLine("hr: %.0f", static_cast<double>(median));
  showHeartrate(median);
  gaugeHR_.setValue(median, true);
  gaugeHR_.setUnitOfMeasurement(wholeNumber(median) + " BPM");
  const int needed = Utils::getHeartrateSettings("neededValidHeartrate").intValue();
  circleprogressHeartrate_.setProgress(progressOf(data_->fourierValues()->size(), needed), true);
  if (heartrateProcessing_->isDone()) doneHeartrate();
}

void MainViewController::manageSpo2() {
  const float spo2 = spo2Processing_->calculateSpo2(
      [](const std::string& text) { display().setText(testLabel, text); });
  logLine("spo2 %.2f, counter: %i", static_cast<double>(spo2), videoProcessing_->counter());
  const auto verdict = spo2 >= lowestAcceptedSpo2 ? EstimateVerdict::accepted
                       : spo2 > 0                 ? EstimateVerdict::low
                                                  : EstimateVerdict::none;
  if (observer_) {
    observer_->spo2Estimated(videoProcessing_->counter(), spo2, spo2Processing_->figures(),
                             verdict);
  }

  if (verdict == EstimateVerdict::none) {
    // A not-a-number counts for nothing.
    if (spo2 <= 0 && failedSpo2Counter_++ >= spo2FailuresBeforeBlank) showSpo2Default();
    return;
  }
  if (verdict == EstimateVerdict::accepted) {
    acceptSpo2(spo2);
  } else {
    ++framesWhereLowSig_;
    showSpo2Default();
    if (framesWhereLowSig_ >= lowSignalLimit) showLogSigAlert();
  }
  if (spo2Processing_->isDone()) doneSpo2();
}

void MainViewController::acceptSpo2(float spo2) {
  framesWhereLowSig_ = 0;
  data_->addSpo2Value(spo2);
  failedSpo2Counter_ = 0;
  const float median = medianOfLast(*data_->spo2Values(), medianWindow);
  showSpo2(median);
  gaugeSpo2_.setValue(median, true);
  const int needed = Utils::getSpo2Settings("neededValidSpo2").intValue();
  circleprogressSpo2_.setProgress(progressOf(data_->spo2Values()->size(), needed), true);
}

void MainViewController::doneHeartrate() {
  logLine("Done HR");
  isHeartrateDone_ = true;
  finalHeartrate_ = medianOfLast(*data_->heartrateValues(), medianWindow);
  Utils::setLastHeartrate(finalHeartrate_);
  showHeartrate(finalHeartrate_);
  gaugeHR_.setValue(finalHeartrate_, true);

  display().setFont(labelHeartrate, {finalFont, labelValuesFontSize_});
  display().setText(labelLastHeartrate, wholeNumber(finalHeartrate_));
  enter(labelLastHeartrate, "zoomIn");
  enter(labelHeartrate, "zoomIn");
  display().setShimmering(labelMeasuringHeartrate, false);
  HKUtils().writeHeartrateWithValue(static_cast<double>(finalHeartrate_));
  if (isSpo2Done_ || !runSpo2_) done();
}

void MainViewController::doneSpo2() {
  logLine("Done Spo2");
  isSpo2Done_ = true;
  const std::vector<float>& values = *data_->spo2Values();
  logLine("spo2 values: %s", listed(values).c_str());
  finalSpo2_ = medianOfLast(values, values.size());
  Utils::setLastSpo2(finalSpo2_);
  showSpo2(finalSpo2_);

  display().setFont(labelSpo2, {finalFont, labelValuesFontSize_});
  enter(labelSpo2, "zoomIn");
  gaugeSpo2_.setValue(finalSpo2_, true);
  display().setText(labelLastSpo2, wholeNumber(finalSpo2_));
  enter(labelLastSpo2, "zoomIn");
  display().setShimmering(labelMeasuringSpo2, false);
  HKUtils().writeSpo2WithValue(static_cast<double>(finalSpo2_));
  if (isHeartrateDone_ || !runHeartrate_) done();
}

void MainViewController::done() {
  logLine("Done Both");
  stopRunning();
  showStateDone();
  Utils::saveHeartrate(runHeartrate_ ? static_cast<double>(finalHeartrate_) : 0,
                       runSpo2_ ? static_cast<double>(finalSpo2_) : 0, services().clock.now(),
                       std::nullopt);
  RatingPrompt::instance().logSignificantEvent();
  if (observer_) {
    observer_->measurementEnded(videoProcessing_->counter(), MeasurementEnd::finished);
  }
}

void MainViewController::stopRunning() {
  videoProcessing_->stopRecording();
  stopShimmering();
  isDone_ = true;
  canBegin_ = false;
  isRunning_ = false;
}

void MainViewController::showLogSigAlert() {
  stopRunning();
  showStateAfterLowSig();
  Alert alert = modalAlert(
      AlertKind::warning, "Got problems?",
      "If you keep getting '--' spo2 values, remove your finger, then tap START, and replace your "
      "finger on the flash and camera lens after ½-1 second.");
  alert.buttons.push_back({"Read FAQ", [] { services().screens.showFaq(); }});
  Alerts::instance().show(std::move(alert));
  if (observer_) {
    observer_->measurementEnded(videoProcessing_->counter(), MeasurementEnd::lowSignal);
  }
}

void MainViewController::startTorch() {
  const auto& device = videoProcessing_->videoDevice();
  if (!device || device->torchMode() != LightMode::off) return;
  logLine("starting torch/flash");
  device->lockForConfiguration();
  device->setTorchMode(LightMode::on);
  device->setFlashMode(LightMode::on);
  device->unlockForConfiguration();
}

void MainViewController::cameraRequest() {
  switch (services().camera.authorizationStatus()) {
    case CameraAuthorization::notDetermined:
      logLine("video cam is not determined - trying to get access");
      services().camera.requestAccess([](bool granted) {
        logLine(granted ? "Granted access to video cam" : "Not granted access to video cam");
      });
      break;
    case CameraAuthorization::restricted:
      logLine("video cam is restricted");
      break;
    case CameraAuthorization::denied:
      logLine("video cam is denied");
      break;
    case CameraAuthorization::authorized:
      logLine("video cam is allowed");
      break;
    case CameraAuthorization::unknown:
      logLine("video cam is not allowed - unknown authorization denial");
      break;
  }
}

bool MainViewController::isFingerOnCameraRed(std::int32_t red, std::int32_t green,
                                             std::int32_t blue) {
  return red < 100 && green < 100 && blue < 10;
}

// The live values.

void MainViewController::showHeartrate(float value) {
  display().setFont(labelHeartrate, {runningFont, labelValuesFontSize_});
  display().setText(labelHeartrate, wholeNumber(value));
}

void MainViewController::showSpo2(float value) {
  display().setFont(labelSpo2, {runningFont, labelValuesFontSize_});
  display().setText(labelSpo2, wholeNumber(value));
}

void MainViewController::showHeartrateDefault() {
  display().setFont(labelHeartrate, {runningFont, labelValuesFontSize_});
  display().setText(labelHeartrate, noValue);
}

void MainViewController::showSpo2Default() {
  display().setFont(labelSpo2, {runningFont, labelValuesFontSize_});
  display().setText(labelSpo2, noValue);
}

// Presentations of the screen's states.

void MainViewController::showStateInitial() {
  showChart(false);
  display().setText(labelLastHeartrate,
                    Utils::hasLastHeartrate() ? wholeNumber(Utils::getLastHeartrate()) : noValue);
  display().setText(labelLastSpo2,
                    Utils::hasLastSpo2() ? wholeNumber(Utils::getLastSpo2()) : noValue);
  showValueDefaults();
  showCheckboxes(true);
  zeroGaugesAndRings(false);
  display().setText(labelGrey, startInstruction);
  display().setOpacity(labelGrey, 1);
  display().setOpacity(labelRed, 0);
  display().setOpacity(stopButton, 0);
  display().setOpacity(beginButton, 1);
}

void MainViewController::showStateTappedStart() {
  zeroGaugesAndRings(true);
  showValueDefaults();
  showChart(false);
  showCheckboxes(false);
  leave(beginButton, "fadeOut", [] { enter(stopButton, "fadeIn"); });
  display().setText(labelGrey, coverInstruction);
  display().setOpacity(labelGrey, 1);
  display().setText(labelRed, "Will begin in a couple of seconds ...");
  display().setOpacity(labelRed, 1);
}

void MainViewController::showStateMeasuring() {
  leave(labelRed, "slideLeft", [] {
    display().setText(labelRed, "Analyzing - hold steady ...");
    enter(labelRed, "slideRight");
  });
  if (runHeartrate_) display().setShimmering(labelMeasuringHeartrate, true);
  if (runSpo2_) display().setShimmering(labelMeasuringSpo2, true);
}

void MainViewController::showStateChart() {
  leave(viewCenter, "zoomOut", [this] {
    showChart(true);
    enter(viewCenter, "zoomIn");
  });
}

void MainViewController::showStateDone() {
  leave(stopButton, "slideUp", [] { enter(beginButton, "slideUp"); });
  showInstruction();
  display().setText(labelRed, "FINISHED");
  enter(labelRed, "fadeIn");
  showCheckboxes(true);
  leave(viewCenter, "zoomOut", [this] {
    showChart(false);
    enter(viewCenter, "zoomIn");
  });
}

void MainViewController::showStateAfterLowSig() {
  display().setOpacity(stopButton, 0);
  display().setOpacity(beginButton, 1);
  display().setText(labelGrey, startInstruction);
  display().setOpacity(labelGrey, 1);
  display().setOpacity(labelRed, 0);
  showCheckboxes(true);
  stopShimmering();
}

void MainViewController::showStateTappedStop() {
  showChart(false);
  leave(stopButton, "slideUp", [] { enter(beginButton, "slideUp"); });
  showInstruction();
  enter(labelRed, "fadeIn");
  stopShimmering();
  showCheckboxes(true);
  zeroGaugesAndRings(true);
  showValueDefaults();
}

void MainViewController::showInstruction() {
  display().setText(labelGrey, startInstruction);
  enter(labelGrey, "fadeIn");
}

void MainViewController::showValueDefaults() {
  showHeartrateDefault();
  showSpo2Default();
}

void MainViewController::showCheckboxes(bool shown) {
  display().setHidden(buttonCheckboxHeartrate, !shown);
  display().setHidden(buttonCheckboxSpo2, !shown);
}

void MainViewController::showChart(bool shown) {
  display().setHidden(MeasuringScreen::chartFourierView, !shown);
  display().setHidden(viewLastMeasurements, shown);
}

void MainViewController::zeroGaugesAndRings(bool animated) {
  gaugeHR_.setValue(0, animated);
  gaugeSpo2_.setValue(0, animated);
  circleprogressHeartrate_.setProgress(0, animated);
  circleprogressSpo2_.setProgress(0, animated);
}

void MainViewController::finishAnimations() {
  gaugeHR_.finishAnimation();
  gaugeSpo2_.finishAnimation();
  circleprogressHeartrate_.finishAnimation();
  circleprogressSpo2_.finishAnimation();
}

void MainViewController::stopShimmering() {
  display().setShimmering(labelMeasuringHeartrate, false);
  display().setShimmering(labelMeasuringSpo2, false);
}

}  // namespace veyla
