#include "apps/cli/measurement_run.h"

#include <algorithm>
#include <utility>

#include "acquisition/settings.h"
#include "measuring/app_delegate.h"
#include "measuring/repeating_timer.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/no_sharing.h"
#include "platform/linux/recording_camera.h"
#include "platform/linux/uuid.h"
#include "platform/platform.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "shell/intro_view_controller.h"

namespace veyla {

namespace {

class CommandDevice : public DeviceInfo {
 public:
  explicit CommandDevice(std::string hardwareModel) : hardwareModel_(std::move(hardwareModel)) {}

  std::string hardwareModel() const override { return hardwareModel_; }
  std::string systemVersion() const override { return "Linux"; }
  std::string bundleVersion() const override { return VEYLA_VERSION; }

 private:
  std::string hardwareModel_;
};

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
  TimedQueue& queue = services_.queue;
  RecordingCamera camera(std::move(source_), queue,
                         {.start = request_.start, .duration = request_.duration});
  KissRealFft realFft;
  NlohmannJsonParser json;
  NlohmannJsonWriter jsonWriter;
  CommandDevice device(request_.device);
  IcuText text;
  LibUuid uuids;
  NoSharing sharing;
  Platform platform({.log = services_.log,
                     .mainQueue = queue,
                     .clock = queue,
                     .camera = camera,
                     .realFft = realFft,
                     .store = services_.store,
                     .healthStore = services_.healthStore,
                     .resources = services_.resources,
                     .json = json,
                     .jsonWriter = jsonWriter,
                     .device = device,
                     .dates = text,
                     .numbers = text,
                     .regularExpressions = text,
                     .characters = text,
                     .uuids = uuids,
                     .measuringDisplay = screenState_,
                     .alertView = alerts_,
                     .screens = screens_,
                     .sharing = sharing});

  MeasurementTally tally(queue);
  tally.trace = trace;
  tally.ended = [&] { queue.stop(); };
  camera.setOnEnd([&] { queue.stop(); });
  alerts_.waitsForAnswer = [&] { queue.stop(); };
  IntroViewController intro(screenState_, [](const std::function<void()>& then) { then(); });
  screens_.introShown = [&] {
    if (!showsIntro) return;
    intro.viewDidLoad();
    intro.buttonSkipTapped();
  };

  AppDelegate& application = AppDelegate::instance();
  application.application(LaunchOptions{});
  MainViewController& screen = application.mainViewController();
  screen.viewDidLoad();
  screen.viewWillAppear();
  application.applicationDidBecomeActive();
  screen.viewDidAppear();
  screen.setObserver(&tally);
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
  queue.run();
  screenState_.changed = nullptr;
  screen.finishAnimations();
  if (ended) ended(screen);

  MeasurementReport report;
  report.outcome = outcomeOf(tally, alerts_);
  if (screen.isHeartrateDone()) report.heartrate = screen.finalHeartrate();
  if (screen.isSpo2Done()) report.spo2 = screen.finalSpo2();
  report.spo2LacksBlue = report.spo2 && screen.spo2Processing()->lacksBlue();
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
  report.remark = camera.source().remark();
  if (report.outcome != Outcome::finished) screen.viewWillDisappear();
  return report;
}

}  // namespace veyla
