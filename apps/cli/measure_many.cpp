#include "apps/cli/measure_many.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "apps/cli/complain.h"
#include "apps/cli/frame_averager.h"
#include "apps/cli/keeping.h"
#include "apps/cli/kept_recording.h"
#include "apps/cli/parallel.h"
#include "apps/cli/progress_bar.h"
#include "apps/cli/reference.h"
#include "apps/cli/report.h"
#include "apps/cli/settings_source.h"
#include "apps/cli/terminal.h"
#include "platform/format.h"
#include "platform/linux/output_file.h"
#include "platform/linux/store_error.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/text_columns.h"
#include "platform/linux/wall_clock.h"

namespace veyla {

namespace {

/// Seconds of a recording for each of several measurements of it; what does not finish within
/// these does not finish at all.
constexpr double usualDuration = 45;

/// Columns, of what is left of a measurement's line on a narrow terminal.
constexpr std::size_t hangingIndent = 4;

bool isFolder(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::is_directory(path, unknown);
}

/// Tells what of a folder is not measured.
void tellPassedOver(const std::string& folder, const std::set<std::string>& names) {
  constexpr std::size_t mostNamed = 3;
  if (names.empty()) return;
  std::string list;
  std::size_t named = 0;
  for (const std::string& name : names) {
    if (named == mostNamed) break;
    list += (named++ == 0 ? "" : ", ") + name;
  }
  const auto others = std::to_string(names.size() - named);
  complain(
      folder + ": passed over " + list + (others == "0" ? "" : " and " + others + " more") +
      ": no video by its ending, no series by its first line; name a file itself to measure it");
}

/// What is named, with the recordings that lie in a folder in its place, by their names; a folder
/// without any, or that cannot be read, stays as it is.
std::vector<std::string> recordingsAmong(const std::vector<std::string>& named) {
  std::vector<std::string> inputs;
  for (const std::string& path : named) {
    if (!isFolder(path)) {
      inputs.push_back(path);
      continue;
    }
    std::set<std::string> found;
    std::set<std::string> others;
    std::error_code fault;
    for (std::filesystem::directory_iterator entry(path, fault), end; !fault && entry != end;
         entry.increment(fault)) {
      const std::string name = entry->path().filename();
      if (name.starts_with('.') || name.ends_with(referenceEnding)) continue;
      if (looksLikeRecording(entry->path())) {
        found.insert(entry->path());
      } else {
        others.insert(name + (isFolder(entry->path()) ? "/" : ""));
      }
    }
    tellPassedOver(path, others);
    if (found.empty()) found.insert(path);
    inputs.insert(inputs.end(), found.begin(), found.end());
  }
  return inputs;
}

void requireOneMeasurement(const MeasureOptions& options) {
  const auto refuse = [&](const char* option) {
    throw UsageError(std::string(option) + ": of one measurement alone; " +
                     (options.every ? "leave --every" : "name one recording"));
  };
  if (!options.traceFile.empty()) refuse("--trace");
  if (!options.logFile.empty()) refuse("--log");
  if (!options.pictures.snapshotFile.empty()) refuse("--snapshot");
  if (!options.pictures.framesFolder.empty()) refuse("--frames");
  if (options.pictures.scale) refuse("--scale");
  if (options.realtime) refuse("--realtime");
}

/// One measurement of a recording.
struct Measured {
  double start = 0;
  MeasurementReport report;
  bool isStored = true;

  ExitStatus status() const {
    if (!isStored) return ExitStatus::unwritableData;
    return report.outcome == Outcome::finished ? ExitStatus::done : ExitStatus::incomplete;
  }
};

/// All that was measured of an input; nothing where it could not be read or kept, which `fault` and
/// `status` tell.
struct MeasuredInput {
  std::vector<Measured> measurements;
  std::string remark;
  std::string fault;
  ExitStatus status = ExitStatus::done;
};

/// Measures inputs with options that are the same for all.
class Measurer {
 public:
  Measurer(const MeasureOptions& options, const Resources& resources)
      : options_(options), resources_(resources) {
    if (options_.every && !options_.request.duration) options_.request.duration = usualDuration;
  }

  /// The input is decoded by `jobs` threads, and as many of several measurements of it run at once;
  /// `progress` is called after each, from one thread at a time, and `read` before them, while they
  /// are read.
  MeasuredInput measure(const std::string& input, int jobs,
                        const std::function<void(std::size_t done, std::size_t all)>& progress,
                        const std::function<void(double seconds)>& read = {}) const {
    MeasuredInput measured;
    try {
      if (isFolder(input)) {
        throw InputError(input +
                         ": no video and no colour series can be read in it; name a folder "
                         "that holds some");
      }
      auto source = openMeasured(input, options_.request.start, jobs);
      if (options_.every) {
        FrameAverager averager(resources_, options_.request.device);
        const KeptRecording recording(*source, averager, read);
        measured.remark = source->remark();
        measured.measurements = measureEach(recording, jobs, progress);
      } else {
        measured.measurements.push_back(
            measureOnce(std::move(source), options_.request.start, saves()));
        measured.remark = measured.measurements.front().report.remark;
      }
    } catch (const InputError& error) {
      measured.fault = error.what();
      measured.status = ExitStatus::unreadableInput;
    } catch (const StoreError& error) {
      measured.fault = error.what();
      measured.status = ExitStatus::unwritableData;
    }
    return measured;
  }

 private:
  bool saves() const { return options_.save && options_.asksToSave; }

  Measured measureOnce(std::unique_ptr<RecordingSource> source, double start, bool save) const {
    Keeping keeping(save, options_.dataFolder, {});
    TimedQueue queue;
    WallClock clock;
    MeasurementRequest request = options_.request;
    request.start = start;
    MeasurementRun run(request, std::move(source),
                       {.queue = queue,
                        .clock = clock,
                        .store = keeping.store(),
                        .resources = resources_,
                        .healthStore = keeping.healthStore()});
    Measured measured{start, run.run()};
    measured.isStored = keeping.finish(measured.report);
    return measured;
  }

  std::vector<Measured> measureEach(
      const KeptRecording& recording, int jobs,
      const std::function<void(std::size_t done, std::size_t all)>& progress) const {
    const double first = options_.request.start;
    const double duration = options_.request.duration.value();
    std::vector<double> starts;
    for (double start = first; starts.empty() || start < recording.seconds();
         start = first + static_cast<double>(starts.size()) * *options_.every) {
      starts.push_back(start);
    }
    std::vector<Measured> all(starts.size());
    std::mutex mutex;
    std::size_t done = 0;
    inParallel(starts.size(), jobs, [&](std::size_t i) {
      all[i] = measureOnce(recording.source(starts[i]), starts[i], saves() && !options_.best);
      const std::lock_guard lock(mutex);
      progress(++done, starts.size());
    });
    if (!options_.best) {
      // The end of the recording leaves the last ones too little.
      std::erase_if(all, [&](const Measured& each) {
        return each.start > first && each.start + duration > recording.seconds() &&
               each.report.outcome == Outcome::endOfInput && each.report.worth.finalValues == 0;
      });
      return all;
    }
    // Of equals the first.
    const auto best = std::max_element(
        all.begin(), all.end(),
        [](const Measured& a, const Measured& b) { return a.report.worth < b.report.worth; });
    if (!saves()) return {*best};
    return {measureOnce(recording.source(best->start), best->start, true)};
  }

  MeasureOptions options_;
  const Resources& resources_;
};

/// Prints what was measured, and has it for the table.
class Telling {
 public:
  Telling(const MeasureOptions& options, const std::vector<std::string>& inputs)
      : options_(options), isOne_(inputs.size() == 1) {
    if (!options.csvFile.empty()) table_.emplace(options.csvFile);
    if (isOne_) return;
    for (const std::string& input : inputs) {
      columns_ = std::max(columns_, columnsOf(printable(input)));
    }
  }

  void tell(const std::string& input, const MeasuredInput& measured) {
    std::string text;
    MeasuredPart part{.input = isOne_ ? "" : input, .start = std::nullopt};
    for (const Measured& each : measured.measurements) {
      rows_ += reportAsRow(each.report, input, each.start);
      if (options_.every) part.start = each.start;
      MeasurementRequest request = options_.request;
      if (options_.every) request.start = 0;
      text += options_.json ? reportAsJson(each.report, part)
                            : reportAsLine(each.report, request, part, columns_);
      worst_ = std::max(worst_, each.status());
    }
    if (!options_.json) text = wrapped(text, terminalBehind(STDOUT_FILENO), hangingIndent);
    if (options_.csvFile != "-") printOut(text);
    if (!measured.remark.empty()) complain(measured.remark);
    if (!measured.fault.empty()) complain(measured.fault);
    worst_ = std::max(worst_, measured.status);
  }

  /// What an interrupt says from now on.
  void tellWhenStopped(std::size_t done, std::size_t all, const char* ofWhat) const {
    // The best of a recording is known when all of it is measured.
    const bool saves = options_.save && options_.asksToSave && !(isOne_ && options_.best);
    complainWhenStopped(
        formatText("after %zu of %zu %s; ", done, all, ofWhat) +
        (!saves          ? "nothing is saved"
         : options_.best ? "their best are saved"
                         : "those that finished are saved") +
        (table_ && options_.csvFile != "-" ? "; " + options_.csvFile + " is not written" : ""));
  }

  /// Writes the table, where anything was measured. Returns the worst status of all.
  ExitStatus finish() {
    if (!table_ || rows_.empty()) return worst_;
    table_->write(rowHeader() + rows_);
    table_->commit();
    return worst_;
  }

 private:
  const MeasureOptions& options_;
  bool isOne_;
  std::size_t columns_ = 0;
  std::optional<OutputFile> table_;
  std::string rows_;
  ExitStatus worst_ = ExitStatus::done;
};

}  // namespace

std::unique_ptr<RecordingSource> openMeasured(const std::string& input, double from, int threads) {
  // Longer than any measurement of it.
  constexpr double builtInSeconds = 45;
  constexpr double builtInRate = 30;
  if (!input.empty()) return openRecording(input, from, threads);
  return std::make_unique<SyntheticSource>(FingerOptions{}, builtInSeconds, builtInRate);
}

ExitStatus measureMany(const MeasureOptions& options) {
  requireOneMeasurement(options);
  std::vector<std::string> inputs = recordingsAmong(options.inputs);
  if (inputs.empty()) inputs.emplace_back();
  const SettingsSource settings(options.settingsFolder, options.request.device);
  const Measurer measurer(options, settings.resources());
  Telling telling(options, inputs);
  ProgressBar bar("Measuring");
  if (inputs.size() == 1) {
    telling.tellWhenStopped(0, 1, "recordings");
    const auto progress = [&](std::size_t done, std::size_t all) {
      telling.tellWhenStopped(done, all, "measurements, before their lines");
      bar.show(done, all);
    };
    const MeasuredInput measured = measurer.measure(inputs.front(), options.jobs, progress,
                                                    [&](double seconds) { bar.showRead(seconds); });
    bar.clear();
    telling.tell(inputs.front(), measured);
    return telling.finish();
  }
  // In the order of the inputs, each as soon as it is its turn.
  std::mutex mutex;
  std::map<std::size_t, MeasuredInput> waiting;
  std::size_t told = 0;
  telling.tellWhenStopped(told, inputs.size(), "recordings");
  bar.show(0, inputs.size());
  inParallel(inputs.size(), options.jobs, [&](std::size_t number) {
    // Beside others a video takes no more threads than its share: each holds a frame.
    const auto share = threadsOf(options.jobs) / (inputs.size() - number);
    MeasuredInput measured =
        measurer.measure(inputs[number], std::max(static_cast<int>(share), 1), [](auto...) {});
    const std::lock_guard lock(mutex);
    waiting.emplace(number, std::move(measured));
    bar.clear();
    for (auto next = waiting.begin(); next != waiting.end() && next->first == told; ++told) {
      telling.tell(inputs[told], next->second);
      next = waiting.erase(next);
    }
    telling.tellWhenStopped(told, inputs.size(), "recordings");
    bar.show(told + waiting.size(), inputs.size());
  });
  bar.clear();
  return telling.finish();
}

}  // namespace veyla
