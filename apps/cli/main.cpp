#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "apps/cli/chart_command.h"
#include "apps/cli/choices.h"
#include "apps/cli/complain.h"
#include "apps/cli/decimal.h"
#include "apps/cli/demo_history_command.h"
#include "apps/cli/description.h"
#include "apps/cli/evaluate_command.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/health_command.h"
#include "apps/cli/history_command.h"
#include "apps/cli/measure_command.h"
#include "apps/cli/output_apart.h"
#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/output_file.h"

namespace {

using veyla::ExitStatus;

/// Accepts numbers from `least` to `most` and refuses not-a-number, which a plain range lets pass.
CLI::Validator numberWithin(double least, double most, bool whole = false) {
  return CLI::Validator(
      [=](std::string& text) -> std::string {
        double value = 0;
        // A leading zero would make it octal: another number than the one that is meant.
        const bool isDecimal = text.find_first_not_of("0123456789") == std::string::npos &&
                               (text == "0" || !text.starts_with('0'));
        if (CLI::detail::lexical_cast(text, value) && value >= least && value <= most &&
            (!whole || isDecimal)) {
          return {};
        }
        std::string range;
        veyla::appendDecimal(range, least);
        range += " to ";
        veyla::appendDecimal(range, most);
        return "\"" + text + "\" is no" + (whole ? " whole" : "") + " number from " + range;
      },
      "");
}

/// The command itself knows the range.
CLI::Validator number() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        double value = 0;
        if (CLI::detail::lexical_cast(text, value)) return {};
        return "\"" + text + "\" is no number";
      },
      "");
}

CLI::Validator oneOf(const std::vector<std::string>& names) {
  return CLI::Validator(
      [names](std::string& text) -> std::string {
        if (std::find(names.begin(), names.end(), text) != names.end()) return {};
        return "\"" + text + "\" is none of " + CLI::detail::join(names, ", ");
      },
      "");
}

/// A script's variable that was never set must not pass for an option that was not given.
CLI::Validator something() {
  return CLI::Validator(
      [](std::string& text) -> std::string { return text.empty() ? "its text is empty" : ""; }, "");
}

constexpr double longestSeconds = 1000000;
/// From a thumbnail to a poster.
constexpr double smallestScale = 0.25;
constexpr double largestScale = 8;

/// `value` is how the help names what the option takes.
CLI::Option* addText(CLI::App& command, const char* name, std::string& text, const char* value,
                     const char* description) {
  return command.add_option(name, text, description)->type_name(value)->check(something());
}

template <class Number>
CLI::Option* addNumber(CLI::App& command, const char* name, Number& target, const char* value,
                       const char* description, const CLI::Validator& check = number()) {
  return command.add_option(name, target, description)->type_name(value)->check(check);
}

void describeSettings(CLI::App& command, std::string& device, std::string& folder) {
  addText(command, "--device", device, "MODEL",
          "hardware model that chooses the settings (iPhone8,1)");
  addText(command, "--settings", folder, "DIR",
          "the three settings files of this folder instead of the built-in ones");
}

void describeMeasure(CLI::App& command, veyla::MeasureOptions& options, std::string& only) {
  addText(command, "INPUT", options.input, "",
          "a video, or a colour series time,R,G,B; without it, the built-in fingertip");
  addNumber(command, "--start", options.request.start, "S",
            "tap START S seconds into the recording", numberWithin(0, longestSeconds));
  addNumber(command, "--duration", options.request.duration, "S",
            "use S seconds from there, the 2 seconds of countdown included",
            numberWithin(0.001, longestSeconds));
  addText(command, "--only", only, "heartrate|spo2", "measure one value alone")
      ->check(oneOf({"heartrate", "spo2"}));
  describeSettings(command, options.request.device, options.settingsFolder);
  auto* data = addText(command, "--data", options.dataFolder, "DIR",
                       "keep history and health records in this folder (~/.local/share/veyla)");
  command
      .add_flag_callback(
          "--no-save", [&] { options.save = false; }, "keep nothing")
      ->excludes(data);
  command.add_flag("--json", options.json, "print one JSON object");
  addText(command, "--trace", options.traceFile, "FILE", "write one row per estimate, as CSV");
  addText(command, "--log", options.logFile, "FILE",
          "write the diagnostic log (-: standard error)");
  addText(command, "--snapshot", options.pictures.snapshotFile, "FILE.png",
          "draw the measuring screen as it ended");
  addText(command, "--frames", options.pictures.framesFolder, "DIR",
          "draw it each second since START: 0000.png, 0001.png, ...");
  addNumber(command, "--scale", options.pictures.scale, "N",
            "pixels per point of the pictures, which are 390 x 844 points (2)",
            numberWithin(smallestScale, largestScale));
  command.add_flag("--realtime", options.realtime, "measure at the recording's own pace");
}

void describeSeries(CLI::App& command, veyla::SeriesOptions& options) {
  addText(command, "INPUT", options.input, "", "a video or a colour series")->required();
  addText(command, "-o", options.output, "OUT.csv", "file of the series (-: standard output)")
      ->required();
  addText(command, "--device", options.device, "MODEL",
          "hardware model whose way of averaging frames is taken (iPhone8,1)");
}

void describeSynth(CLI::App& command, veyla::SynthOptions& options, std::string& size) {
  addText(command, "OUT", options.output, "", "a video by its ending, or a series (.csv)")
      ->required();
  addNumber(command, "--bpm", options.bpm, "N", "heart rate in beats per minute (72)");
  addNumber(command, "--spo2", options.spo2, "N",
            "saturation that the colours are to give, in per cent (97)");
  addNumber(command, "--seconds", options.seconds, "N", "length (30)");
  addNumber(command, "--fps", options.fps, "N", "frames per second (30)");
  addText(command, "--size", size, "WxH", "of a frame (640x480)");
  addNumber(command, "--noise", options.noise, "N", "sensor noise in 8-bit steps (1)");
  addNumber(command, "--motion", options.motion, "N", "movements of the finger (0)");
  constexpr double largestSeed = 4294967295;
  addNumber(command, "--seed", options.seed, "N", "another finger for every number (1)",
            numberWithin(0, largestSeed, true));
  command.add_option("--from", options.from, "draw a recorded colour series as frames")
      ->type_name("SERIES.csv")
      ->check(something());
}

void describeEvaluate(CLI::App& command, veyla::EvaluateOptions& options, std::string& only) {
  addText(command, "FOLDER", options.request.folder, "",
          "recordings, each with a NAME.reference.csv")
      ->required();
  addNumber(command, "--window", options.request.window, "S",
            "seconds per measurement, countdown included (42)", numberWithin(3, longestSeconds));
  addNumber(command, "--every", options.request.every, "S",
            "seconds from one start to the next (20)", numberWithin(0.1, longestSeconds));
  addText(command, "--only", only, "heartrate|spo2|both", "what is measured (heartrate)")
      ->check(oneOf({"heartrate", "spo2", "both"}));
  describeSettings(command, options.request.device, options.settingsFolder);
  addNumber(command, "--jobs", options.request.jobs, "N", "measurements at a time (one per core)",
            numberWithin(1, 1024, true));
  command.add_flag("--json", options.json, "print a JSON list");
  addText(command, "--windows", options.windowsFile, "FILE", "write a row per window, as CSV");
  addText(command, "--plots", options.plotsFolder, "DIR", "draw what was found as two pictures");
}

/// How the help names a label.
std::string labelForm() { return CLI::detail::join(veyla::labelChoices(), "|"); }

void describeChart(CLI::App& command, veyla::ChartOptions& options) {
  addText(command, "--period", options.period, "week|month|3months|all", "days up to today (week)");
  addText(command, "--label", options.label, labelForm().c_str(),
          "only entries with this label; none for all");
  addText(command, "-o", options.output, "FILE", "write a picture by its ending, .png or .svg");
  addText(command, "--data", options.dataFolder, "DIR",
          "folder of the history (~/.local/share/veyla)");
}

void describeDemoHistory(CLI::App& command, veyla::DemoHistoryOptions& options) {
  addNumber(command, "--days", options.days, "N", "days up to today (90)",
            numberWithin(1, veyla::DemoHistoryOptions::mostDays, true));
  addText(command, "--data", options.dataFolder, "DIR",
          "folder without a history (~/.local/share/veyla-demo)");
}

CLI::Option* addData(CLI::App& command, std::string& folder, const char* description) {
  return addText(command, "--data", folder, "DIR", description);
}

/// `numbers` is one number or a list.
template <class Numbers>
CLI::Option* addEntries(CLI::App& command, Numbers& numbers, const char* description) {
  constexpr double mostEntries = 1e9;
  return command.add_option("N", numbers, description)
      ->type_name("")
      ->check(numberWithin(1, mostEntries, true));
}

/// `run` gets each command's turn.
void describeHistory(CLI::App& history, veyla::HistoryOptions& options,
                     const std::function<void(ExitStatus (*)(const veyla::HistoryOptions&))>& run) {
  constexpr const char* data = "folder of the history (~/.local/share/veyla)";
  const auto add = [&](const char* name, const char* description,
                       ExitStatus (*command)(const veyla::HistoryOptions&)) -> CLI::App& {
    CLI::App& added = *history.add_subcommand(name, description);
    addData(added, options.dataFolder, data);
    added.callback([command, &run] { run(command); });
    return added;
  };
  history.require_subcommand(0, 1);
  addData(history, options.dataFolder, data);
  history.add_flag("--json", options.json, "print a JSON list");
  history.callback([&history, &run] {
    if (history.get_subcommands().empty()) run(veyla::runHistoryList);
  });

  CLI::App& label = add("label", "put a label on an entry, or take it off", veyla::runHistoryLabel);
  addEntries(label, options.number, "the entry's number in the list")->required();
  label.add_option("NAME", options.label, "the label; none takes all off")
      ->type_name(labelForm())
      ->check(something())
      ->required();
  label.add_flag("--off", options.off, "take the label off");

  CLI::App& remove = add("delete", "delete entries", veyla::runHistoryDelete);
  addEntries(remove, options.numbers, "the entries' numbers in the list")->required();

  CLI::App& csv = add("export", "write entries as CSV", veyla::runHistoryExport);
  addEntries(csv, options.numbers, "the entries' numbers in the list (all)");
  addText(csv, "-o", options.output, "FILE.csv", "file to write (-: standard output)")->required();

  CLI::App& mail = add("mail",
                       "open a mail with entries as an attached CSV file in the mail "
                       "program",
                       veyla::runHistoryMail);
  addEntries(mail, options.numbers, "the entries' numbers in the list (all)");
  mail.add_flag("--text", options.text, "put the lines into the mail itself");
  addText(mail, "-o", options.output, "FILE.eml",
          "write the mail's draft to this file instead (-: standard output)");
}

void describeHealth(CLI::App& health, veyla::HealthOptions& options, ExitStatus& status) {
  constexpr const char* data = "folder of the health records (~/.local/share/veyla)";
  health.require_subcommand(0, 1);
  addData(health, options.dataFolder, data);
  health.callback([&] {
    if (health.get_subcommands().empty()) status = veyla::runHealthStatus(options);
  });

  CLI::App& records =
      *health.add_subcommand("export", "write all records, one FHIR R4 Observation a line");
  addText(records, "-o", options.output, "FILE.ndjson", "file to write (-: standard output)")
      ->required();
  records.callback([&] { status = veyla::runHealthExport(options); });

  for (const bool allowed : {true, false}) {
    CLI::App& answer =
        allowed ? *health.add_subcommand("allow", "keep a record of each final value from now on")
                : *health.add_subcommand("deny", "keep no more records of final values");
    addText(answer, "VALUE", options.type, "heartrate|spo2", "which value")
        ->check(oneOf({"heartrate", "spo2"}))
        ->required();
    answer.callback([&, allowed] { status = veyla::runHealthAllow(options, allowed); });
  }
  for (CLI::App* command : health.get_subcommands({})) addData(*command, options.dataFolder, data);
}

/// The commands that were chosen, the innermost last, as they are typed.
std::string chosenCommands(const CLI::App& program) {
  std::string names;
  for (auto chosen = program.get_subcommands(); !chosen.empty();
       chosen = chosen.front()->get_subcommands()) {
    names += chosen.front()->get_name() + " ";
  }
  return names;
}

/// What was wrong with the command line, and where the right form stands.
std::string explained(const CLI::ParseError& error, const CLI::App& program) {
  const auto chosen = program.get_subcommands();
  const std::string help = "; see veyla " + chosenCommands(program) + "--help";
  const std::string text = error.what();
  if (chosen.empty()) {
    const auto given = program.remaining();
    if (given.empty()) return "no command given" + help;
    return given.front() +
           (given.front().starts_with('-') ? ": no such option" : ": no such command") + help;
  }
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
    const std::string extras = text.substr(text.find(": ") + 2);
    return extras + (extras.starts_with('-') ? ": no such option" : ": not expected here") + help;
  }
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
    return text.substr(0, text.find(':')) + ": its value is missing" + help;
  }
  return text + help;
}

/// A stream that is closed at the start would give its number to the next file that is opened, and
/// what is meant for the stream would be written into that file. Opened the wrong way around, it
/// refuses to be used instead.
void keepStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest number that is free is this one.
    [[maybe_unused]] const int opened =
        open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardStreams();
  // Where a file may not grow further, writing it then fails with a reason to tell.
  std::signal(SIGXFSZ, SIG_IGN);
  veyla::removePendingFilesWhenInterrupted();

  CLI::App program("Measures heart rate and SpO2 from recordings of a fingertip on a camera.",
                   "veyla");
  program.set_version_flag("--version", "veyla " VEYLA_VERSION);
  program.require_subcommand(1);
  ExitStatus status = ExitStatus::done;

  veyla::MeasureOptions measureOptions;
  std::string measured;
  CLI::App& measure =
      *program.add_subcommand("measure", "measure a recording and save the result in the history");
  describeMeasure(measure, measureOptions, measured);
  measure.callback([&] {
    measureOptions.request.heartrate = measured != "spo2";
    measureOptions.request.spo2 = measured != "heartrate";
    status = veyla::exitStatusOf([&] {
      veyla::requireApart("--trace", measureOptions.traceFile, measureOptions.input);
      veyla::requireApart("--log", measureOptions.logFile, measureOptions.input);
      veyla::requireNoKeptData(measureOptions.logFile);
      veyla::requireApart("--snapshot", measureOptions.pictures.snapshotFile, measureOptions.input);
      return veyla::runMeasure(measureOptions);
    });
  });

  veyla::SeriesOptions seriesOptions;
  CLI::App& series =
      *program.add_subcommand("series", "write every frame's colours as a colour series");
  describeSeries(series, seriesOptions);
  series.callback([&] {
    status = veyla::exitStatusOf([&] {
      veyla::requireApart("-o", seriesOptions.output, seriesOptions.input);
      return veyla::runSeries(seriesOptions);
    });
  });

  veyla::SynthOptions synthOptions;
  CLI::App& synth = *program.add_subcommand("synth", "generate a fingertip recording");
  std::string size;
  describeSynth(synth, synthOptions, size);
  synth.callback([&] {
    status = veyla::exitStatusOf([&] {
      if (!size.empty()) veyla::setSize(synthOptions, size);
      if (synthOptions.from) veyla::requireApart("OUT", synthOptions.output, *synthOptions.from);
      return veyla::runSynth(synthOptions);
    });
  });

  veyla::EvaluateOptions evaluateOptions;
  std::string evaluated = "heartrate";
  CLI::App& evaluate = *program.add_subcommand(
      "evaluate", "measure a folder of recordings and compare with their references");
  describeEvaluate(evaluate, evaluateOptions, evaluated);
  evaluate.callback([&] {
    evaluateOptions.request.heartrate = evaluated != "spo2";
    evaluateOptions.request.spo2 = evaluated != "heartrate";
    status = veyla::runEvaluate(evaluateOptions);
  });

  veyla::ChartOptions chartOptions;
  CLI::App& chart = *program.add_subcommand("chart", "chart the history's daily means");
  describeChart(chart, chartOptions);
  chart.callback([&] { status = veyla::runChart(chartOptions); });

  veyla::DemoHistoryOptions demoHistoryOptions;
  CLI::App& demoHistory =
      *program.add_subcommand("demo-history", "make a history of random entries, to try charts on");
  describeDemoHistory(demoHistory, demoHistoryOptions);
  demoHistory.callback([&] { status = veyla::runDemoHistory(demoHistoryOptions); });
  veyla::HistoryOptions historyOptions;
  CLI::App& history =
      *program.add_subcommand("history", "list, label, delete and share what was measured");
  const auto runHistory = [&](ExitStatus (*command)(const veyla::HistoryOptions&)) {
    status = veyla::exitStatusOf([&] {
      if (historyOptions.json && command != veyla::runHistoryList) {
        throw veyla::UsageError("--json: only the list is printed so; leave it");
      }
      return command(historyOptions);
    });
  };
  const std::function<void(ExitStatus(*)(const veyla::HistoryOptions&))> runOnHistory = runHistory;
  describeHistory(history, historyOptions, runOnHistory);

  veyla::HealthOptions healthOptions;
  CLI::App& health =
      *program.add_subcommand("health", "allow and export health records of final values");
  describeHealth(health, healthOptions, status);

  // For the build: what is installed beside the program is made of the program's own options.
  if (argc == 3 && std::string(argv[1]) == "--describe") {
    return static_cast<int>(veyla::describe(program, argv[2]));
  }

  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // The help and the version come this way, too.
    if (error.get_exit_code() == 0) return program.exit(error);
    veyla::complain(explained(error, program));
    return static_cast<int>(ExitStatus::wrongUsage);
  }
  return static_cast<int>(status);
}
