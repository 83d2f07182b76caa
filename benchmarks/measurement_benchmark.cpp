#include <benchmark/benchmark.h>

#include <array>

#include "acquisition/frame_averaging.h"
#include "apps/cli/measurement_run.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"

namespace veyla {
namespace {

/// A recording in memory: the same frames every time, which cost nothing to make.
class MemorySource : public RecordingSource {
 public:
  explicit MemorySource(const std::vector<FrameSample>& frames) : frames_(frames) {}

  bool advance() override { return ++next_ <= frames_.size(); }
  std::optional<double> nextTime() const override {
    if (next_ >= frames_.size()) return std::nullopt;
    return static_cast<double>(next_) / 30.0;
  }
  double time() const override { return static_cast<double>(next_ - 1) / 30.0; }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(frames_[next_ - 1]);
  }

 private:
  const std::vector<FrameSample>& frames_;
  std::size_t next_ = 0;
};

constexpr std::array allCells{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

/// Keeps the frame records of a synthetic fingertip.
class Keeper : public SampleBufferDelegate {
 public:
  std::vector<FrameSample> frames;

  void captureOutput(PixelBuffer& buffer) override {
    frames.push_back(
        averager_.average(buffer.baseAddress(), buffer.width(), buffer.height(), allCells));
  }
  void captureOutput(const FrameSample& sample) override { frames.push_back(sample); }
  void captureOutput(DroppedSample) override {}

 private:
  GridAverager averager_;
};

std::vector<FrameSample> fingertip() {
  SyntheticSource source(FingerOptions{}, 45, 30);
  Keeper keeper;
  while (source.advance()) source.deliver(keeper);
  return keeper.frames;
}

void measurement(benchmark::State& state) {
  const auto frames = fingertip();
  for (auto _ : state) {
    TimedQueue queue;
    QueueClock clock({}, queue);
    MemoryKeyValueStore store;
    EmbeddedResources resources;
    MeasurementRun run({}, std::make_unique<MemorySource>(frames),
                       {.queue = queue, .clock = clock, .store = store, .resources = resources});
    const auto report = run.run();
    benchmark::DoNotOptimize(report.seconds);
    state.counters["seconds"] = report.seconds;
    state.counters["estimates"] =
        report.heartrateEstimates.accepted + report.heartrateEstimates.rejected;
  }
}
BENCHMARK(measurement)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veyla
