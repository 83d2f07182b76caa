#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "apps/cli/backup_command.h"
#include "apps/cli/chart_command.h"
#include "apps/cli/choices.h"
#include "apps/cli/complain.h"
#include "apps/cli/demo_history_command.h"
#include "apps/cli/description.h"
#include "apps/cli/evaluate_command.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/health_command.h"
#include "apps/cli/help_formatter.h"
#include "apps/cli/history_command.h"
#include "apps/cli/measure_command.h"
#include "apps/cli/number_range.h"
#include "apps/cli/output_apart.h"
#include "apps/cli/recording_time.h"
#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/output_file.h"

namespace {

using veyla::ExitStatus;

using veyla::NumberRange;

/// Accepts numbers of the range and refuses not-a-number, which a plain range lets pass.
CLI::Validator numberWithin(const NumberRange& range, bool whole) {
  return CLI::Validator(
      [=](std::string& text) -> std::string {
        double value = 0;
        // A leading zero would make it octal: another number than the one that is meant.
        const bool isDecimal = text.find_first_not_of("0123456789") == std::string::npos &&
                               (text == "0" || !text.starts_with('0'));
        if (CLI::detail::lexical_cast(text, value) && range.holds(value) && (!whole || isDecimal)) {
          return {};
        }
        return "\"" + text + "\" is no" + (whole ? " whole" : "") + " number from " + range.text();
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

/// Turns "1:23.5" into seconds, and leaves what is no time of this kind to the range's check.
CLI::Validator asSeconds() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        if (text.find(':') == std::string::npos) return {};
        const auto seconds = veyla::secondsOfTime(text);
        if (!seconds) return "\"" + text + "\" is no time such as 1:23.5";
        text.clear();
        veyla::appendDecimal(text, *seconds);
        return {};
      },
      "");
}

CLI::Validator oneOf(const std::vector<std::string>& names) {
  return CLI::Validator(
      [names](std::string& text) -> std::string {
        // As it is called on most screens.
        const std::string wanted = veyla::lowerCase(text) == "hr" ? "heartrate" : text;
        for (const std::string& name : names) {
          if (veyla::lowerCase(name) != veyla::lowerCase(wanted)) continue;
          text = name;
          return {};
        }
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
constexpr NumberRange scales{0.25, 8};
constexpr NumberRange entryNumbers{1, 1e9};

/// The presets of `--data`.
constexpr const char* usualData = "~/.local/share/veyla, or $XDG_DATA_HOME/veyla";
constexpr const char* usualDemoData = "~/.local/share/veyla-demo, or $XDG_DATA_HOME/veyla-demo";

/// What is taken where the option is not given, behind what the option means.
std::string withPreset(const std::string& description, const std::string& preset) {
  return preset.empty() ? description : description + " (" + preset + ")";
}

/// `value` is how the help names what the option takes.
CLI::Option* addText(CLI::App& command, const char* name, std::string& text, const char* value,
                     const char* description, const char* preset = "") {
  return command.add_option(name, text, withPreset(description, preset))
      ->type_name(value)
      ->check(something());
}

/// A number of any size, for a command that checks the range itself; the help tells it.
template <class Number>
CLI::Option* declareNumber(CLI::App& command, const char* name, Number& target, const char* value,
                           const std::string& description, const NumberRange& range,
                           const char* preset) {
  return command.add_option(name, target, withPreset(description + ", " + range.text(), preset))
      ->type_name(value);
}

/// A number of the range; whole where the target is.
template <class Number>
CLI::Option* addNumber(CLI::App& command, const char* name, Number& target, const char* value,
                       const char* description, const NumberRange& range, const char* preset = "") {
  return declareNumber(command, name, target, value, description, range, preset)
      ->check(numberWithin(range, std::is_integral_v<Number>));
}

/// Seconds, or a time as players show it.
template <class Number>
CLI::Option* addSeconds(CLI::App& command, const char* name, Number& target,
                        const char* description, const NumberRange& range,
                        const char* preset = "") {
  return addNumber(command, name, target, "S", description, range, preset)->transform(asSeconds());
}

CLI::Option* addData(CLI::App& command, std::string& folder, const char* description,
                     const char* preset = usualData) {
  return addText(command, "--data", folder, "DIR", description, preset);
}

void describeSettings(CLI::App& command, std::string& device, std::string& folder) {
  addText(command, "--device", device, "MODEL", "hardware model that chooses the settings",
          veyla::defaultDevice);
  addText(command, "--settings", folder, "DIR",
          "the three settings files of this folder instead of the built-in ones");
}

void describeMeasure(CLI::App& command, veyla::MeasureOptions& options, std::string& only) {
  command
      .add_option("INPUT", options.inputs,
                  "videos, colour series time,R,G,B, or folders of these (-: standard input); "
                  "without one, the built-in fingertip")
      ->type_name("")
      ->check(something());
  addSeconds(command, "--start", options.request.start,
             "begin S seconds into the recording (or M:SS)", {0, longestSeconds}, "0");
  addSeconds(command, "--duration", options.request.duration,
             "use S seconds from there, the 2 seconds of countdown included",
             {0.001, longestSeconds}, "all, or 45 with --every");
  addSeconds(command, "--every", options.every,
             "measure again from every S seconds on, over the whole recording",
             {0.1, longestSeconds});
  command.add_flag("--best", options.best, "of these measurements the clearest alone");
  addText(command, "--only", only, "heartrate|spo2", "measure one value alone")
      ->transform(oneOf({"heartrate", "spo2"}));
  describeSettings(command, options.request.device, options.settingsFolder);
  auto* data =
      addData(command, options.dataFolder, "keep history and health records in this folder");
  command
      .add_flag_callback(
          "--no-save", [&] { options.save = false; }, "keep nothing")
      ->excludes(data);
  command
      .add_flag("--save", options.asksToSave,
                "keep the results of several measurements, too, as that of one is")
      ->excludes("--no-save");
  addNumber(command, "--jobs", options.jobs, "N", "of several, measurements at a time", {1, 1024},
            "one per core");
  command.add_flag("--json", options.json,
                   "print one JSON object, or one a line for each measurement");
  addText(command, "--csv", options.csvFile, "FILE",
          "write one row per measurement, as CSV (-: standard output, in place of the lines)");
  addText(command, "--trace", options.traceFile, "FILE", "write one row per estimate, as CSV");
  addText(command, "--log", options.logFile, "FILE",
          "append the diagnostic log to this file (-: standard error)");
  addText(command, "--snapshot", options.pictures.snapshotFile, "FILE.png",
          "draw the measuring screen as it ended");
  addText(command, "--frames", options.pictures.framesFolder, "DIR",
          "draw it each second since START: 0000.png, 0001.png, ...");
  addNumber(command, "--scale", options.pictures.scale, "N",
            "pixels per point of the pictures, which are 390 x 844 points", scales, "2");
  command.add_flag("--realtime", options.realtime, "measure at the recording's own pace");
}

void describeSeries(CLI::App& command, veyla::SeriesOptions& options) {
  addText(command, "INPUT", options.input, "", "a video or a colour series (-: standard input)")
      ->required();
  addText(command, "-o", options.output, "OUT.csv", "file of the series (-: standard output)")
      ->required();
  describeSettings(command, options.device, options.settingsFolder);
}

/// "16x16 to 7680x4320".
std::string sizeRange() {
  const auto size = [](double width, double height) {
    std::string text;
    veyla::appendDecimal(text, width);
    text += 'x';
    veyla::appendDecimal(text, height);
    return text;
  };
  constexpr NumberRange widths = veyla::SynthOptions::widths;
  constexpr NumberRange heights = veyla::SynthOptions::heights;
  return size(widths.least, heights.least) + " to " + size(widths.most, heights.most);
}

void describeSynth(CLI::App& command, veyla::SynthOptions& options, std::string& size) {
  addText(command, "OUT", options.output, "", "a video by its ending, or a series (.csv)")
      ->required();
  using Options = veyla::SynthOptions;
  const auto add = [&](const char* name, auto& target, const char* description,
                       const NumberRange& range, const char* preset) {
    return declareNumber(command, name, target, "N", description, range, preset)->check(number());
  };
  auto* bpm = add("--bpm", options.bpm, "heart rate in beats per minute", Options::rates, "72");
  auto* spo2 = add("--spo2", options.spo2, "saturation that the colours are to give, in per cent",
                   Options::saturations, "97");
  add("--seconds", options.seconds, "length", Options::lengths, "30, or the series' own")
      ->transform(asSeconds());
  add("--fps", options.fps, "frames per second", Options::frameRates, "30");
  addText(command, "--size", size, "WxH", ("size of a frame, " + sizeRange()).c_str(), "640x480");
  add("--noise", options.noise, "sensor noise in 8-bit steps", Options::noises, "1");
  auto* motion = add("--motion", options.motion, "bursts of movement", Options::motions, "0");
  addNumber(command, "--seed", options.seed, "N", "another finger for every number",
            {0, std::numeric_limits<std::uint32_t>::max()}, "1");
  // What the series has already, nothing is to ask for.
  command.add_option("--from", options.from, "draw a recorded colour series as frames")
      ->type_name("SERIES.csv")
      ->check(something())
      ->excludes(bpm)
      ->excludes(spo2)
      ->excludes(motion);
}

void describeEvaluate(CLI::App& command, veyla::EvaluateOptions& options, std::string& only) {
  addText(command, "FOLDER", options.request.folder, "",
          "recordings, each with a NAME.reference.csv")
      ->required();
  addSeconds(command, "--window", options.request.window,
             "seconds per measurement, countdown included", {3, longestSeconds}, "42");
  addSeconds(command, "--every", options.request.every, "seconds from one start to the next",
             {0.1, longestSeconds}, "20");
  addText(command, "--only", only, "heartrate|spo2|both", "what is measured", "heartrate")
      ->transform(oneOf({"heartrate", "spo2", "both"}));
  describeSettings(command, options.request.device, options.settingsFolder);
  addNumber(command, "--jobs", options.request.jobs, "N", "measurements at a time", {1, 1024},
            "one per core");
  command.add_flag("--json", options.json, "print a JSON list");
  addText(command, "--windows", options.windowsFile, "FILE", "write a row per window, as CSV");
  addText(command, "--plots", options.plotsFolder, "DIR", "draw what was found as two pictures");
}

/// How the help names a label: as a shell takes it.
std::string labelForm() {
  std::string form;
  for (const std::string& choice : veyla::labelChoices()) {
    const bool hasBlanks = choice.find(' ') != std::string::npos;
    form += (form.empty() ? "" : "|") + (hasBlanks ? "\"" + choice + "\"" : choice);
  }
  return form;
}

void describeChart(CLI::App& command, veyla::ChartOptions& options) {
  addText(command, "--period", options.period, "week|month|3months|all", "days up to today",
          "week");
  addText(command, "--label", options.label, labelForm().c_str(),
          "only entries with this label; none for all");
  addText(command, "-o", options.output, "FILE", "write a picture by its ending, .png or .svg");
  addData(command, options.dataFolder, "folder of the history");
}

void describeDemoHistory(CLI::App& command, veyla::DemoHistoryOptions& options) {
  addNumber(command, "--days", options.days, "N", "days up to today",
            {1, veyla::DemoHistoryOptions::mostDays}, "90");
  addData(command, options.dataFolder, "a new or empty folder", usualDemoData);
}

/// `numbers` is one number or a list.
template <class Numbers>
CLI::Option* addEntries(CLI::App& command, Numbers& numbers, const char* description) {
  return command.add_option("N", numbers, description)
      ->type_name("")
      ->check(numberWithin(entryNumbers, true));
}

/// `run` gets each command's turn.
void describeHistory(CLI::App& history, veyla::HistoryOptions& options,
                     const std::function<void(ExitStatus (*)(const veyla::HistoryOptions&))>& run) {
  constexpr const char* data = "folder of the history";
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

  CLI::App& backup = add("backup", "write entries, counters and address for another machine",
                         veyla::runHistoryBackup);
  addText(backup, "-o", options.output, "FILE.json", "file to write (-: standard output)")
      ->required();
  CLI::App& restore = add("restore", "add what is missing of a backup, this or a phone's",
                          veyla::runHistoryRestore);
  addText(restore, "FILE", options.input, "", "the backup; - is standard input")->required();
}

void describeHealth(CLI::App& health, veyla::HealthOptions& options, ExitStatus& status) {
  constexpr const char* data = "folder of the health records";
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
        ->transform(oneOf({"heartrate", "spo2"}))
        ->required();
    answer.callback([&, allowed] { status = veyla::runHealthAllow(options, allowed); });
  }
  for (CLI::App* command : health.get_subcommands({})) addData(*command, options.dataFolder, data);
}

/// The program and the commands that were chosen, the innermost last.
std::vector<const CLI::App*> chosenCommands(const CLI::App& program) {
  std::vector<const CLI::App*> chosen{&program};
  for (auto inner = program.get_subcommands(); !inner.empty();
       inner = chosen.back()->get_subcommands()) {
    chosen.push_back(inner.front());
  }
  return chosen;
}

/// What is wrong with the first word that no command of these takes; empty where each is taken.
std::string strayWord(const std::vector<const CLI::App*>& commands) {
  for (const CLI::App* command : commands) {
    std::vector<std::string> words = command->remaining();
    // Behind "--" nothing is an option.
    const bool isNoOption = !words.empty() && words.front() == "--";
    if (isNoOption) words.erase(words.begin());
    if (words.empty()) continue;
    const std::string& word = words.front();
    if (word.starts_with('-') && !isNoOption) {
      return word + (command == commands.back() ? ": no such option"
                                                : ": no such option before the command");
    }
    const bool hasCommands = !command->get_subcommands({}).empty();
    return word + (hasCommands ? ": no such command" : ": not expected here");
  }
  return {};
}

/// The option of which there are too many or too few on the command line.
std::string miscounted(const CLI::App& command, const std::string& text) {
  const std::string name = text.substr(0, text.find(':'));
  const CLI::Option* option = command.get_option_no_throw(name);
  const bool isRepeated = option != nullptr && option->count() > 1;
  return name + (isRepeated ? ": given more than once" : ": its value is missing");
}

/// What was wrong with the command line, and where the right form stands.
std::string explained(const CLI::ParseError& error, const CLI::App& program) {
  const auto commands = chosenCommands(program);
  std::string help = "; see veyla ";
  for (const CLI::App* command : commands) {
    if (command != &program) help += command->get_name() + " ";
  }
  help += "--help";
  const std::string stray = strayWord(commands);
  if (commands.size() == 1) return (stray.empty() ? "no command given" : stray) + help;
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) return stray + help;
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
    return miscounted(*commands.back(), error.what()) + help;
  }
  return error.what() + help;
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
  veyla::complainWhenStopped("before it was done; no file is half written");

  CLI::App program("Measures heart rate and SpO2 from recordings of a fingertip on a camera.",
                   "veyla");
  program.set_help_flag("-h,--help", "print this");
  program.set_version_flag("--version", "veyla " VEYLA_VERSION, "print the version");
  program.require_subcommand(1);
  // The commands have it from the program.
  program.formatter(std::make_shared<veyla::HelpFormatter>());
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
      for (const std::string& input : measureOptions.inputs) {
        veyla::requireApart("--csv", measureOptions.csvFile, input);
        veyla::requireApart("--trace", measureOptions.traceFile, input);
        veyla::requireApart("--log", measureOptions.logFile, input);
        veyla::requireApart("--snapshot", measureOptions.pictures.snapshotFile, input);
      }
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
    if (error.get_exit_code() == 0) {
      return static_cast<int>(veyla::exitStatusOf([&] {
        std::ostringstream text;
        program.exit(error, text, text);
        veyla::printOut(text.str());
        return ExitStatus::done;
      }));
    }
    veyla::complain(explained(error, program));
    return static_cast<int>(ExitStatus::wrongUsage);
  }
  return static_cast<int>(status);
}
