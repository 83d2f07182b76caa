#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "apps/cli/kept_recording.h"
#include "apps/cli/measurement_run.h"
#include "apps/cli/reference.h"
#include "platform/resources.h"

namespace veyla {

/// What is evaluated: windows of every recording of a folder that has a `NAME.reference.csv`.
struct EvaluationRequest {
  std::string folder;
  /// Seconds of recording per measurement, the countdown included, and from one start to the next.
  double window = 42;
  double every = 20;
  bool heartrate = true;
  bool spo2 = false;
  std::string device = defaultDevice;
  /// How many measurements run at once; 0 for one per processor.
  int jobs = 0;
};

/// A value beside what the reference says of the time in which it was measured.
struct Comparison {
  double measured = 0;
  double reference = 0;

  double error() const { return measured - reference; }
};

/// One measured window.
struct EvaluatedWindow {
  /// Where it lies: number of the recording, and seconds into it.
  std::size_t recording = 0;
  double start = 0;
  MeasurementReport report;
  /// Against the mean of the reference's rows from the first stored frame to the frame that made
  /// the value final; nothing without a final value or without a row there.
  std::optional<Comparison> heartrate;
  std::optional<Comparison> spo2;
  /// Against that mean weighted by time (`Reference::heartratePerTime`).
  std::optional<Comparison> heartratePerTime;
  /// Whether the final heart rate is doubted.
  bool isMarked() const {
    return report.heartrateJudgement && !report.heartrateJudgement->doubts.empty();
  }
  /// Against the reference's rows `n` seconds later, for each `n` of `latestLag` and below.
  std::vector<std::optional<Comparison>> heartrateAtLag;
};

/// A recording with its reference.
struct ReferencedRecording {
  /// Without ending.
  std::string name;
  Reference reference;
  KeptRecording recording;
};

/// What a folder holds.
struct ReferencedFolder {
  /// In alphabetical order; at least one.
  std::vector<ReferencedRecording> recordings;
  /// A line for each reference or recording that cannot be used.
  std::vector<std::string> faults;
  /// The files that are recordings without a reference, in alphabetical order.
  std::vector<std::string> unreferenced;
};

/// Reads each recording once, as a measurement with these settings on this hardware model does.
/// `read` is told how many seconds of all of them it has. Throws `InputError` when there is nothing
/// to use.
ReferencedFolder recordingsIn(const std::string& folder, const Resources& resources,
                              const std::string& device,
                              const std::function<void(double seconds)>& read = {});

/// Seconds: a reference is not taken to come later than that.
constexpr std::size_t latestLag = 20;

struct Evaluation {
  /// Names without ending, in alphabetical order.
  std::vector<std::string> recordings;
  std::vector<EvaluatedWindow> windows;
  /// As of `ReferencedFolder`.
  std::vector<std::string> faults;
  std::vector<std::string> unreferenced;
};

/// Runs the whole measuring flow on every window. `progress` is called after each one, from one
/// thread at a time, with the number of windows measured so far and of all, and `read` before, as
/// of `recordingsIn`. Throws `InputError`.
Evaluation evaluateFolder(const EvaluationRequest& request, const Resources& resources,
                          const std::function<void(std::size_t done, std::size_t all)>& progress,
                          const std::function<void(double seconds)>& read = {});

/// What a summary is of.
enum class SummaryKind { recording, set, all };

/// The figures of some windows; not-a-number where nothing can be told. Errors are absolute ones of
/// the final heart rates, in beats per minute, shares and unfinished windows in per cent.
struct EvaluationSummary {
  SummaryKind kind = SummaryKind::recording;
  std::string name;
  std::size_t windows = 0;
  /// Those with every requested value final.
  std::size_t finished = 0;
  double unfinished = 0;
  double meanError = 0;
  double medianError = 0;
  double meanErrorPerTime = 0;
  /// Of the reference.
  double meanPercentageError = 0;
  double shareOver5 = 0;
  double shareOver10 = 0;
  /// Of the final heart rates, in per cent, those that are doubted; and the errors of the others.
  double shareMarked = 0;
  double meanErrorUnmarked = 0;
  double shareOver5Unmarked = 0;
  double shareOver10Unmarked = 0;
  /// Mean of measured minus reference.
  double bias = 0;
  /// By how many seconds the reference comes late: the lag with the least mean error, and that.
  double lag = 0;
  double meanErrorAtLag = 0;
  double spo2RootMeanSquare = 0;
  /// Seconds from the first stored frame to the end of finished measurements.
  double medianSeconds = 0;
  double ninetiethSeconds = 0;
};

/// One summary per recording, one per set and one of all. Recordings of a set are named alike up to
/// their number: "resting-01", "resting-02".
std::vector<EvaluationSummary> summariesOf(const Evaluation& evaluation);

/// The part of a recording's name that it shares with its set.
std::string setOf(const std::string& recording);

}  // namespace veyla
