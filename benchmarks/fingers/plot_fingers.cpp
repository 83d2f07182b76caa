#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/cli/measurement_run.h"
#include "apps/cli/parallel.h"
#include "apps/cli/plot_style.h"
#include "platform/format.h"
#include "platform/linux/gnuplot_program.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"

// Measures generated fingers with ever more noise and motion, by the whole measuring flow, and
// plots how far the heart rate is off and how often there is none.

namespace veyla {

namespace {

constexpr double seconds = 42;
constexpr double framesPerSecond = 30;

/// What is varied, and its values.
struct Disturbance {
  const char* name;
  const char* title;
  const char* label;
  double FingerOptions::*option;
  std::vector<double> levels;
};

const std::vector<Disturbance> disturbances{{"noise",
                                             "Noise",
                                             "noise, deviation in steps of 8-bit samples",
                                             &FingerOptions::noise,
                                             {0, 1, 2, 3, 4, 5, 7, 10, 15, 20, 30, 50}},
                                            {"motion",
                                             "Motion",
                                             "motion, bursts of so many per cent of the light",
                                             &FingerOptions::motion,
                                             {0, 0.5, 1, 1.5, 2, 3, 4, 5, 7, 10}}};

/// How a finger reaches the program: as pixels of frames, or as their mean colours.
enum class Form { frames, series };

std::optional<float> heartrateOf(const FingerOptions& finger, Form form) {
  std::unique_ptr<RecordingSource> source;
  if (form == Form::frames) {
    source = std::make_unique<SyntheticSource>(finger, seconds, framesPerSecond);
  } else {
    source = std::make_unique<SyntheticSeries>(finger, seconds, framesPerSecond);
  }
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  const EmbeddedResources resources;
  MeasurementRun run({.heartrate = true, .spo2 = false, .duration = seconds}, std::move(source),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  return run.run().heartrate;
}

struct Row {
  double level = 0;
  /// Of the finished measurements.
  double meanPercentageError = 0;
  /// Per cent of all measurements.
  double over5 = 0;
  double unfinished = 0;
};

/// Every fourth rate from 48 to 180 beats per minute, with two seeds each.
Row measure(const Disturbance& disturbance, double level, Form form) {
  std::vector<FingerOptions> fingers;
  for (std::uint64_t seed = 1; seed <= 2; ++seed) {
    for (int bpm = 48; bpm <= 180; bpm += 4) {
      FingerOptions& finger = fingers.emplace_back();
      finger.bpm = bpm;
      finger.seed = seed;
      finger.*disturbance.option = level;
    }
  }
  std::vector<std::optional<float>> measured(fingers.size());
  inParallel(fingers.size(), 0,
             [&](std::size_t i) { measured[i] = heartrateOf(fingers[i], form); });
  Row row{level};
  double finished = 0;
  for (std::size_t i = 0; i < fingers.size(); ++i) {
    if (!measured[i]) continue;
    const double error = std::abs(static_cast<double>(*measured[i]) - fingers[i].bpm);
    ++finished;
    row.meanPercentageError += 100 * error / fingers[i].bpm;
    if (error > 5) ++row.over5;
  }
  const auto all = static_cast<double>(fingers.size());
  row.meanPercentageError /= std::max(finished, 1.0);
  row.over5 *= 100 / all;
  row.unfinished = 100 * (all - finished) / all;
  return row;
}

std::string blockOf(const char* name, const std::vector<Row>& rows) {
  std::string block = formatText("$%s << EOD\n", name);
  for (const Row& row : rows) {
    block += formatText("%g %.4f %.3f %.3f\n", row.level, row.meanPercentageError, row.over5,
                        row.unfinished);
  }
  return block + "EOD\n";
}

std::string lineOf(const char* block, int column, std::size_t color, const char* dash,
                   const std::string& title) {
  return formatText("$%s using 1:%d with linespoints pointtype 7 pointsize 1 dashtype %s ", block,
                    column, dash) +
         formatText("linecolor rgb '#%s' title ", plotColors[color]) + plotText(title);
}

std::string scriptOf(const Disturbance& disturbance, const std::vector<Row>& frames,
                     const std::vector<Row>& series) {
  return plotBegin(1400, 1400) + blockOf("frames", frames) + blockOf("series", series) +
         "set yrange [0:*]\nset multiplot layout 2,1\n" +
         plotTitles(disturbance.title, disturbance.label, "mean absolute error, per cent") +
         "plot " + lineOf("frames", 2, 0, "1", "drawn frames") + ", " +
         lineOf("series", 2, 1, "1", "colour series") + "\n" + "set yrange [0:100]\n" +
         plotTitles("What becomes of the measurements", disturbance.label,
                    "per cent of the measurements") +
         "plot " + lineOf("frames", 4, 0, "1", "frames, no number") + ", " +
         lineOf("series", 4, 1, "1", "series, no number") + ", " +
         lineOf("frames", 3, 0, "2", "frames, off by more than 5") + ", " +
         lineOf("series", 3, 1, "2", "series, off by more than 5") + "\nunset multiplot\n";
}

void plot(const std::filesystem::path& folder) {
  for (const Disturbance& disturbance : disturbances) {
    OutputFile picture(folder / (std::string(disturbance.name) + ".png"));
    std::vector<Row> frames;
    std::vector<Row> series;
    std::printf("%-7s | frames: error  over 5  unfinished | series: error  over 5  unfinished\n",
                disturbance.name);
    for (const double level : disturbance.levels) {
      const Row& drawn = frames.emplace_back(measure(disturbance, level, Form::frames));
      const Row& means = series.emplace_back(measure(disturbance, level, Form::series));
      std::printf("%7g | %12.2f%% %6.1f%% %10.1f%% | %12.2f%% %6.1f%% %10.1f%%\n", level,
                  drawn.meanPercentageError, drawn.over5, drawn.unfinished,
                  means.meanPercentageError, means.over5, means.unfinished);
      std::fflush(stdout);
    }
    picture.write(runGnuplot(scriptOf(disturbance, frames, series)));
    picture.commit();
  }
}

}  // namespace

}  // namespace veyla

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: plot_fingers DIR, a folder for noise.png and motion.png\n");
    return 2;
  }
  try {
    veyla::plot(argv[1]);
  } catch (const veyla::OutputError& error) {
    std::fprintf(stderr, "plot_fingers: %s\n", error.what());
    return 4;
  }
  return 0;
}
