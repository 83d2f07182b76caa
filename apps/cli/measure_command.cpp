#include "apps/cli/measure_command.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

#include "apps/cli/complain.h"
#include "apps/cli/keeping.h"
#include "apps/cli/live_view.h"
#include "apps/cli/measure_many.h"
#include "apps/cli/report.h"
#include "apps/cli/settings_source.h"
#include "apps/cli/trace_file.h"
#include "platform/format.h"
#include "platform/linux/log_file.h"
#include "platform/linux/names.h"
#include "platform/linux/output_file.h"
#include "platform/linux/wall_clock.h"
#include "platform/no_services.h"

namespace veyla {

namespace {

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
  const char* toOutput = options.csvFile == "-" ? "--csv" : options.json ? "--json" : nullptr;
  const char* other = options.traceFile == "-"                 ? "--trace -"
                      : options.json && options.csvFile == "-" ? "--json"
                                                               : nullptr;
  if (toOutput && other) {
    throw UsageError(std::string(toOutput) + " and " + other +
                     ": both would go to standard output; name a file");
  }
  if (options.best && !options.every) {
    throw UsageError("--best: of several measurements of a recording; give --every as well");
  }
}

void requireDrawable(const MeasureOptions& options) {
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

ExitStatus measure(const MeasureOptions& options, const std::string& input) {
  requireDrawable(options);
  std::unique_ptr<RecordingSource> source = openMeasured(input, options.request.start);
  const SettingsSource settings(options.settingsFolder, options.request.device);
  Keeping keeping(options.save, options.dataFolder, askForHealthRecords);
  requireNoKeptData(options.logFile);
  TimedQueue queue(options.realtime ? TimedQueue::Pace::wall : TimedQueue::Pace::recording);
  WallClock clock;
  Logging logging(options, clock, queue);
  std::unique_ptr<OutputFile> table;
  if (!options.csvFile.empty()) table = std::make_unique<OutputFile>(options.csvFile);
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
  const std::string stopped = "while measuring " +
                              (input.empty() ? "the built-in fingertip" : input) +
                              (options.save ? "; nothing is saved" : "");
  complainWhenStopped(stopped);
  if (!options.pictures.framesFolder.empty()) {
    run.secondPassed = [&, draw = run.secondPassed](int second, const MainViewController& screen) {
      draw(second, screen);
      if (second > 0 || !pictures.hasFrames()) return;
      complainWhenStopped(stopped + "; the pictures so far are in " +
                          options.pictures.framesFolder);
    };
  }
  run.ended = [&, drawn = run.ended](const MainViewController& screen) {
    if (screen.isKept()) {
      complainWhenStopped("when the measurement was saved in " + keeping.folder().string());
    }
    if (drawn) drawn(screen);
  };
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
  if (options.csvFile == "-") text.clear();
  bool written =
      writes([&] { printOut(text); }, options.save && report.isKept ? Keeping::isSaved : "");
  written &= writes([&] {
    if (!table) return;
    table->write(rowHeader() + reportAsRow(report, input, options.request.start));
    table->commit();
  });
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
  return exitStatusOf([&] {
    requireSense(options);
    const std::vector<std::string>& inputs = options.inputs;
    std::error_code unknown;
    const bool isFolder = !inputs.empty() && std::filesystem::is_directory(inputs.front(), unknown);
    if (inputs.size() > 1 || isFolder || options.every) return measureMany(options);
    return measure(options, inputs.empty() ? "" : inputs.front());
  });
}

}  // namespace veyla
