#include "apps/cli/evaluation.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <mutex>
#include <numeric>

#include "apps/cli/complain.h"
#include "apps/cli/parallel.h"
#include "measuring/measurement.h"
#include "platform/format.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/recording_source.h"

namespace veyla {

namespace {

KeptRecording recordingAt(const std::filesystem::path& path, FrameAverager& averager,
                          const std::function<void(double seconds)>& read) {
  const auto source = openRecording(path);
  KeptRecording recording(*source, averager, read);
  if (const std::string remark = source->remark(); !remark.empty()) complain(remark);
  return recording;
}

/// The recording that a reference belongs to: the file of its name with another ending.
std::filesystem::path recordingOf(const std::filesystem::path& reference) {
  const std::string file = reference.filename();
  const std::string stem = file.substr(0, file.size() - referenceEnding.size());
  std::filesystem::path found;
  for (const auto& entry : std::filesystem::directory_iterator(reference.parent_path())) {
    if (entry.path().stem() != stem) continue;
    if (!found.empty()) {
      throw InputError(reference.string() + ": both " + found.filename().string() + " and " +
                       entry.path().filename().string() + " lie beside it; leave one there");
    }
    found = entry.path();
  }
  if (found.empty()) {
    throw InputError(reference.string() + ": there is no recording " + stem +
                     ".* beside it; put both into the folder");
  }
  return found;
}

/// Of a folder with these references.
std::vector<std::string> unreferencedIn(const std::string& folder,
                                        const std::vector<std::filesystem::path>& references) {
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    auto reference = entry.path();
    reference.replace_extension(referenceEnding);
    const bool isReferenced =
        std::find(references.begin(), references.end(), reference) != references.end();
    const bool isReference = entry.path().string().ends_with(referenceEnding);
    if (!isReferenced && !isReference && looksLikeRecording(entry.path()))
      found.push_back(entry.path().string());
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::optional<Comparison> compared(std::optional<float> measured, std::optional<double> reference) {
  if (!measured || !reference) return std::nullopt;
  return Comparison{static_cast<double>(*measured), *reference};
}

void measure(EvaluatedWindow& window, const ReferencedRecording& referenced,
             const EvaluationRequest& request, const Resources& resources) {
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  MeasurementRun run({.heartrate = request.heartrate,
                      .spo2 = request.spo2,
                      .device = request.device,
                      .start = window.start,
                      .duration = request.window},
                     referenced.recording.source(window.start),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  window.report = run.run();

  const MeasurementReport& report = window.report;
  const Reference& reference = referenced.reference;
  const double from = window.start + Measurement::countdownSeconds;
  const double to = from + report.heartrateSeconds;
  window.heartrate = compared(report.heartrate, reference.heartrate(from, to));
  window.heartratePerTime = compared(report.heartrate, reference.heartratePerTime(from, to));
  for (std::size_t n = 0; n <= latestLag; ++n) {
    const auto lag = static_cast<double>(n);
    window.heartrateAtLag.push_back(
        compared(report.heartrate, reference.heartrate(from + lag, to + lag)));
  }
  window.spo2 = compared(report.spo2, reference.spo2(from, from + report.spo2Seconds));
}

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

double meanOf(const std::vector<double>& values) {
  if (values.empty()) return unknown;
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

/// The value that `share` of the values do not exceed, on a line between the two nearest.
double quantileOf(std::vector<double> values, double share) {
  if (values.empty()) return unknown;
  std::sort(values.begin(), values.end());
  const double position = share * static_cast<double>(values.size() - 1);
  const auto below = static_cast<std::size_t>(position);
  const std::size_t above = std::min(below + 1, values.size() - 1);
  return std::lerp(values[below], values[above], position - static_cast<double>(below));
}

double shareOver(const std::vector<double>& values, double limit) {
  if (values.empty()) return unknown;
  const auto over =
      std::count_if(values.begin(), values.end(), [=](double value) { return value > limit; });
  return 100 * static_cast<double>(over) / static_cast<double>(values.size());
}

using Selection = std::vector<const EvaluatedWindow*>;

/// `value` of every comparison that `which` finds in a window.
template <class Which, class ValueOf>
std::vector<double> valuesOf(const Selection& windows, const Which& which, const ValueOf& value) {
  std::vector<double> values;
  for (const EvaluatedWindow* window : windows) {
    if (const std::optional<Comparison>& found = which(*window)) values.push_back(value(*found));
  }
  return values;
}

double absoluteError(const Comparison& of) { return std::abs(of.error()); }

EvaluationSummary summaryOf(SummaryKind kind, const std::string& name, const Selection& windows) {
  using Window = EvaluatedWindow;
  const auto heartrate = [](const Window& window) -> auto& { return window.heartrate; };
  const auto perTime = [](const Window& window) -> auto& { return window.heartratePerTime; };
  const auto spo2 = [](const Window& window) -> auto& { return window.spo2; };

  EvaluationSummary summary;
  summary.kind = kind;
  summary.name = name;
  summary.windows = windows.size();
  std::vector<double> seconds;
  for (const Window* window : windows) {
    if (window->report.outcome == Outcome::finished) seconds.push_back(window->report.seconds);
  }
  summary.finished = seconds.size();
  summary.unfinished = 100 * static_cast<double>(summary.windows - summary.finished) /
                       static_cast<double>(summary.windows);
  summary.medianSeconds = quantileOf(seconds, 0.5);
  summary.ninetiethSeconds = quantileOf(seconds, 0.9);

  const std::vector<double> errors = valuesOf(windows, heartrate, absoluteError);
  summary.meanError = meanOf(errors);
  summary.medianError = quantileOf(errors, 0.5);
  summary.shareOver5 = shareOver(errors, 5);
  summary.shareOver10 = shareOver(errors, 10);
  Selection unmarked;
  std::copy_if(windows.begin(), windows.end(), std::back_inserter(unmarked),
               [](const Window* window) { return !window->isMarked(); });
  const std::vector<double> trusted = valuesOf(unmarked, heartrate, absoluteError);
  summary.shareMarked =
      errors.empty()
          ? unknown
          : 100 * (1 - static_cast<double>(trusted.size()) / static_cast<double>(errors.size()));
  summary.meanErrorUnmarked = meanOf(trusted);
  summary.shareOver5Unmarked = shareOver(trusted, 5);
  summary.shareOver10Unmarked = shareOver(trusted, 10);
  summary.meanErrorPerTime = meanOf(valuesOf(windows, perTime, absoluteError));
  summary.bias = meanOf(valuesOf(windows, heartrate, [](auto& of) { return of.error(); }));
  summary.meanPercentageError = meanOf(valuesOf(
      windows, heartrate, [](auto& of) { return 100 * absoluteError(of) / of.reference; }));
  summary.spo2RootMeanSquare =
      std::sqrt(meanOf(valuesOf(windows, spo2, [](auto& of) { return of.error() * of.error(); })));

  summary.lag = unknown;
  summary.meanErrorAtLag = unknown;
  // Rows that come later say nothing where there are none to be late.
  for (std::size_t lag = 0; lag <= latestLag && !errors.empty(); ++lag) {
    const auto atLag = [=](const Window& window) -> auto& { return window.heartrateAtLag[lag]; };
    const double error = meanOf(valuesOf(windows, atLag, absoluteError));
    if (lag == 0 || error < summary.meanErrorAtLag) {
      summary.meanErrorAtLag = error;
      summary.lag = static_cast<double>(lag);
    }
  }
  return summary;
}

}  // namespace

ReferencedFolder recordingsIn(const std::string& folder, const Resources& resources,
                              const std::string& device,
                              const std::function<void(double seconds)>& read) {
  std::error_code error;
  std::vector<std::filesystem::path> references;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().string().ends_with(referenceEnding)) references.push_back(entry.path());
  }
  if (error == std::errc::no_such_file_or_directory) {
    throw InputError(folder + ": no such folder; check the name");
  }
  if (error == std::errc::not_a_directory) {
    throw InputError(folder + ": a file; name the folder that it is in");
  }
  if (error == std::errc::permission_denied) {
    throw InputError(folder + ": no permission to read it; change its permissions");
  }
  if (error) throw InputError(folder + ": " + error.message() + "; give a folder of recordings");
  if (references.empty()) {
    throw InputError(folder + ": holds no NAME.reference.csv; put one beside each recording");
  }
  std::sort(references.begin(), references.end());
  ReferencedFolder found;
  FrameAverager averager(resources, device);
  double before = 0;
  const auto readMore = [&](double seconds) {
    if (read) read(before + seconds);
  };
  for (const auto& reference : references) {
    try {
      const std::filesystem::path path = recordingOf(reference);
      found.recordings.push_back(
          {path.stem(), Reference(reference), recordingAt(path, averager, readMore)});
      before += found.recordings.back().recording.seconds();
    } catch (const InputError& fault) {
      if (references.size() == 1) throw;
      found.faults.emplace_back(fault.what());
    }
  }
  if (found.recordings.empty()) {
    throw InputError(found.faults.front() +
                     formatText(" (%zu more are as bad)", found.faults.size() - 1));
  }
  found.unreferenced = unreferencedIn(folder, references);
  return found;
}

Evaluation evaluateFolder(const EvaluationRequest& request, const Resources& resources,
                          const std::function<void(std::size_t done, std::size_t all)>& progress,
                          const std::function<void(double seconds)>& read) {
  const ReferencedFolder folder = recordingsIn(request.folder, resources, request.device, read);
  const std::vector<ReferencedRecording>& recordings = folder.recordings;
  Evaluation evaluation;
  evaluation.faults = folder.faults;
  evaluation.unreferenced = folder.unreferenced;
  for (std::size_t i = 0; i < recordings.size(); ++i) {
    evaluation.recordings.push_back(recordings[i].name);
    const double seconds = recordings[i].recording.seconds();
    for (int n = 0; n * request.every + request.window <= seconds; ++n) {
      evaluation.windows.emplace_back();
      evaluation.windows.back().recording = i;
      evaluation.windows.back().start = n * request.every;
    }
  }
  if (evaluation.windows.empty()) {
    throw InputError(
        formatText("%s: no recording is as long as a window of %g s; give a shorter --window",
                   request.folder.c_str(), request.window));
  }
  std::mutex progressMutex;
  std::size_t done = 0;
  inParallel(evaluation.windows.size(), request.jobs, [&](std::size_t number) {
    EvaluatedWindow& window = evaluation.windows[number];
    measure(window, recordings[window.recording], request, resources);
    const std::lock_guard lock(progressMutex);
    if (progress) progress(++done, evaluation.windows.size());
  });
  return evaluation;
}

std::vector<EvaluationSummary> summariesOf(const Evaluation& evaluation) {
  const auto select = [&](const auto& matches) {
    Selection selected;
    for (const EvaluatedWindow& window : evaluation.windows) {
      if (matches(evaluation.recordings[window.recording])) selected.push_back(&window);
    }
    return selected;
  };
  std::vector<EvaluationSummary> summaries;
  std::vector<std::string> sets;
  for (const std::string& recording : evaluation.recordings) {
    summaries.push_back(
        summaryOf(SummaryKind::recording, recording,
                  select([&](const std::string& name) { return name == recording; })));
    const std::string set = setOf(recording);
    if (std::find(sets.begin(), sets.end(), set) == sets.end()) sets.push_back(set);
  }
  for (const std::string& set : sets) {
    summaries.push_back(
        summaryOf(SummaryKind::set, "all " + set,
                  select([&](const std::string& name) { return setOf(name) == set; })));
  }
  summaries.push_back(
      summaryOf(SummaryKind::all, "all", select([](const std::string&) { return true; })));
  return summaries;
}

std::string setOf(const std::string& recording) {
  return recording.substr(0, recording.find_first_of("-0123456789"));
}

}  // namespace veyla
