#include "apps/cli/evaluate_command.h"

#include <unistd.h>

#include <algorithm>
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
#include "platform/linux/text_columns.h"

namespace veyla {

namespace {

/// A number with a unit, in a column of its width; "--" for one that is not known.
std::string cell(int width, int decimals, double value, const char* unit = "") {
  return formatText(
      "%*s", width,
      std::isfinite(value) ? formatText("%.*f%s", decimals, value, unit).c_str() : "--");
}

/// A row: what it is of, then its figures, each as wide as its column.
using Row = std::vector<std::string>;

Row headOf(const EvaluationRequest& request) {
  Row row{"recording"};
  const auto add = [&](int width, const char* head) {
    row.push_back(formatText("%*s", width, head));
  };
  add(8, "windows"), add(9, "finished"), add(8, "time"), add(8, "90th");
  if (request.heartrate) {
    for (const char* head : {"MAE", "median", "MAPE", ">5", ">10"}) add(7, head);
    add(8, "unsure");
    for (const char* head : {"MAE*", ">5*", ">10*", "bias"}) add(7, head);
    add(9, "per time"), add(13, "lag    MAE");
  }
  if (request.spo2) add(11, "SpO2 RMSE");
  return row;
}

Row rowOf(const EvaluationSummary& of, const EvaluationRequest& request) {
  Row row{printable(of.name), formatText("%8zu", of.windows), formatText("%9zu", of.finished),
          cell(8, 1, of.medianSeconds, " s"), cell(8, 1, of.ninetiethSeconds, " s")};
  if (request.heartrate) {
    row.insert(row.end(), {cell(7, 2, of.meanError), cell(7, 2, of.medianError),
                           cell(7, 1, of.meanPercentageError, "%"), cell(7, 1, of.shareOver5, "%"),
                           cell(7, 1, of.shareOver10, "%"), cell(8, 1, of.shareMarked, "%"),
                           cell(7, 2, of.meanErrorUnmarked), cell(7, 1, of.shareOver5Unmarked, "%"),
                           cell(7, 1, of.shareOver10Unmarked, "%"), cell(7, 2, of.bias),
                           cell(9, 2, of.meanErrorPerTime),
                           cell(6, 0, of.lag, " s") + cell(7, 2, of.meanErrorAtLag)});
  }
  if (request.spo2) row.push_back(cell(11, 1, of.spo2RootMeanSquare));
  return row;
}

/// Where the terminal is narrower than the table, its columns come in several tables, one below the
/// other.
std::string asTable(const std::vector<EvaluationSummary>& summaries,
                    const EvaluationRequest& request) {
  std::vector<Row> rows{headOf(request)};
  for (const EvaluationSummary& of : summaries) rows.push_back(rowOf(of, request));
  std::size_t names = 18;
  for (const Row& row : rows) names = std::max(names, columnsOf(row.front()));
  const Terminal terminal = terminalBehind(STDOUT_FILENO);
  const std::size_t most = terminal.interactive ? terminal.columns : std::string::npos;
  std::string table;
  const std::size_t columns = rows.front().size();
  for (std::size_t from = 1; from < columns;) {
    std::size_t to = from;
    for (std::size_t width = names; to < columns; ++to) {
      width += rows.front()[to].size();
      if (width > most && to > from) break;
    }
    if (from > 1) table += '\n';
    for (const Row& row : rows) {
      table += row.front() + std::string(names - columnsOf(row.front()), ' ');
      for (std::size_t i = from; i < to; ++i) table += row[i];
      table += '\n';
    }
    from = to;
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
  const Evaluation evaluation = evaluateFolder(
      options.request, settings.resources(),
      [&](std::size_t done, std::size_t all) { bar.show(done, all); },
      [&](double seconds) { bar.showRead(seconds); });
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
