#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "acquisition/data.h"
#include "acquisition/video_delegate.h"
#include "acquisition/video_processing.h"
#include "analysis/chart_fourier_view.h"
#include "analysis/heartrate_processing.h"
#include "analysis/spo2_processing.h"
#include "measuring/circle_progress_bar.h"
#include "measuring/measurement_observer.h"
#include "measuring/wm_gauge_view.h"
#include "platform/alert_view.h"

namespace veyla {

/// The measuring screen: owns one measurement from the tap on START to the saved history entry.
///
/// The frame source calls it once per frame; on chosen frames it asks each estimator for a value,
/// accepts or rejects it and shows it, and when every requested value is final it stores the
/// measurement. It drives views through the platform's display alone and runs the same with none.
/// All operations run on the main thread.
class MainViewController : public VideoDelegate {
 public:
  /// The shared screen of the platform in force.
  static MainViewController& instance();

  MainViewController() = default;
  ~MainViewController() override;
  MainViewController(const MainViewController&) = delete;
  MainViewController& operator=(const MainViewController&) = delete;

  // The screen's life.

  void viewDidLoad();
  void viewWillAppear();
  void viewDidAppear();
  void viewWillDisappear();
  void didEnterBackground();
  void didBecomeActive();

  // What the user does.

  void beginButtonPush();
  void stopButtonPush();
  void buttonCheckboxHeartrateTapped();
  void buttonCheckboxSpo2Tapped();
  void swipeLeft();
  void swipeRight();

  // The measuring flow.

  void updateMeasurementsWithRed(float red, float green, float blue, float hr) override;
  void manageHeartrate();
  void manageSpo2();
  void doneHeartrate();
  void doneSpo2();
  void done();
  void stopRunning();
  void showLogSigAlert();
  void startTorch();
  void cameraRequest();

  /// Whether a frame this dark has a finger on the lens. Offered to callers; the flow judges the
  /// finger by the SpO2 estimates alone.
  static bool isFingerOnCameraRed(std::int32_t red, std::int32_t green, std::int32_t blue);

  // The live values.

  void showHeartrate(float value);
  void showSpo2(float value);
  void showHeartrateDefault();
  void showSpo2Default();

  // Presentations of the screen's states.

  void showStateInitial();
  void showStateTappedStart();
  void showStateChart();
  void showStateMeasuring();
  void showStateDone();
  void showStateAfterLowSig();
  void showStateTappedStop();

  /// Ends the animations of gauges and rings where they were going.
  void finishAnimations();

  // State of the measurement.

  /// The user wants this value.
  bool runHeartrate() const { return runHeartrate_; }
  bool runSpo2() const { return runSpo2_; }
  /// A START has been accepted and not yet ended.
  bool isRunning() const { return isRunning_; }
  /// Frames are to be used: the countdown has run out.
  bool canBegin() const { return canBegin_; }
  void setCanBegin(bool canBegin) { canBegin_ = canBegin; }
  /// The measurement has ended, in whatever way.
  bool isDone() const { return isDone_; }
  void setIsDone(bool isDone) { isDone_ = isDone; }
  bool isHeartrateDone() const { return isHeartrateDone_; }
  void setIsHeartrateDone(bool isHeartrateDone) { isHeartrateDone_ = isHeartrateDone; }
  bool isSpo2Done() const { return isSpo2Done_; }
  void setIsSpo2Done(bool isSpo2Done) { isSpo2Done_ = isSpo2Done; }
  /// Beats per minute and per cent; meaningful once done.
  float finalHeartrate() const { return finalHeartrate_; }
  void setFinalHeartrate(float finalHeartrate) { finalHeartrate_ = finalHeartrate; }
  float finalSpo2() const { return finalSpo2_; }
  void setFinalSpo2(float finalSpo2) { finalSpo2_ = finalSpo2; }
  /// Consecutive estimates rejected, and consecutive ones without a value.
  std::int32_t failedHeartratesCounter() const { return failedHeartratesCounter_; }
  void setFailedHeartratesCounter(std::int32_t count) { failedHeartratesCounter_ = count; }
  std::int32_t failedSpo2Counter() const { return failedSpo2Counter_; }
  void setFailedSpo2Counter(std::int32_t count) { failedSpo2Counter_ = count; }
  /// Seconds of the start countdown.
  std::int32_t countDown() const { return countDown_; }
  void setCountDown(std::int32_t countDown) { countDown_ = countDown; }
  /// SpO2 values below the acceptance limit since the last accepted one.
  std::uint64_t framesWhereLowSig() const { return framesWhereLowSig_; }
  void setFramesWhereLowSig(std::uint64_t frames) { framesWhereLowSig_ = frames; }

  /// In points.
  float labelValuesFontSize() const { return labelValuesFontSize_; }

  // Its parts; the pointed-to ones exist from `viewDidLoad` on.

  Data* data() const { return data_; }
  void setData(Data* data) { data_ = data; }
  Spo2Processing* spo2Processing() const { return spo2Processing_; }
  void setSpo2Processing(Spo2Processing* processing) { spo2Processing_ = processing; }
  HeartrateProcessing* heartrateProcessing() const { return heartrateProcessing_; }
  void setHeartrateProcessing(HeartrateProcessing* processing) {
    heartrateProcessing_ = processing;
  }
  VideoProcessing* videoProcessing() const { return videoProcessing_.get(); }
  void setVideoProcessing(std::unique_ptr<VideoProcessing> processing) {
    videoProcessing_ = std::move(processing);
  }
  const WMGaugeView& gaugeHR() const { return gaugeHR_; }
  const WMGaugeView& gaugeSpo2() const { return gaugeSpo2_; }
  const CircleProgressBar& circleprogressHeartrate() const { return circleprogressHeartrate_; }
  const CircleProgressBar& circleprogressSpo2() const { return circleprogressSpo2_; }
  const ChartFourierView& chartFourierView() const { return chartFourierView_; }

  /// Not owned; null for none.
  void setObserver(MeasurementObserver* observer) { observer_ = observer; }

 private:
  void beginMeasurement();
  void resetMeasurement();
  void countDownToMeasuring();
  void estimateHeartrateIfDue(std::int32_t counter);
  void estimateSpo2IfDue(std::int32_t counter);
  void acceptSpo2(float spo2);
  void showInstruction();
  void showValueDefaults();
  void showCheckboxes(bool shown);
  void showChart(bool shown);
  void zeroGaugesAndRings(bool animated);
  void stopShimmering();

  bool runHeartrate_ = false;
  bool runSpo2_ = false;
  bool isRunning_ = false;
  bool canBegin_ = false;
  bool isDone_ = false;
  bool isHeartrateDone_ = false;
  bool isSpo2Done_ = false;
  float finalHeartrate_ = 0;
  float finalSpo2_ = 0;
  std::int32_t failedHeartratesCounter_ = 0;
  std::int32_t failedSpo2Counter_ = 0;
  std::int32_t countDown_ = 0;
  std::uint64_t framesWhereLowSig_ = 0;
  float labelValuesFontSize_ = 0;

  Data* data_ = nullptr;
  Spo2Processing* spo2Processing_ = nullptr;
  HeartrateProcessing* heartrateProcessing_ = nullptr;
  std::unique_ptr<VideoProcessing> videoProcessing_;
  WMGaugeView gaugeHR_;
  WMGaugeView gaugeSpo2_;
  CircleProgressBar circleprogressHeartrate_;
  CircleProgressBar circleprogressSpo2_;
  ChartFourierView chartFourierView_;
  MeasurementObserver* observer_ = nullptr;
};

}  // namespace veyla
