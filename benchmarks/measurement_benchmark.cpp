#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <ranges>
#include <utility>
#include <vector>

#include "acquisition/frame_averaging.h"
#include "apps/cli/measurement_run.h"
#include "platform/linux/bgra_frame.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"

namespace veyla {
namespace {

/// The frames of a fingertip in memory: the same every time, which cost nothing to make.
class Keeper : public SampleBufferDelegate {
 public:
  std::vector<BgraFrame> frames;

  void captureOutput(PixelBuffer& buffer) override {
    BgraFrame& frame = frames.emplace_back(buffer.width(), buffer.height());
    std::copy_n(buffer.baseAddress(), buffer.bytesPerRow() * buffer.height(), frame.baseAddress());
  }
  void captureOutput(const FrameSample&) override {}
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override {}
};

class MemorySource : public RecordingSource {
 public:
  explicit MemorySource(std::vector<BgraFrame>& frames) : frames_(frames) {}

  bool advance() override { return ++next_ <= frames_.size(); }
  std::optional<double> nextTime() const override {
    if (next_ >= frames_.size()) return std::nullopt;
    return timeOf(next_);
  }
  double time() const override { return timeOf(next_ - 1); }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(frames_[next_ - 1]);
  }

 private:
  static double timeOf(std::size_t index) {
    return static_cast<double>(index) / VideoDataOutput::framesPerSecond;
  }

  std::vector<BgraFrame>& frames_;
  std::size_t next_ = 0;
};

std::vector<BgraFrame> fingertip() {
  constexpr double longerThanItsMeasurement = 25;
  SyntheticSource source(FingerOptions{}, longerThanItsMeasurement,
                         VideoDataOutput::framesPerSecond);
  Keeper keeper;
  while (source.advance()) source.deliver(keeper);
  return std::move(keeper.frames);
}

void measure(benchmark::State& state, bool isJudged) {
  auto frames = fingertip();
  for (auto _ : state) {
    TimedQueue queue;
    QueueClock clock({}, queue);
    MemoryKeyValueStore store;
    EmbeddedResources resources;
    MeasurementRun run({}, std::make_unique<MemorySource>(frames),
                       {.queue = queue, .clock = clock, .store = store, .resources = resources});
    run.isJudged = isJudged;
    const auto report = run.run();
    benchmark::DoNotOptimize(report.seconds);
    state.counters["seconds"] = report.seconds;
    state.counters["frames"] = report.frames;
    state.counters["estimates"] =
        report.heartrateEstimates.accepted + report.heartrateEstimates.rejected;
  }
}

void measurement(benchmark::State& state) { measure(state, true); }
BENCHMARK(measurement)->Unit(benchmark::kMillisecond);

/// The same frames with nobody who judges finger and values.
void measurement_yardstick(benchmark::State& state) { measure(state, false); }
BENCHMARK(measurement_yardstick)->Unit(benchmark::kMillisecond);

constexpr std::size_t framesOfAMeasurement = 275;

/// The cells of these frames averaged, and no more.
void measuredFrames(benchmark::State& state) {
  const auto frames = fingertip();
  std::vector<int> cells(FrameCells::count);
  std::iota(cells.begin(), cells.end(), 1);
  GridAverager averager;
  for (auto _ : state) {
    for (const BgraFrame& frame : frames | std::views::take(framesOfAMeasurement)) {
      benchmark::DoNotOptimize(
          averager.average(frame.baseAddress(), frame.width(), frame.height(), cells));
    }
  }
}
BENCHMARK(measuredFrames)->Unit(benchmark::kMillisecond);

/// One byte of each line of the cache in the sampled rows: what memory takes for them at the least.
void measuredFrames_yardstick(benchmark::State& state) {
  constexpr std::size_t lineSize = 64;
  const auto frames = fingertip();
  for (auto _ : state) {
    std::uint32_t sum = 0;
    for (const BgraFrame& frame : frames | std::views::take(framesOfAMeasurement)) {
      for (std::size_t y = 0; y < frame.height(); y += 4) {
        const std::uint8_t* row = frame.baseAddress() + frame.bytesPerRow() * y;
        for (std::size_t x = 0; x < frame.bytesPerRow(); x += lineSize) sum += row[x];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(measuredFrames_yardstick)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veyla
