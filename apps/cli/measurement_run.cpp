#include "apps/cli/measurement_run.h"

#include <algorithm>
#include <utility>

#include "acquisition/settings.h"
#include "measuring/app_delegate.h"
#include "measuring/repeating_timer.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/recording_camera.h"
#include "platform/linux/uuid.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "shell/intro_view_controller.h"

namespace veyla {

namespace {

Outcome outcomeOf(const MeasurementTally& tally, const CliAlerts& alerts) {
  if (tally.end() == MeasurementEnd::finished) return Outcome::finished;
  if (tally.end() == MeasurementEnd::lowSignal) return Outcome::lowSignal;
  return alerts.title().empty() ? Outcome::endOfInput : Outcome::alert;
}

}  // namespace

const char* nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::finished:
      return "finished";
    case Outcome::lowSignal:
      return "lowSignal";
    case Outcome::endOfInput:
      return "endOfInput";
    case Outcome::alert:
      break;
  }
  return "alert";
}

MeasurementRun::MeasurementRun(const MeasurementRequest& request,
                               std::unique_ptr<RecordingSource> source, const Services& services)
    : request_(request), source_(std::move(source)), services_(services) {}

MeasurementReport MeasurementRun::run() {
  // The machine.
  TimedQueue& queue = services_.queue;
  RecordingCamera camera(std::move(source_), queue,
                         {.start = request_.start, .duration = request_.duration});
  KissRealFft realFft;
  const NlohmannJsonParser json;
  const NlohmannJsonWriter jsonWriter;
  const CommandDevice device(request_.device);
  const IcuText text;
  LibUuid uuids;
  const Platform platform(servicesOf(queue, services_.clock, camera, realFft, services_.store,
                                     services_.healthStore, services_.resources, services_.log,
                                     json, jsonWriter, device, text, uuids, screenState_, alerts_,
                                     screens_));

  // What ends the run, and who is told of it.
  MeasurementTally tally(queue);
  tally.trace = trace;
  tally.ended = [&] { queue.stop(); };
  camera.setOnEnd([&] { queue.stop(); });
  alerts_.waitsForAnswer = [&] { queue.stop(); };
  screens_.introShown = [&] {
    if (showsIntro) showIntendedUse();
  };

  // The application: launched, shown, and used.
  MainViewController& screen = AppDelegate::instance().launch();
  screen.viewWillAppear();
  screen.viewDidAppear();
  screen.addObserver(tally);
  MeasurementJudge judge;
  if (isJudged) screen.addObserver(judge);
  measure(screen);

  MeasurementReport report = reportOf(screen, tally, camera.source());
  addJudgement(report, judge);
  if (report.outcome != Outcome::finished) screen.viewWillDisappear();
  return report;
}

void MeasurementRun::showIntendedUse() {
  IntroViewController intro(screenState_, [](const std::function<void()>& then) { then(); });
  intro.viewDidLoad();
  intro.buttonSkipTapped();
}

void MeasurementRun::measure(MainViewController& screen) {
  if (screenChanged) screenState_.changed = [&] { screenChanged(screen); };
  if (!request_.heartrate) screen.buttonCheckboxHeartrateTapped();
  if (!request_.spo2) screen.buttonCheckboxSpo2Tapped();
  screen.beginButtonPush();
  RepeatingTimer seconds;
  int second = 0;
  if (secondPassed) {
    secondPassed(second, screen);
    seconds.start(1, [&] { secondPassed(++second, screen); });
  }
  services_.queue.run();
  screenState_.changed = nullptr;
  screen.finishAnimations();
  if (ended) ended(screen);
}

MeasurementReport MeasurementRun::reportOf(const MainViewController& screen,
                                           const MeasurementTally& tally,
                                           const RecordingSource& source) const {
  MeasurementReport report;
  report.outcome = outcomeOf(tally, alerts_);
  if (screen.isHeartrateDone()) report.heartrate = screen.finalHeartrate();
  if (screen.isSpo2Done()) report.spo2 = screen.finalSpo2();
  report.seconds = tally.seconds();
  report.heartrateSeconds = tally.heartrateSeconds();
  report.spo2Seconds = tally.spo2Seconds();
  report.frames = screen.videoProcessing()->counter();
  report.framedrops = screen.videoProcessing()->framedrops();
  report.heartrateEstimates = tally.heartrateEstimates();
  report.spo2Estimates = tally.spo2Estimates();
  report.device = Utils::platformString();
  report.alertTitle = alerts_.title();
  report.alertSubtitle = alerts_.subtitle();
  report.isKept = screen.isKept();
  report.remark = source.remark();
  return report;
}

void MeasurementRun::addJudgement(MeasurementReport& report, const MeasurementJudge& judge) const {
  report.heartrateJudgement = judge.heartrate();
  report.spo2Doubts = judge.spo2();
  report.finger = judge.finger(request_.start);
  report.isBlack = judge.coach().isBlack();
  report.worth = judge.worth();
  report.shortfall = judge.shortfall(request_.start);
}

}  // namespace veyla
