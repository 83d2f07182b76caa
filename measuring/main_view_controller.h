#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "acquisition/data.h"
#include "acquisition/video_delegate.h"
#include "acquisition/video_processing.h"
#include "analysis/chart_fourier_view.h"
#include "analysis/heartrate_processing.h"
#include "analysis/spo2_processing.h"
#include "measuring/animation_chains.h"
#include "measuring/circle_progress_bar.h"
#include "measuring/measurement.h"
#include "measuring/measurement_observer.h"
#include "measuring/wm_gauge_view.h"
#include "platform/alert_view.h"

namespace veyla {

/// The measuring screen: leads one measurement after the other from the tap on START to its end.
///
/// The frame source calls it once per frame; on chosen frames it asks each estimator for a value,
/// has the measurement judge it and shows what came of it, and when every requested value is final
/// it stores them. It drives views through the platform's display alone and runs the same with
/// none. All operations run on the main thread.
class MainViewController : public VideoDelegate {
 public:
  /// The shared screen of the platform in force.
  static MainViewController& instance();

  MainViewController();
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
  /// Another program has taken the camera, or it was unplugged.
  void cameraLost();

  // What the user does.

  void beginButtonPush();
  /// From START until the pulse's curve shows; 0 where it does not, since no heart rate is wanted.
  double secondsUntilCurve() const;
  void stopButtonPush();
  /// Begins anew with the next back camera; nothing where there is none.
  void nextCameraButtonPush();
  void buttonCheckboxHeartrateTapped();
  void buttonCheckboxSpo2Tapped();
  void swipeLeft();
  void swipeRight();

  // The measuring flow.

  void updateMeasurementsWithRed(float red, float green, float blue, float hr) override;
  void frameColours(const FrameColours& colours) override;
  void frameDropped() override;
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
  void showRunning(Element label, const std::string& text);

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

  /// The user wants this value.
  bool runHeartrate() const { return runHeartrate_; }
  bool runSpo2() const { return runSpo2_; }

  // State of the last measurement, or of none before the first START.

  /// From an accepted START to the measurement's end. It stays true where the camera did not start,
  /// as STOP is shown then; the next START is accepted all the same.
  bool isRunning() const { return measurement_->isRunning; }
  /// Frames are to be used: the countdown has run out.
  bool canBegin() const { return measurement_->canBegin; }
  void setCanBegin(bool canBegin) { measurement_->canBegin = canBegin; }
  /// The measurement has ended, in whatever way.
  bool isDone() const { return measurement_->isDone; }
  void setIsDone(bool isDone) { measurement_->isDone = isDone; }
  bool isHeartrateDone() const { return measurement_->isHeartrateDone; }
  void setIsHeartrateDone(bool isDone) { measurement_->isHeartrateDone = isDone; }
  bool isSpo2Done() const { return measurement_->isSpo2Done; }
  void setIsSpo2Done(bool isDone) { measurement_->isSpo2Done = isDone; }
  /// Beats per minute and per cent; meaningful once done.
  float finalHeartrate() const { return measurement_->finalHeartrate; }
  void setFinalHeartrate(float heartrate) { measurement_->finalHeartrate = heartrate; }
  bool isKept() const { return measurement_->isKept; }
  float finalSpo2() const { return measurement_->finalSpo2; }
  void setFinalSpo2(float spo2) { measurement_->finalSpo2 = spo2; }
  /// Heart-rate estimates since the last accepted one, those without a value included.
  std::int32_t failedHeartratesCounter() const { return measurement_->failedHeartratesCounter; }
  void setFailedHeartratesCounter(std::int32_t count) {
    measurement_->failedHeartratesCounter = count;
  }
  /// SpO2 estimates of 0 or less since the last accepted one; low ones in between do not count and
  /// do not start the count anew.
  std::int32_t failedSpo2Counter() const { return measurement_->failedSpo2Counter; }
  void setFailedSpo2Counter(std::int32_t count) { measurement_->failedSpo2Counter = count; }
  /// Seconds of the start countdown.
  std::int32_t countDown() const { return measurement_->countDown; }
  void setCountDown(std::int32_t countDown) { measurement_->countDown = countDown; }
  /// SpO2 values below the acceptance limit since the last accepted one; estimates without a value
  /// in between do not start the count anew.
  std::uint64_t framesWhereLowSig() const { return measurement_->framesWhereLowSig; }
  void setFramesWhereLowSig(std::uint64_t frames) { measurement_->framesWhereLowSig = frames; }

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

  /// Not owned; it stays as long as the screen is used.
  void addObserver(MeasurementObserver& observer) { observers_.push_back(&observer); }

 private:
  void beginMeasurement();
  void countDownToMeasuring();
  void endMeasurement(MeasurementEnd how, const std::function<void()>& present = {});
  void reportEnd();
  void estimateHeartrateIfDue(std::int32_t counter);
  void estimateSpo2IfDue(std::int32_t counter);
  void acceptSpo2(float spo2);
  void exchangeStopForStart();
  void turnCenter(bool toChart);
  void showInstruction();
  void showValueDefaults();
  void showCheckboxes(bool shown);
  void showChart(bool shown);
  void zeroGaugesAndRings(bool animated);
  void stopShimmering();

  bool runHeartrate_ = false;
  bool runSpo2_ = false;
  /// Held here alone: what is left of an older one finds it gone.
  std::shared_ptr<Measurement> measurement_ = std::make_shared<Measurement>();
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
  AnimationChains animations_;
  std::vector<MeasurementObserver*> observers_;
};

}  // namespace veyla
