#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "apps/cli/cli_screens.h"
#include "apps/cli/command_device.h"
#include "apps/cli/measurement_tally.h"
#include "measuring/main_view_controller.h"
#include "measuring/measurement_judge.h"
#include "platform/key_value_store.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/timed_queue.h"
#include "platform/no_services.h"
#include "platform/resources.h"
#include "shell/screen_state.h"

namespace veyla {

/// How a run of the measuring flow over a recording ended.
enum class Outcome { finished, lowSignal, endOfInput, alert };

const char* nameOf(Outcome outcome);

/// What a run measured and how.
struct MeasurementReport {
  Outcome outcome = Outcome::endOfInput;
  /// Final values; nothing for one that was not requested or did not become final.
  std::optional<float> heartrate;
  std::optional<float> spo2;
  /// What the final values are worth; nothing for one that did not become final.
  std::optional<HeartrateJudgement> heartrateJudgement;
  std::optional<std::vector<Doubt>> spo2Doubts;
  /// What was seen of the finger, in seconds of the recording.
  std::vector<FingerSpan> finger;
  bool isBlack = false;
  MeasurementWorth worth;
  /// Why a value did not become final, where it is known.
  std::optional<Shortfall> shortfall;
  /// From the first stored frame to the last, in the recording's time.
  double seconds = 0;
  /// The same up to the last accepted estimate of each value: when a final one became final.
  double heartrateSeconds = 0;
  double spo2Seconds = 0;
  int frames = 0;
  int framedrops = 0;
  EstimateCounts heartrateEstimates;
  EstimateCounts spo2Estimates;
  /// The device profile that chose the settings.
  std::string device;
  /// The alert that ended the run, where one did.
  std::string alertTitle;
  std::string alertSubtitle;
  /// Whether it is an entry of the history now.
  bool isKept = false;
  /// What kept the recording from being read to its end; empty when nothing did.
  std::string remark;
};

/// What is measured, and which part of the recording.
struct MeasurementRequest {
  bool heartrate = true;
  bool spo2 = true;
  /// Hardware model, such as "iPhone8,1".
  std::string device = defaultDevice;
  /// Seconds into the recording at which START is tapped.
  double start = 0;
  /// Seconds of the recording that are used from there, the countdown included.
  std::optional<double> duration;
};

/// One run of the whole measuring flow over a recording: launches the application on the services
/// given, taps START, and lets the recording play until the measurement or the recording ends.
class MeasurementRun {
 public:
  struct Services {
    TimedQueue& queue;
    /// Dates what is kept.
    Clock& clock;
    KeyValueStore& store;
    const Resources& resources;
    HealthStore& healthStore = noHealthStore;
    Log& log = noLog;
  };

  MeasurementRun(const MeasurementRequest& request, std::unique_ptr<RecordingSource> source,
                 const Services& services);

  /// Called for each estimate; may be empty.
  std::function<void(const MeasurementTally::Estimate&)> trace;
  /// Called when anything on the screen has changed; may be empty.
  std::function<void(const MainViewController&)> screenChanged;
  /// Called when START is tapped and each second of the recording's time after that, with the
  /// seconds since; may be empty.
  std::function<void(int second, const MainViewController&)> secondPassed;
  /// Called at the end, with the screen as it ended, its gauges and rings at rest; may be empty.
  std::function<void(const MainViewController&)> ended;
  /// Whether somebody is there to be shown the intended use and asked about health records, which
  /// happens once.
  bool showsIntro = false;
  /// Whether finger and values are judged; what is measured does not depend on it.
  bool isJudged = true;

  const ScreenState& screenState() const { return screenState_; }
  /// Of the screen that is shown.
  const std::string& title() const { return screens_.title(); }

  /// To be called once. Throws `InputError` when the recording cannot be read on.
  MeasurementReport run();

 private:
  void showIntendedUse();
  void measure(MainViewController& screen);
  MeasurementReport reportOf(const MainViewController& screen, const MeasurementTally& tally,
                             const RecordingSource& source) const;
  void addJudgement(MeasurementReport& report, const MeasurementJudge& judge) const;

  MeasurementRequest request_;
  std::unique_ptr<RecordingSource> source_;
  Services services_;
  ScreenState screenState_;
  CliAlerts alerts_;
  CliScreens screens_;
};

}  // namespace veyla
