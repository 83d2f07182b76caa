#include "apps/cli/evaluate_command.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "apps/cli/complain.h"
#include "apps/cli/csv_field.h"
#include "apps/cli/evaluation_plots.h"
#include "apps/cli/json_number.h"
#include "apps/cli/output_apart.h"
#include "apps/cli/progress_bar.h"
#include "apps/cli/settings_source.h"
#include "apps/cli/terminal.h"
#include "platform/format.h"
#include "platform/linux/output_file.h"

namespace veyla {

namespace {

/// A number with a unit, in a column of its width; "--" for one that is not known.
std::string cell(int width, int decimals, double value, const char* unit = "") {
  return formatText(
      "%*s", width,
      std::isfinite(value) ? formatText("%.*f%s", decimals, value, unit).c_str() : "--");
}

std::string heartrateRow(const EvaluationSummary& of) {
  return cell(7, 2, of.meanError) + cell(7, 2, of.medianError) +
         cell(7, 1, of.meanPercentageError, "%") + cell(7, 1, of.shareOver5, "%") +
         cell(7, 1, of.shareOver10, "%") + cell(8, 1, of.shareMarked, "%") +
         cell(7, 2, of.meanErrorUnmarked) + cell(7, 1, of.shareOver5Unmarked, "%") +
         cell(7, 1, of.shareOver10Unmarked, "%") + cell(7, 2, of.bias) +
         cell(9, 2, of.meanErrorPerTime) + cell(6, 0, of.lag, " s") + cell(7, 2, of.meanErrorAtLag);
}

std::string asTable(const std::vector<EvaluationSummary>& summaries,
                    const EvaluationRequest& request) {
  std::string table =
      formatText("%-18s%8s%9s%8s%8s", "recording", "windows", "finished", "time", "90th");
  if (request.heartrate) {
    table += formatText("%7s%7s%7s%7s%7s%8s%7s%7s%7s%7s%9s%6s%7s", "MAE", "median", "MAPE", ">5",
                        ">10", "unsure", "MAE*", ">5*", ">10*", "bias", "per time", "lag", "MAE");
  }
  table += request.spo2 ? formatText("%11s\n", "SpO2 RMSE") : "\n";
  for (const EvaluationSummary& of : summaries) {
    table += formatText("%-18s%8zu%9zu", printable(of.name).c_str(), of.windows, of.finished) +
             cell(8, 1, of.medianSeconds, " s") + cell(8, 1, of.ninetiethSeconds, " s");
    if (request.heartrate) table += heartrateRow(of);
    table += (request.spo2 ? cell(11, 1, of.spo2RootMeanSquare) : "") + '\n';
  }
  return table;
}

const char* nameOf(SummaryKind kind) {
  switch (kind) {
    case SummaryKind::recording:
      return "recording";
    case SummaryKind::set:
      return "set";
    case SummaryKind::all:
      break;
  }
  return "all";
}

std::string asJson(const std::vector<EvaluationSummary>& summaries) {
  auto list = nlohmann::ordered_json::array();
  for (const EvaluationSummary& of : summaries) {
    list.push_back({{"name", of.name},
                    {"kind", nameOf(of.kind)},
                    {"windows", of.windows},
                    {"finished", of.finished},
                    {"percentUnfinished", jsonNumber(of.unfinished)},
                    {"medianSeconds", jsonNumber(of.medianSeconds)},
                    {"ninetiethPercentileSeconds", jsonNumber(of.ninetiethSeconds)},
                    {"meanAbsoluteError", jsonNumber(of.meanError)},
                    {"medianAbsoluteError", jsonNumber(of.medianError)},
                    {"meanAbsolutePercentageError", jsonNumber(of.meanPercentageError)},
                    {"percentOver5", jsonNumber(of.shareOver5)},
                    {"percentOver10", jsonNumber(of.shareOver10)},
                    {"percentUnsure", jsonNumber(of.shareMarked)},
                    {"meanAbsoluteErrorOfSure", jsonNumber(of.meanErrorUnmarked)},
                    {"percentOver5OfSure", jsonNumber(of.shareOver5Unmarked)},
                    {"percentOver10OfSure", jsonNumber(of.shareOver10Unmarked)},
                    {"bias", jsonNumber(of.bias)},
                    {"meanAbsoluteErrorPerTime", jsonNumber(of.meanErrorPerTime)},
                    {"lagSeconds", jsonNumber(of.lag)},
                    {"meanAbsoluteErrorAtLag", jsonNumber(of.meanErrorAtLag)},
                    {"spo2RootMeanSquareError", jsonNumber(of.spo2RootMeanSquare)}});
  }
  return jsonText(list, 2);
}

/// One row per window: what was measured and what the reference says. Empty fields are not known.
void writeWindows(OutputFile& output, const Evaluation& evaluation) {
  const auto field = [](const auto& value) {
    return value ? formatText(",%.3f", static_cast<double>(*value)) : std::string(",");
  };
  const auto reference = [](const std::optional<Comparison>& comparison) {
    return comparison ? formatText(",%.3f", comparison->reference) : std::string(",");
  };
  output.write(
      "recording,start,outcome,seconds,heartrate,referenceHeartrate,referencePerTime,spo2,"
      "referenceSpo2,clarity,unsure\n");
  for (const EvaluatedWindow& window : evaluation.windows) {
    const MeasurementReport& report = window.report;
    output.write(csvField(evaluation.recordings[window.recording]) +
                 formatText(",%g,%s,%.3f", window.start, nameOf(report.outcome), report.seconds) +
                 field(report.heartrate) + reference(window.heartrate) +
                 reference(window.heartratePerTime) + field(report.spo2) + reference(window.spo2) +
                 field(report.heartrateJudgement ? std::optional(report.heartrateJudgement->clarity)
                                                 : std::nullopt) +
                 (window.isMarked()  ? ",1\n"
                  : report.heartrate ? ",0\n"
                                     : ",\n"));
  }
}

ExitStatus evaluate(const EvaluateOptions& options) {
  if (!options.plotsFolder.empty() && !options.request.heartrate) {
    throw UsageError("--plots: heart rates are plotted, which --only spo2 leaves out");
  }
  const SettingsSource settings(options.settingsFolder, options.request.device);
  // Before the work, so that a file that cannot be written is told at once.
  std::optional<OutputFile> windowsFile;
  std::error_code ignored;
  if (!options.windowsFile.empty()) {
    for (const auto& entry : std::filesystem::directory_iterator(options.request.folder, ignored)) {
      requireApart("--windows", options.windowsFile, entry.path());
    }
    windowsFile.emplace(options.windowsFile);
  }
  std::optional<EvaluationPlots> plots;
  if (!options.plotsFolder.empty()) plots.emplace(options.plotsFolder);
  complainWhenStopped("while measuring the folder; nothing is printed and no file is written");
  ProgressBar bar("Measuring");
  const Evaluation evaluation =
      evaluateFolder(options.request, settings.resources(),
                     [&](std::size_t done, std::size_t all) { bar.show(done, all); });
  bar.clear();
  complainWhenStopped("while printing; no file is half written");
  // One that cannot be written costs no other what was measured.
  const auto summaries = summariesOf(evaluation);
  bool written = writes(
      [&] { printOut(options.json ? asJson(summaries) : asTable(summaries, options.request)); });
  written &= writes([&] {
    if (!windowsFile) return;
    writeWindows(*windowsFile, evaluation);
    windowsFile->commit();
  });
  written &= writes([&] {
    if (!plots || plots->draw(evaluation)) return;
    complain("--plots: no window has both a heart rate and a reference; nothing is drawn");
  });
  if (const auto& others = evaluation.unreferenced; !others.empty()) {
    complain(others.front() +
             (others.size() > 1 ? formatText(" (and %zu more)", others.size() - 1) : "") +
             ": passed over; it has no NAME.reference.csv beside it");
  }
  for (const std::string& fault : evaluation.faults) complain(fault + "; left out");
  if (!written) return ExitStatus::unwritableData;
  return evaluation.faults.empty() ? ExitStatus::done : ExitStatus::unreadableInput;
}

}  // namespace

ExitStatus runEvaluate(const EvaluateOptions& options) {
  return exitStatusOf([&] { return evaluate(options); });
}

}  // namespace veyla
