#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "apps/cli/measurement_run.h"
#include "apps/cli/parallel.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/portable/embedded_resources.h"

// Measures what has no pulse, a pulse too slow, and good pulses, and counts which final values are
// doubted.

namespace veyla {
namespace {

constexpr double seconds = 44;
constexpr double cameraRate = 30;

/// Colours over time that no finger is needed for.
class ColourSource : public RecordingSource {
 public:
  explicit ColourSource(std::vector<FrameSample> frames) : frames_(std::move(frames)) {}

  bool advance() override { return ++next_ <= frames_.size(); }
  std::optional<double> nextTime() const override {
    if (next_ >= frames_.size()) return std::nullopt;
    return static_cast<double>(next_) / cameraRate;
  }
  double time() const override { return static_cast<double>(next_ - 1) / cameraRate; }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(frames_[next_ - 1]);
  }

 private:
  std::vector<FrameSample> frames_;
  std::size_t next_ = 0;
};

class Chance {
 public:
  explicit Chance(unsigned seed) : random_(seed) {}
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  double normal() { return normal_(random_); }

 private:
  std::mt19937 random_;
  std::normal_distribution<double> normal_;
};

using Swings = std::array<double, 3>;

std::unique_ptr<RecordingSource> around(const Swings& level,
                                        const std::function<Swings(double time)>& swing) {
  std::vector<FrameSample> frames;
  for (int i = 0; i < seconds * cameraRate; ++i) {
    const Swings swung = swing(i / cameraRate);
    const auto value = [&](std::size_t channel) {
      return static_cast<float>(std::clamp(level[channel] + swung[channel], 0.0, 255.0));
    };
    frames.push_back({value(0), value(1), value(2), value(0)});
  }
  return std::make_unique<ColourSource>(std::move(frames));
}

constexpr Swings lit{200, 60, 40};

/// Noise that the channels share in part, and a drift that wanders. Where the red has little of it,
/// it gives a saturation, too; the same with breath.
std::unique_ptr<RecordingSource> noise(unsigned seed, const Swings& level = lit) {
  auto chance = std::make_shared<Chance>(seed);
  const double size = std::pow(10, chance->between(-1.2, 0.5));
  const double shared = size * chance->between(0, 1);
  const double own = size * chance->between(0.1, 1);
  const double wandering = size * chance->between(0, 0.3);
  const double inRed = chance->between(0.02, 1);
  auto drift = std::make_shared<double>(0);
  return around(level, [=](double) {
    *drift += wandering * chance->normal();
    const double together = shared * chance->normal() + *drift;
    return Swings{inRed * (together + own * chance->normal()), together + own * chance->normal(),
                  together + own * chance->normal()};
  });
}

/// A breath of 6 to 30 a minute with harmonics, wavering, and a little noise.
std::unique_ptr<RecordingSource> breath(unsigned seed) {
  auto chance = std::make_shared<Chance>(seed);
  const double rate = chance->between(0.1, 0.5);
  const double size = std::pow(10, chance->between(-0.5, 0.8));
  const double second = chance->between(0, 0.6);
  const double third = chance->between(0, 0.3);
  const double phase = chance->between(0, 6);
  const double wavering = 0.003 * chance->between(0, 1);
  const double grain = std::pow(10, chance->between(-1.3, 0));
  const Swings parts{chance->between(0.02, 1), chance->between(0.3, 1.5), chance->between(0.2, 1)};
  auto wander = std::make_shared<double>(0);
  return around(lit, [=](double time) {
    *wander += wavering * chance->normal();
    const double turn = 2 * std::numbers::pi * rate * time + *wander;
    const double swing = std::sin(turn) + second * std::sin(2 * turn + phase) +
                         third * std::sin(3 * turn + 2 * phase);
    Swings swings;
    for (std::size_t i = 0; i < swings.size(); ++i) {
      swings[i] = size * swing * parts[i] + grain * chance->normal();
    }
    return swings;
  });
}

/// A dark or pale picture with noise.
std::unique_ptr<RecordingSource> noFinger(unsigned seed) {
  return noise(seed, seed % 2 == 0 ? Swings{6, 6, 6} : Swings{180, 175, 170});
}

std::unique_ptr<RecordingSource> pulse(double bpm, unsigned seed) {
  FingerOptions options;
  options.bpm = bpm;
  options.seed = seed;
  return std::make_unique<SyntheticSeries>(options, seconds, cameraRate);
}

/// A finger that is not held still: bursts of motion, deep breaths, noise, and a drift that
/// wanders.
std::unique_ptr<RecordingSource> restlessPulse(double bpm, unsigned seed) {
  auto chance = std::make_shared<Chance>(seed);
  FingerOptions options;
  options.bpm = bpm;
  options.seed = seed;
  options.motion = chance->between(0.3, 5);
  options.breathing = chance->between(0.1, 2);
  const double grain = std::pow(10, chance->between(-1.5, 0));
  const double wandering = chance->between(0, 0.3);
  auto drift = std::make_shared<double>(0);
  return around({}, [=, finger = SyntheticFinger(options)](double time) {
    *drift += wandering * chance->normal();
    const ChannelMeans means = finger.at(time);
    return Swings{means.red + *drift + grain * chance->normal(),
                  means.green + *drift / 3 + grain * chance->normal(),
                  means.blue + *drift / 5 + grain * chance->normal()};
  });
}

struct Kind {
  const char* name;
  /// Beats per minute; 0 where there is no pulse to be right about.
  std::function<double(unsigned seed)> truth;
  std::function<std::unique_ptr<RecordingSource>(unsigned seed)> source;
};

double slowRate(unsigned seed) { return 20 + seed % 21; }
double rightRate(unsigned seed) { return 45 + seed % 156; }

enum class Value { heartrate, spo2 };

MeasurementReport measured(Value value, std::unique_ptr<RecordingSource> source) {
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  const EmbeddedResources resources;
  MeasurementRequest request;
  request.heartrate = value == Value::heartrate;
  request.spo2 = value == Value::spo2;
  MeasurementRun run(request, std::move(source),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  return run.run();
}

struct Count {
  int finished = 0;
  int marked = 0;
  int wrong = 0;
  int wrongMarked = 0;
  int spo2Finished = 0;
  int spo2Marked = 0;
};

Count count(const Kind& kind, unsigned seeds) {
  Count count;
  std::mutex mutex;
  inParallel(seeds, 0, [&](std::size_t seed) {
    const auto number = static_cast<unsigned>(seed);
    const MeasurementReport oxygen = measured(Value::spo2, kind.source(number));
    const MeasurementReport report = measured(Value::heartrate, kind.source(number));
    const std::lock_guard lock(mutex);
    if (oxygen.spo2) {
      ++count.spo2Finished;
      count.spo2Marked += oxygen.spo2Doubts->empty() ? 0 : 1;
    }
    if (!report.heartrate) return;
    constexpr double right = 5;
    const double truth = kind.truth(number);
    const bool wrong =
        truth <= 0 || std::abs(static_cast<double>(*report.heartrate) - truth) > right;
    const bool marked = !report.heartrateJudgement->doubts.empty();
    ++count.finished;
    count.marked += marked ? 1 : 0;
    count.wrong += wrong ? 1 : 0;
    count.wrongMarked += wrong && marked ? 1 : 0;
  });
  return count;
}

}  // namespace
}  // namespace veyla

int main(int argc, char** argv) {
  using namespace veyla;
  unsigned seeds = 1000;
  CLI::App program("Counts which final values of generated series are doubted.");
  program.add_option("--seeds", seeds, "series of each kind (1000)");
  CLI11_PARSE(program, argc, argv);
  const auto none = [](unsigned) { return 0.0; };
  const Kind kinds[] = {
      {"noise alone", none, [](unsigned seed) { return noise(seed); }},
      {"breath alone", none, breath},
      {"no finger", none, noFinger},
      {"20 to 40 bpm", slowRate, [](unsigned seed) { return pulse(slowRate(seed), seed); }},
      {"45 to 200 bpm", rightRate, [](unsigned seed) { return pulse(rightRate(seed), seed); }},
      {"the same, restless", rightRate,
       [](unsigned seed) { return restlessPulse(rightRate(seed), seed); }}};
  std::printf("%-20s%8s%10s%8s%8s%14s%8s%13s\n", "kind", "series", "finished", "unsure", "wrong",
              "wrong+unsure", "SpO2", "SpO2 unsure");
  for (const Kind& kind : kinds) {
    const Count counted = count(kind, seeds);
    std::printf("%-20s%8u%10d%8d%8d%14d%8d%13d\n", kind.name, seeds, counted.finished,
                counted.marked, counted.wrong, counted.wrongMarked, counted.spo2Finished,
                counted.spo2Marked);
  }
  return 0;
}
