#include "apps/cli/measure_command.h"

#include <unistd.h>

#include <iostream>
#include <memory>
#include <vector>

#include "apps/cli/complain.h"
#include "apps/cli/live_view.h"
#include "apps/cli/report.h"
#include "apps/cli/settings_source.h"
#include "apps/cli/trace_file.h"
#include "history/history_store.h"
#include "platform/format.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/fhir_health_store.h"
#include "platform/linux/log_file.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/names.h"
#include "platform/linux/output_file.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/store_error.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/uuid.h"
#include "platform/linux/wall_clock.h"
#include "platform/no_services.h"

namespace veyla {

namespace {

/// The built-in recording; longer than any measurement of it.
constexpr double builtInSeconds = 45;
constexpr double builtInRate = 30;

bool somebodyIsThere() { return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1; }

/// Asks on the terminal; nothing where there is nobody to ask.
std::optional<bool> askForHealthRecords(HealthSampleType type) {
  if (!somebodyIsThere()) return std::nullopt;
  const std::string value =
      type == HealthSampleType::heartRate ? "heart rate" : "oxygen saturation";
  std::cerr << wrapped("Keep each final " + value +
                           " as a health record in the data folder, too? [y/N] ",
                       terminalBehind(STDERR_FILENO))
            << std::flush;
  std::string answer;
  if (!std::getline(std::cin, answer)) return std::nullopt;
  return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

constexpr const char* isSaved = "the measurement is saved, but ";

/// Where a measurement is kept: the user's data folder, or nowhere.
class Keeping {
 public:
  /// Throws `StoreError`.
  explicit Keeping(const MeasureOptions& options) {
    if (!options.save) {
      store_ = std::make_unique<MemoryKeyValueStore>();
      return;
    }
    folder_ = options.dataFolder.empty() ? defaultDataFolder()
                                         : std::filesystem::path(options.dataFolder);
    auto store = std::make_unique<SqliteKeyValueStore>(folder_);
    auto healthStore =
        std::make_unique<FhirHealthStore>(folder_, *store, uuids_, askForHealthRecords);
    if (healthStore->repair()) complain(*healthStore->repair());
    store->understands = Utils::mayStand;
    store->gatherChanges();
    healthStore->hold();
    store->gathered = [records = healthStore.get()](bool areStored) { records->settle(areStored); };
    stored_ = store.get();
    store_ = std::move(store);
    healthStore_ = std::move(healthStore);
  }

  KeyValueStore& store() { return *store_; }
  HealthStore& healthStore() {
    return healthStore_ ? static_cast<HealthStore&>(*healthStore_) : noHealthStore;
  }
  const std::filesystem::path& folder() const { return folder_; }

  /// Whether a health record was kept.
  bool keptRecord() const { return healthStore_ && healthStore_->hasSaved(); }

  /// Keeps what waits for the end, and tells on standard error what could not be kept; true when
  /// everything was.
  bool finish(const MeasurementReport& report) {
    if (!stored_) return true;
    stored_->synchronize();
    bool kept = true;
    for (const auto& failure : {stored_->failure(), healthStore_->failure()}) {
      if (!failure) continue;
      complain(report.isKept ? isSaved + *failure : *failure);
      kept = false;
    }
    return kept;
  }

 private:
  std::filesystem::path folder_;
  LibUuid uuids_;
  std::unique_ptr<KeyValueStore> store_;
  /// The same where it is a file.
  SqliteKeyValueStore* stored_ = nullptr;
  std::unique_ptr<FhirHealthStore> healthStore_;
};

/// The diagnostic log: a file, or none.
class Logging {
 public:
  /// Throws `OutputError`.
  Logging(const MeasureOptions& options, const Clock& clock, const MainQueue& queue) {
    if (options.logFile.empty()) return;
    file_.emplace(options.logFile, clock, queue, options.request.start);
    if (file_->failure()) throw OutputError(*file_->failure());
  }

  Log& log() { return file_ ? static_cast<Log&>(*file_) : noLog; }

  /// As for `Keeping`.
  bool tellFailure() const {
    if (!file_ || !file_->failure()) return true;
    complain(*file_->failure());
    return false;
  }

 private:
  std::optional<FileLog> file_;
};

/// Why a measurement that did not finish is not in the history, and what would be.
std::string nothingSaved(const MeasurementReport& report, bool keptRecord) {
  const char* saved = keptRecord ? "Only a health record saved" : "Nothing saved";
  const auto alone = [&](const char* name, float value, const char* unit) {
    return formatText("%s, since not every value became final: --only %s saves the %.0f %s.\n",
                      saved, name, static_cast<double>(value), unit);
  };
  // Nobody is advised to save what may not be relied on.
  if (report.heartrate && report.heartrateJudgement->doubts.empty()) {
    return alone("heartrate", *report.heartrate, "beats per minute");
  }
  if (report.spo2 && report.spo2Doubts->empty()) return alone("spo2", *report.spo2, "%");
  const bool lacksOxygen =
      report.outcome == Outcome::lowSignal ||
      (report.shortfall && report.shortfall->cause == Shortfall::Cause::oxygen);
  if (lacksOxygen) {
    return formatText("%s: a result with SpO2 takes oxygen values of 93 %% or more.\n", saved);
  }
  return formatText(
      "%s: a result takes a steady finger for some 10 to 20 seconds after the %d of the "
      "countdown.\n",
      saved, Measurement::countdownSeconds);
}

/// Runs the measurement and, on a terminal, shows it.
MeasurementReport runInView(MeasurementRun& run, bool quiet) {
  const Terminal terminal = terminalBehind(STDOUT_FILENO);
  if (quiet || !terminal.interactive) return run.run();
  LiveView view(terminal, run.screenState());
  const auto endedBefore = run.ended;
  run.screenChanged = [&](const MainViewController& screen) { view.update(screen); };
  run.ended = [&](const MainViewController& screen) {
    if (endedBefore) endedBefore(screen);
    view.end(screen);
    std::cout << '\n';
  };
  return run.run();
}

/// Has the pictures drawn while the measurement runs.
void drawPictures(MeasurementRun& run, ScreenPictures& pictures) {
  const auto shown = [&run](const MainViewController& screen) {
    return ScreenPictures::Screen{screen, run.screenState(), run.title()};
  };
  run.secondPassed = [&pictures, shown](int second, const MainViewController& screen) {
    pictures.addFrame(second, shown(screen));
  };
  run.ended = [&pictures, shown](const MainViewController& screen) {
    pictures.keepSnapshot(shown(screen));
  };
}

void requireSense(const MeasureOptions& options) {
  if (options.json && options.traceFile == "-") {
    throw UsageError("--json and --trace -: both would go to standard output; name a file");
  }
  if (options.pictures.scale && options.pictures.isEmpty()) {
    throw UsageError("--scale: nothing is drawn; give --snapshot or --frames as well");
  }
  const std::string& snapshot = options.pictures.snapshotFile;
  if (snapshot == "-") {
    throw UsageError("--snapshot -: the result goes to standard output; name a file");
  }
  if (!snapshot.empty() && endingOf(snapshot) != ".png") {
    throw UsageError("--snapshot: " + snapshot +
                     " does not end in .png; name a picture of this kind");
  }
  if (!snapshot.empty() && snapshot == options.traceFile) {
    throw UsageError("--snapshot and --trace: both would go to " + snapshot + "; name two files");
  }
}

ExitStatus measure(const MeasureOptions& options) {
  requireSense(options);
  std::unique_ptr<RecordingSource> source =
      options.input.empty()
          ? std::make_unique<SyntheticSource>(FingerOptions{}, builtInSeconds, builtInRate)
          : openRecording(options.input, options.request.start);
  const SettingsSource settings(options.settingsFolder, options.request.device);
  Keeping keeping(options);
  TimedQueue queue(options.realtime ? TimedQueue::Pace::wall : TimedQueue::Pace::recording);
  WallClock clock;
  Logging logging(options, clock, queue);
  std::unique_ptr<OutputFile> trace;
  if (!options.traceFile.empty()) trace = std::make_unique<OutputFile>(options.traceFile);
  ScreenPictures pictures(options.pictures);

  MeasurementRun run(options.request, std::move(source),
                     {.queue = queue,
                      .clock = clock,
                      .store = keeping.store(),
                      .resources = settings.resources(),
                      .healthStore = keeping.healthStore(),
                      .log = logging.log()});
  run.showsIntro = options.save && somebodyIsThere();
  // Written when all is measured and saved: a full disk then costs the trace alone.
  std::string rows = traceHeader();
  if (trace) {
    run.trace = [&](const MeasurementTally::Estimate& estimate) { rows += traceRow(estimate); };
  }
  if (!options.pictures.isEmpty()) drawPictures(run, pictures);
  const MeasurementReport report = runInView(run, options.json);

  if (!report.remark.empty()) complain(report.remark);
  const bool kept = keeping.finish(report);
  const bool logged = logging.tellFailure();
  std::string text = options.json ? reportAsJson(report) : reportAsText(report, options.request);
  if (!options.json) {
    const Terminal terminal = terminalBehind(STDOUT_FILENO);
    const bool finished = report.outcome == Outcome::finished;
    if (!finished && options.save) text += nothingSaved(report, keeping.keptRecord());
    text = wrapped(text, terminal);
    if (finished && options.save) {
      text += report.isKept ? "Saved in " + keeping.folder().string() + ".\n" : "Not saved.\n";
    }
  }
  bool written = writes([&] { printOut(text); }, options.save && report.isKept ? isSaved : "");
  written &= writes([&] {
    if (!trace) return;
    trace->write(rows);
    trace->commit();
  });
  written &= writes([&] { pictures.writeSnapshot(); });
  written &= writes([&] { pictures.requireFrames(); });
  if (!kept || !logged || !written) return ExitStatus::unwritableData;
  return report.outcome == Outcome::finished ? ExitStatus::done : ExitStatus::incomplete;
}

}  // namespace

ExitStatus runMeasure(const MeasureOptions& options) {
  return exitStatusOf([&] { return measure(options); });
}

}  // namespace veyla
