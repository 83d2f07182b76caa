#include "apps/cli/evaluate_command.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "apps/cli/complain.h"
#include "apps/cli/measurement_run.h"
#include "apps/cli/reference.h"
#include "apps/cli/settings_source.h"
#include "platform/format.h"
#include "platform/linux/log_file.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/no_health_store.h"
#include "platform/linux/output_file.h"

namespace veyla {

namespace {

constexpr std::string_view referenceEnding = ".reference.csv";
constexpr double countdownSeconds = 2;

struct Recording {
  std::string name;
  std::filesystem::path path;
  Reference reference;
  double seconds = 0;
};

/// One measured window and what the reference says of it.
struct Window {
  const Recording* recording = nullptr;
  double start = 0;
  MeasurementReport report;
  std::optional<double> heartrateError;
  std::optional<double> heartrateReference;
  std::optional<double> spo2Error;
};

double lengthOf(const std::filesystem::path& path) {
  const auto source = openRecording(path);
  double seconds = 0;
  while (source->advance()) seconds = source->time();
  if (const std::string remark = source->remark(); !remark.empty()) complain(remark);
  return seconds;
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

std::vector<Recording> recordingsIn(const std::string& folder) {
  std::error_code error;
  std::vector<std::filesystem::path> references;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().string().ends_with(referenceEnding)) references.push_back(entry.path());
  }
  if (error) throw InputError(folder + ": " + error.message() + "; give a folder of recordings");
  if (references.empty()) {
    throw InputError(folder + ": holds no NAME.reference.csv; put one beside each recording");
  }
  std::sort(references.begin(), references.end());
  std::vector<Recording> recordings;
  for (const auto& reference : references) {
    const std::filesystem::path path = recordingOf(reference);
    recordings.push_back({path.stem(), path, Reference(reference), lengthOf(path)});
  }
  return recordings;
}

void measure(Window& window, const EvaluateOptions& options, const Resources& resources) {
  TimedQueue queue{Date{}};
  MemoryKeyValueStore store;
  NoHealthStore healthStore;
  NoLog log;
  MeasurementRun run({.heartrate = options.heartrate,
                      .spo2 = options.spo2,
                      .device = options.device,
                      .start = window.start,
                      .duration = options.window},
                     openRecording(window.recording->path),
                     {.queue = queue,
                      .store = store,
                      .healthStore = healthStore,
                      .resources = resources,
                      .log = log});
  window.report = run.run();

  const double from = window.start + countdownSeconds;
  const double to = from + window.report.seconds;
  const Reference& reference = window.recording->reference;
  window.heartrateReference = reference.heartrate(from, to);
  if (window.report.heartrate && window.heartrateReference) {
    window.heartrateError =
        static_cast<double>(*window.report.heartrate) - *window.heartrateReference;
  }
  const auto spo2 = reference.spo2(from, to);
  if (window.report.spo2 && spo2) {
    window.spo2Error = static_cast<double>(*window.report.spo2) - *spo2;
  }
}

/// Measures all windows on `jobs` threads: each measurement has a platform of its own.
void measureAll(std::vector<Window>& windows, const EvaluateOptions& options,
                const Resources& resources) {
  const unsigned jobs = options.jobs > 0 ? static_cast<unsigned>(options.jobs)
                                         : std::max(1U, std::thread::hardware_concurrency());
  std::atomic<std::size_t> next{0};
  std::mutex failureMutex;
  std::exception_ptr failure;
  const auto work = [&] {
    try {
      for (std::size_t i = next++; i < windows.size(); i = next++) {
        measure(windows[i], options, resources);
      }
    } catch (...) {
      const std::lock_guard lock(failureMutex);
      failure = std::current_exception();
      next = windows.size();
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < jobs; ++i) threads.emplace_back(work);
  work();
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

/// The value that `share` of the sorted values do not exceed.
double quantile(const std::vector<double>& sorted, double share) {
  if (sorted.empty()) return std::nan("");
  const double position = share * static_cast<double>(sorted.size() - 1);
  return sorted[static_cast<std::size_t>(std::lround(position))];
}

struct Summary {
  std::string name;
  std::size_t windows = 0;
  std::size_t finished = 0;
  double meanError = 0;
  double medianError = 0;
  double meanPercentageError = 0;
  double shareOver5 = 0;
  double shareOver10 = 0;
  double spo2RootMeanSquare = 0;
  double medianSeconds = 0;
  double ninetiethSeconds = 0;
};

Summary summaryOf(const std::string& name, const std::vector<const Window*>& windows) {
  Summary summary;
  summary.name = name;
  summary.windows = windows.size();
  std::vector<double> errors;
  std::vector<double> seconds;
  double percentages = 0;
  double spo2Squares = 0;
  std::size_t spo2Count = 0;
  for (const Window* window : windows) {
    if (window->report.outcome == Outcome::finished) {
      ++summary.finished;
      seconds.push_back(window->report.seconds);
    }
    if (window->heartrateError) {
      errors.push_back(std::abs(*window->heartrateError));
      percentages += 100 * errors.back() / *window->heartrateReference;
    }
    if (window->spo2Error) {
      spo2Squares += *window->spo2Error * *window->spo2Error;
      ++spo2Count;
    }
  }
  std::sort(errors.begin(), errors.end());
  std::sort(seconds.begin(), seconds.end());
  const auto count = static_cast<double>(errors.size());
  const auto shareOver = [&](double limit) {
    const auto first = std::upper_bound(errors.begin(), errors.end(), limit);
    return 100 * static_cast<double>(errors.end() - first) / count;
  };
  double sum = 0;
  for (const double error : errors) sum += error;
  summary.meanError = sum / count;
  summary.medianError = quantile(errors, 0.5);
  summary.meanPercentageError = percentages / count;
  summary.shareOver5 = shareOver(5);
  summary.shareOver10 = shareOver(10);
  summary.spo2RootMeanSquare = std::sqrt(spo2Squares / static_cast<double>(spo2Count));
  summary.medianSeconds = quantile(seconds, 0.5);
  summary.ninetiethSeconds = quantile(seconds, 0.9);
  return summary;
}

/// Recordings of one kind are named alike, "resting-01", "resting-02": the part before the number.
std::string setOf(const std::string& name) {
  return name.substr(0, name.find_first_of("-0123456789"));
}

std::vector<Summary> summariesOf(const std::vector<Recording>& recordings,
                                 const std::vector<Window>& windows) {
  const auto select = [&](const auto& matches) {
    std::vector<const Window*> selected;
    for (const Window& window : windows) {
      if (matches(window.recording->name)) selected.push_back(&window);
    }
    return selected;
  };
  std::vector<Summary> summaries;
  std::vector<std::string> sets;
  for (const Recording& recording : recordings) {
    summaries.push_back(summaryOf(
        recording.name, select([&](const std::string& name) { return name == recording.name; })));
    const std::string set = setOf(recording.name);
    if (std::find(sets.begin(), sets.end(), set) == sets.end()) sets.push_back(set);
  }
  for (const std::string& set : sets) {
    summaries.push_back(summaryOf(
        "all " + set, select([&](const std::string& name) { return setOf(name) == set; })));
  }
  summaries.push_back(summaryOf("all", select([](const std::string&) { return true; })));
  return summaries;
}

std::string shown(double value, const char* unit = "") {
  return std::isfinite(value) ? formatText("%.1f%s", value, unit) : "--";
}

std::string asTable(const std::vector<Summary>& summaries, bool spo2) {
  std::string table =
      formatText("%-18s %8s %9s %6s %7s %6s %6s %6s %8s %8s", "recording", "windows", "finished",
                 "MAE", "median", "MAPE", ">5", ">10", "time", "90th");
  table += spo2 ? formatText(" %9s\n", "SpO2 RMSE") : "\n";
  for (const Summary& of : summaries) {
    table += formatText(
        "%-18s %8zu %9zu %6s %7s %6s %6s %6s %8s %8s", printable(of.name).c_str(), of.windows,
        of.finished, std::isfinite(of.meanError) ? formatText("%.2f", of.meanError).c_str() : "--",
        std::isfinite(of.medianError) ? formatText("%.2f", of.medianError).c_str() : "--",
        shown(of.meanPercentageError, "%").c_str(), shown(of.shareOver5, "%").c_str(),
        shown(of.shareOver10, "%").c_str(), shown(of.medianSeconds, " s").c_str(),
        shown(of.ninetiethSeconds, " s").c_str());
    table += spo2 ? formatText(" %9s\n", shown(of.spo2RootMeanSquare).c_str()) : "\n";
  }
  return table;
}

std::string asJson(const std::vector<Summary>& summaries) {
  const auto number = [](double value) {
    return std::isfinite(value) ? nlohmann::ordered_json(value) : nlohmann::ordered_json();
  };
  auto list = nlohmann::ordered_json::array();
  for (const Summary& of : summaries) {
    list.push_back({{"name", of.name},
                    {"windows", of.windows},
                    {"finished", of.finished},
                    {"meanAbsoluteError", number(of.meanError)},
                    {"medianAbsoluteError", number(of.medianError)},
                    {"meanAbsolutePercentageError", number(of.meanPercentageError)},
                    {"percentOver5", number(of.shareOver5)},
                    {"percentOver10", number(of.shareOver10)},
                    {"spo2RootMeanSquareError", number(of.spo2RootMeanSquare)},
                    {"medianSeconds", number(of.medianSeconds)},
                    {"ninetiethPercentileSeconds", number(of.ninetiethSeconds)}});
  }
  return list.dump(2) + '\n';
}

ExitStatus evaluate(const EvaluateOptions& options) {
  const SettingsSource settings(options.settingsFolder, options.device);
  const std::vector<Recording> recordings = recordingsIn(options.folder);
  std::vector<Window> windows;
  for (const Recording& recording : recordings) {
    for (double start = 0; start + options.window <= recording.seconds; start += options.every) {
      windows.emplace_back();
      windows.back().recording = &recording;
      windows.back().start = start;
    }
  }
  if (windows.empty()) {
    throw InputError(
        formatText("%s: no recording is as long as a window of %g s; give a shorter "
                   "--window",
                   options.folder.c_str(), options.window));
  }
  measureAll(windows, options, settings.resources());
  const auto summaries = summariesOf(recordings, windows);
  printOut(options.json ? asJson(summaries) : asTable(summaries, options.spo2));
  return ExitStatus::done;
}

}  // namespace

ExitStatus runEvaluate(const EvaluateOptions& options) {
  return exitStatusOf([&] { return evaluate(options); });
}

}  // namespace veyla
