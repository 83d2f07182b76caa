#include <CLI/CLI.hpp>
#include <string>

#include "apps/cli/evaluate_command.h"
#include "apps/cli/exit_status.h"
#include "apps/cli/measure_command.h"
#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"

namespace {

using veyla::ExitStatus;

/// Accepts numbers from `least` to `most` and refuses not-a-number, which a plain range lets pass.
CLI::Validator numberWithin(double least, double most) {
  return CLI::Validator(
      [least, most](std::string& text) -> std::string {
        double value = 0;
        if (CLI::detail::lexical_cast(text, value) && value >= least && value <= most) return {};
        return "not a number from " + CLI::detail::to_string(least) + " to " +
               CLI::detail::to_string(most) + ": " + text;
      },
      "NUMBER");
}

constexpr double longestSeconds = 1e6;

void describeMeasure(CLI::App& command, veyla::MeasureOptions& options, std::string& only) {
  command.add_option("INPUT", options.input,
                     "a video, or a colour series time,R,G,B; without it, the built-in fingertip");
  command
      .add_option("--start", options.request.start, "seconds into the recording to tap START at")
      ->check(numberWithin(0, longestSeconds));
  command
      .add_option("--duration", options.request.duration,
                  "seconds of the recording to use, 2 of countdown included")
      ->check(numberWithin(0.001, longestSeconds));
  command.add_option("--only", only, "measure this value alone")
      ->check(CLI::IsMember({"heartrate", "spo2"}));
  command.add_option("--device", options.request.device,
                     "hardware model that chooses the settings, such as iPhone8,1");
  command.add_option("--settings", options.settingsFolder,
                     "folder of Spo2Settings.json, HeartrateSettings.json, CameraSettings.json");
  auto* data = command.add_option("--data", options.dataFolder,
                                  "folder of the history instead of ~/.local/share/veyla");
  command.add_flag("!--no-save", options.save, "keep nothing")->excludes(data);
  command.add_flag("--json", options.json, "print one JSON object");
  command.add_option("--trace", options.traceFile, "write one row per estimate to this file");
  command.add_option("--log", options.logFile,
                     "write the diagnostic log to this file (- for standard error)");
  command.add_flag("--realtime", options.realtime, "measure at the recording's own pace");
}

void describeSeries(CLI::App& command, veyla::SeriesOptions& options) {
  command.add_option("INPUT", options.input, "a video or a colour series")->required();
  command.add_option("-o", options.output, "file of the series (- for standard output)")
      ->required();
}

void describeSynth(CLI::App& command, veyla::SynthOptions& options, std::string& size) {
  command.add_option("OUT", options.output, "a video by its ending, or a series (.csv)")
      ->required();
  command.add_option("--bpm", options.bpm, "heart rate in beats per minute");
  command.add_option("--spo2", options.spo2, "saturation that the colour ratios give, in per cent");
  command.add_option("--seconds", options.seconds, "length");
  command.add_option("--fps", options.fps, "frames per second");
  command.add_option("--size", size, "of a frame, such as 640x480")->type_name("WxH");
  command.add_option("--noise", options.noise, "sensor noise, in steps of 8 bits");
  command.add_option("--motion", options.motion, "movements of the finger, 0 for none");
  command.add_option("--seed", options.seed, "another finger for every number");
  command.add_option("--from", options.from, "draw this recorded colour series as frames");
}

void describeEvaluate(CLI::App& command, veyla::EvaluateOptions& options, std::string& only) {
  command.add_option("FOLDER", options.folder, "recordings, each with a NAME.reference.csv")
      ->required();
  command.add_option("--window", options.window, "seconds per measurement, countdown included")
      ->check(numberWithin(3, longestSeconds));
  command.add_option("--every", options.every, "seconds from one start to the next")
      ->check(numberWithin(0.1, longestSeconds));
  command.add_option("--only", only, "heartrate (as without it), spo2 or both")
      ->check(CLI::IsMember({"heartrate", "spo2", "both"}));
  command.add_option("--device", options.device, "hardware model that chooses the settings");
  command.add_option("--settings", options.settingsFolder, "folder of the three settings files");
  command.add_option("--jobs", options.jobs, "measurements at a time; one per core without it")
      ->check(CLI::Range(1, 1024));
  command.add_flag("--json", options.json, "print a JSON list");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("Measures heart rate and SpO2 from recordings of a fingertip on a camera.",
                   "veyla");
  program.set_version_flag("--version", "veyla " VEYLA_VERSION);
  program.require_subcommand(1);
  program.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("veyla: ") + error.what() + "; see veyla --help\n";
  });
  ExitStatus status = ExitStatus::done;

  veyla::MeasureOptions measureOptions;
  std::string measured;
  CLI::App& measure =
      *program.add_subcommand("measure", "measure a recording and save the result in the history");
  describeMeasure(measure, measureOptions, measured);
  measure.callback([&] {
    measureOptions.request.heartrate = measured != "spo2";
    measureOptions.request.spo2 = measured != "heartrate";
    status = veyla::runMeasure(measureOptions);
  });

  veyla::SeriesOptions seriesOptions;
  CLI::App& series =
      *program.add_subcommand("series", "write every frame's colours as a colour series");
  describeSeries(series, seriesOptions);
  series.callback([&] { status = veyla::runSeries(seriesOptions); });

  veyla::SynthOptions synthOptions;
  CLI::App& synth = *program.add_subcommand("synth", "generate a fingertip recording");
  std::string size;
  describeSynth(synth, synthOptions, size);
  synth.callback([&] {
    status = veyla::exitStatusOf([&] {
      if (!size.empty()) veyla::setSize(synthOptions, size);
      return veyla::runSynth(synthOptions);
    });
  });

  veyla::EvaluateOptions evaluateOptions;
  std::string evaluated = "heartrate";
  CLI::App& evaluate = *program.add_subcommand(
      "evaluate", "measure a folder of recordings and compare with their references");
  describeEvaluate(evaluate, evaluateOptions, evaluated);
  evaluate.callback([&] {
    evaluateOptions.heartrate = evaluated != "spo2";
    evaluateOptions.spo2 = evaluated != "heartrate";
    status = veyla::runEvaluate(evaluateOptions);
  });

  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // The library has a status of its own for each way to be wrong.
    return program.exit(error) == 0 ? 0 : static_cast<int>(ExitStatus::wrongUsage);
  }
  return static_cast<int>(status);
}
