#include "measuring/main_view_controller.h"

#include <algorithm>
#include <utility>

#include "acquisition/settings.h"
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

constexpr std::size_t framesBeforeChart = 30;
// Lets the button's tap be seen before the work begins.
constexpr double buttonDelay = 0.020;
constexpr double releaseNotesDelay = 0.5;

constexpr std::string_view runningFont = "HelveticaNeue-Light";
constexpr std::string_view finalFont = "HelveticaNeue-Medium";
constexpr const char* startInstruction = "Tap START to begin - don't cover camera";
constexpr const char* coverInstruction = "Cover flash and camera lens with finger...";

Display& display() { return services().measuringDisplay; }

void enter(Element element, std::string_view animation) {
  display().animate(element, animation, true, {});
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

MainViewController::MainViewController() : animations_(services().measuringDisplay) {}

MainViewController::~MainViewController() {
  if (videoProcessing_) NotificationCenter::instance().remove(this);
}

// The screen's life.

void MainViewController::viewDidLoad() {
  labelValuesFontSize_ = Utils::isIphone4() || Utils::isIphone4s() ? 20.0F : 25.0F;
  runHeartrate_ = true;
  runSpo2_ = true;

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
  endMeasurement(MeasurementEnd::left);
  services().screens.setTitle("Veyla");
  showStateInitial();
}

void MainViewController::viewDidAppear() { cameraRequest(); }

void MainViewController::viewWillDisappear() { endMeasurement(MeasurementEnd::left); }

void MainViewController::didEnterBackground() { endMeasurement(MeasurementEnd::background); }

void MainViewController::didBecomeActive() {
  measurement_->isInterrupted = videoProcessing_->isRecording();
  showStateInitial();
}

void MainViewController::cameraLost() {
  if (!measurement_->isUnderWay()) return;
  endMeasurement(MeasurementEnd::cameraLost, [this] {
    showStateTappedStop();
    Alerts::instance().show(
        modalAlert(AlertKind::error, "Camera lost",
                   "Another app has taken it, or it was unplugged. Tap START to measure again."));
  });
}

// What the user does.

void MainViewController::beginButtonPush() {
  // The second of a double tap.
  if (measurement_->isUnderWay() && !measurement_->isInterrupted) return;
  if (measurement_->isUnderWay()) endMeasurement(MeasurementEnd::replaced);
  if (!runSpo2_ && !runHeartrate_) {
    Alerts::instance().show(modalAlert(
        AlertKind::warning, "Nothing to run",
        "You have disabled both heartrate and spo2 measurements. Enable at least one of them "
        "before tapping START."));
    measurement_->isRunning = false;
    return;
  }
  measurement_ = Measurement::accepted();
  services().mainQueue.after(buttonDelay, measurement_->whileItLasts([this] {
    measurement_->cameraWait =
        services().camera.prepare(measurement_->whileItLasts([this] { beginMeasurement(); }));
  }));
}

void MainViewController::beginMeasurement() {
  logLine("Tapped Begin");
  if (!Utils::isCameraAllowed()) {
    Alerts::instance().show(modalAlert(
        AlertKind::warning, "No Camera Access",
        "Without camera access this app won't work. It's essential for Veyla to have access to the "
        "Camera. Please go to the iOS Settings App, scroll down and find Veyla, and allow Veyla to "
        "access the Camera."));
    measurement_->end(MeasurementEnd::refused);
    reportEnd();
    return;
  }

  heartrateProcessing_->reset();
  spo2Processing_->reset();
  data_->reset();
  chartFourierView_.reset();
  for (MeasurementObserver* observer : observers_) observer->measurementBegan();
  showStateTappedStart();
  if (videoProcessing_->startRecording()) {
    countDownToMeasuring();
    return;
  }
  Alerts::instance().show(
      modalAlert(AlertKind::error, "Error",
                 "There seems to be a problem with the video camera. Check your camera settings."));
  measurement_->fail();
  reportEnd();
}

double MainViewController::secondsUntilCurve() const {
  if (!runHeartrate_) return 0;
  const int rawDataSize = Utils::getHeartrateSettings("rawDataSize").intValue();
  return Measurement::countdownSeconds +
         (rawDataSize + static_cast<double>(framesBeforeChart)) / VideoDataOutput::framesPerSecond;
}

void MainViewController::countDownToMeasuring() {
  Alert starting;
  starting.kind = AlertKind::waiting;
  starting.title = "Starting ...";
  starting.subtitle = coverInstruction;
  starting.duration = measurement_->countDown;
  starting.onDismiss = measurement_->whileItLasts([this] {
    if (measurement_->isDone) return;
    startTorch();
    measurement_->canBegin = true;
    showStateMeasuring();
  });
  measurement_->startingAlert = Alerts::instance().show(std::move(starting));
}

void MainViewController::stopButtonPush() {
  services().mainQueue.after(buttonDelay, [this, tapped = std::weak_ptr(measurement_)] {
    // What has ended in the meantime stays as its end has shown it.
    const auto measurement = tapped.lock();
    if (!measurement || !measurement->isRunning) return;
    endMeasurement(MeasurementEnd::stopped, [this] { showStateTappedStop(); });
  });
}

void MainViewController::nextCameraButtonPush() {
  Camera& camera = services().camera;
  if (!camera.hasNextBackCamera()) return;
  endMeasurement(MeasurementEnd::replaced);
  camera.useNextBackCamera();
  beginButtonPush();
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
  if (!measurement_->takesFrames()) return;

  logLine("red %i, green %i, blue: %i", Value(red).intValue(), Value(green).intValue(),
          Value(blue).intValue());
  data_->addRedValue(red);
  data_->addGreenValue(green);
  data_->addBlueValue(blue);
  data_->addHRValue(hr);
  chartFourierView_.addDataPoint(hr);
  chartFourierView_.updateChart();
  for (MeasurementObserver* observer : observers_) observer->frameStored(counter);

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
  // The chart below is the heart rate's curve: it does not show where none is wanted, nor replace a
  // value that is final already.
  if (!runHeartrate_ || measurement_->isHeartrateDone) return;
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
  if (runSpo2_ && count >= framesBefore + rawDataSize && !measurement_->isSpo2Done) manageSpo2();
}

void MainViewController::frameColours(const FrameColours& colours) {
  if (!measurement_->takesFrames()) return;
  for (MeasurementObserver* observer : observers_) observer->frameSeen(colours);
}

void MainViewController::frameDropped() {
  if (!measurement_->takesFrames()) return;
  for (MeasurementObserver* observer : observers_) observer->frameDropped();
}

void MainViewController::manageHeartrate() {
  HeartrateResult result = heartrateProcessing_->calculateHeartrate();
  const int validPercent = Utils::getHeartrateSettings("TTValidPercent").intValue();
  const EstimateVerdict verdict = measurement_->judgeHeartrate(result, validPercent);
  for (MeasurementObserver* observer : observers_) {
    observer->heartrateEstimated(videoProcessing_->counter(), result, verdict);
  }

  if (measurement_->isHeartrateDone) return;
  if (verdict != EstimateVerdict::accepted) {
    if (measurement_->hasLostHeartrate()) showHeartrateDefault();
    return;
  }
  const float heartrate = result.heartrate;
  data_->addFourierValues(std::move(result));
  data_->addHeartrateValue(heartrate);

  const float median = Measurement::runningMedian(*data_->heartrateValues());
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
  const EstimateVerdict verdict = measurement_->judgeSpo2(spo2);
  for (MeasurementObserver* observer : observers_) {
    observer->spo2Estimated(videoProcessing_->counter(), spo2, spo2Processing_->figures(), verdict);
  }

  if (verdict == EstimateVerdict::none) {
    if (measurement_->hasLostSpo2()) showSpo2Default();
    return;
  }
  if (verdict == EstimateVerdict::accepted) {
    acceptSpo2(spo2);
  } else {
    showSpo2Default();
    if (measurement_->hasLowSignal()) showLogSigAlert();
  }
  if (spo2Processing_->isDone()) doneSpo2();
}

void MainViewController::acceptSpo2(float spo2) {
  data_->addSpo2Value(spo2);
  const float median = Measurement::runningMedian(*data_->spo2Values());
  showSpo2(median);
  gaugeSpo2_.setValue(median, true);
  const int needed = Utils::getSpo2Settings("neededValidSpo2").intValue();
  circleprogressSpo2_.setProgress(progressOf(data_->spo2Values()->size(), needed), true);
}

void MainViewController::doneHeartrate() {
  logLine("Done HR");
  measurement_->finishHeartrate(*data_->heartrateValues());
  const float heartrate = measurement_->finalHeartrate;
  Utils::setLastHeartrate(heartrate);
  showHeartrate(heartrate);
  gaugeHR_.setValue(heartrate, true);

  display().setFont(labelHeartrate, {finalFont, labelValuesFontSize_});
  display().setText(labelLastHeartrate, wholeNumber(heartrate));
  enter(labelLastHeartrate, "zoomIn");
  enter(labelHeartrate, "zoomIn");
  display().setShimmering(labelMeasuringHeartrate, false);
  HKUtils().writeHeartrateWithValue(static_cast<double>(heartrate));
  for (MeasurementObserver* observer : observers_) observer->heartrateFinal(heartrate);
  if (measurement_->isSpo2Done || !runSpo2_) done();
}

void MainViewController::doneSpo2() {
  // The same estimate may have been one low signal too many.
  if (measurement_->hasEnded()) return;
  logLine("Done Spo2");
  const std::vector<float>& values = *data_->spo2Values();
  logLine("spo2 values: %s", listed(values).c_str());
  measurement_->finishSpo2(values);
  const float spo2 = measurement_->finalSpo2;
  Utils::setLastSpo2(spo2);
  showSpo2(spo2);

  display().setFont(labelSpo2, {finalFont, labelValuesFontSize_});
  enter(labelSpo2, "zoomIn");
  gaugeSpo2_.setValue(spo2, true);
  display().setText(labelLastSpo2, wholeNumber(spo2));
  enter(labelLastSpo2, "zoomIn");
  display().setShimmering(labelMeasuringSpo2, false);
  HKUtils().writeSpo2WithValue(static_cast<double>(spo2));
  for (MeasurementObserver* observer : observers_) observer->spo2Final(spo2);
  if (measurement_->isHeartrateDone || !runHeartrate_) done();
}

void MainViewController::done() {
  logLine("Done Both");
  endMeasurement(MeasurementEnd::finished, [this] {
    showStateDone();
    measurement_->isKept = services().store.exclusively([this] {
      Utils::saveHeartrate(runHeartrate_ ? static_cast<double>(finalHeartrate()) : 0,
                           runSpo2_ ? static_cast<double>(finalSpo2()) : 0, services().clock.now(),
                           std::nullopt);
    });
    // By itself: the entry hangs on nothing else that is stored.
    RatingPrompt::instance().logSignificantEvent();
  });
}

void MainViewController::stopRunning() { endMeasurement(MeasurementEnd::stopped); }

/// `present` shows and keeps what the end means, whether or not a measurement was under way.
void MainViewController::endMeasurement(MeasurementEnd how, const std::function<void()>& present) {
  videoProcessing_->stopRecording();
  stopShimmering();
  // Left to itself it would stand beside the next countdown's, or over what told of the end.
  if (const auto alert = measurement_->startingAlert) Alerts::instance().withdraw(*alert);
  const bool ends = measurement_->end(how);
  if (present) present();
  if (ends) reportEnd();
}

void MainViewController::reportEnd() {
  for (MeasurementObserver* observer : observers_) {
    observer->measurementEnded(videoProcessing_->counter(), *measurement_->howEnded());
  }
}

void MainViewController::showLogSigAlert() {
  endMeasurement(MeasurementEnd::lowSignal, [this] {
    showStateAfterLowSig();
    Alert alert = modalAlert(
        AlertKind::warning, "Got problems?",
        "If you keep getting '--' spo2 values, remove your finger, then tap START, and replace "
        "your finger on the flash and camera lens after ½-1 second.");
    alert.buttons.push_back({"Read FAQ", [] { services().screens.showFaq(); }});
    Alerts::instance().show(std::move(alert));
  });
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
  showRunning(labelHeartrate, wholeNumber(value));
}

void MainViewController::showSpo2(float value) { showRunning(labelSpo2, wholeNumber(value)); }

void MainViewController::showHeartrateDefault() { showRunning(labelHeartrate, noValue); }

void MainViewController::showSpo2Default() { showRunning(labelSpo2, noValue); }

void MainViewController::showRunning(Element label, const std::string& text) {
  display().setFont(label, {runningFont, labelValuesFontSize_});
  display().setText(label, text);
}

// Presentations of the screen's states.

void MainViewController::showStateInitial() {
  animations_.settle();
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
  animations_.settle();
  zeroGaugesAndRings(true);
  showValueDefaults();
  showChart(false);
  showCheckboxes(false);
  animations_.play({{beginButton, "fadeOut", false}, {stopButton, "fadeIn", true}});
  display().setText(labelGrey, coverInstruction);
  display().setOpacity(labelGrey, 1);
  display().setText(labelRed, "Will begin in a couple of seconds ...");
  display().setOpacity(labelRed, 1);
}

void MainViewController::showStateMeasuring() {
  animations_.settle();
  animations_.play({{labelRed, "slideLeft", false}, {labelRed, "slideRight", true, [] {
                                                       display().setText(
                                                           labelRed, "Analyzing - hold steady ...");
                                                     }}});
  if (runHeartrate_) display().setShimmering(labelMeasuringHeartrate, true);
  if (runSpo2_) display().setShimmering(labelMeasuringSpo2, true);
}

void MainViewController::showStateChart() {
  // Belongs to the presentation that it falls into, whose other animations go on.
  turnCenter(true);
}

void MainViewController::showStateDone() {
  animations_.settle();
  exchangeStopForStart();
  showInstruction();
  display().setText(labelRed, "FINISHED");
  enter(labelRed, "fadeIn");
  showCheckboxes(true);
  turnCenter(false);
}

void MainViewController::showStateAfterLowSig() {
  animations_.settle();
  display().setOpacity(stopButton, 0);
  display().setOpacity(beginButton, 1);
  display().setText(labelGrey, startInstruction);
  display().setOpacity(labelGrey, 1);
  display().setOpacity(labelRed, 0);
  showCheckboxes(true);
}

void MainViewController::showStateTappedStop() {
  animations_.settle();
  showChart(false);
  exchangeStopForStart();
  showInstruction();
  enter(labelRed, "fadeIn");
  showCheckboxes(true);
  zeroGaugesAndRings(true);
  showValueDefaults();
}

void MainViewController::exchangeStopForStart() {
  animations_.play({{stopButton, "slideUp", false}, {beginButton, "slideUp", true}});
}

void MainViewController::turnCenter(bool toChart) {
  animations_.play({{viewCenter, "zoomOut", false},
                    {viewCenter, "zoomIn", true, [this, toChart] { showChart(toChart); }}});
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
