#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "apps/cli/measurement_run.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/series_source.h"
#include "platform/linux/temporary_folder.h"

namespace veyla {
namespace {

double processorSeconds(const rusage& usage) {
  constexpr double microsecond = 1e-6;
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         microsecond * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

/// Runs a program to its end, what it prints led into nothing; its processor time, or nothing where
/// it failed.
std::optional<double> processorTimeOf(std::vector<std::string> command) {
  std::vector<char*> words;
  for (std::string& word : command) words.push_back(word.data());
  words.push_back(nullptr);
  posix_spawn_file_actions_t silence;
  posix_spawn_file_actions_init(&silence);
  posix_spawn_file_actions_addopen(&silence, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = posix_spawnp(&child, words[0], &silence, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&silence);
  int status = 0;
  rusage usage{};
  if (error != 0 || wait4(child, &status, 0, &usage) != child || status != 0) return std::nullopt;
  return processorSeconds(usage);
}

void timeProgram(benchmark::State& state, const std::vector<std::string>& command) {
  for (auto _ : state) {
    const auto time = processorTimeOf(command);
    if (!time) return state.SkipWithError((command[0] + " failed").c_str());
    state.SetIterationTime(*time);
  }
}

/// What every command takes before it does anything.
void programStart(benchmark::State& state) { timeProgram(state, {VEYLA_PROGRAM, "--version"}); }
BENCHMARK(programStart)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

/// A program that loads the video libraries with its start.
void programStart_yardstick(benchmark::State& state) { timeProgram(state, {"ffmpeg", "-version"}); }
BENCHMARK(programStart_yardstick)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

/// A folder of a hundred series of a minute each.
class Folder {
 public:
  Folder() {
    for (int i = 0; i < 100; ++i) {
      SynthOptions options;
      options.output = paths.emplace_back(folder_.path() / (std::to_string(i) + ".csv"));
      options.bpm = 60 + i % 20;
      options.seed = static_cast<std::uint64_t>(i);
      options.seconds = 60;
      drawRecording(options);
    }
  }

  std::string path() const { return folder_.path(); }
  std::vector<std::string> paths;

 private:
  TemporaryFolder folder_;
};

/// A whole `veyla measure FOLDER`.
void measureFolder(benchmark::State& state) {
  const Folder folder;
  timeProgram(state, {VEYLA_PROGRAM, "measure", folder.path()});
}
BENCHMARK(measureFolder)->UseManualTime()->Unit(benchmark::kMillisecond);

/// A recording's rows in memory.
class Rows : public RecordingSource, public SampleBufferDelegate {
 public:
  explicit Rows(const std::string& path) {
    SeriesSource source(path);
    while (source.advance()) {
      times_.push_back(source.time());
      source.deliver(*this);
    }
  }

  bool advance() override { return ++next_ <= rows_.size(); }
  double time() const override { return times_[next_ - 1]; }
  std::optional<double> nextTime() const override {
    return next_ < rows_.size() ? std::optional(times_[next_]) : std::nullopt;
  }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(rows_[next_ - 1]);
  }

  void captureOutput(const FrameSample& row) override { rows_.push_back(row); }
  void captureOutput(PixelBuffer&) override {}
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override {}

 private:
  std::vector<double> times_;
  std::vector<FrameSample> rows_;
  std::size_t next_ = 0;
};

/// Reads the same series whole and measures them in memory, in this program.
void measureFolder_yardstick(benchmark::State& state) {
  const Folder folder;
  for (auto _ : state) {
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    for (const std::string& path : folder.paths) {
      TimedQueue queue;
      QueueClock clock({}, queue);
      MemoryKeyValueStore store;
      EmbeddedResources resources;
      MeasurementRun run({}, std::make_unique<Rows>(path),
                         {.queue = queue, .clock = clock, .store = store, .resources = resources});
      benchmark::DoNotOptimize(run.run().seconds);
    }
    getrusage(RUSAGE_SELF, &after);
    state.SetIterationTime(processorSeconds(after) - processorSeconds(before));
  }
}
BENCHMARK(measureFolder_yardstick)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veyla
