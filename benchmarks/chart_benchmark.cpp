#include <benchmark/benchmark.h>

#include <optional>
#include <utility>
#include <vector>

#include "benchmarks/bench_platform.h"
#include "history/history_aggregation.h"
#include "history/history_store.h"
#include "platform/linux/memory_key_value_store.h"

namespace veyla {
namespace {

/// Ten years of ten measurements a day, up to now.
constexpr std::int64_t entries = 36500;

/// A platform with a history, in memory: what reading a file costs is the store's.
class Charting {
 public:
  Charting() {
    const double now = services().clock.now().secondsSince1970;
    std::vector<HistoryEntry> values(static_cast<std::size_t>(entries));
    for (std::size_t i = 0; i < values.size(); ++i) {
      const auto age = static_cast<double>(values.size() - i);
      values[i] = measuredEntry(static_cast<int>(i), Date{now - 8640 * age});
    }
    Utils::setValues(values);
  }

  /// A platform as a program begins with it, which keeps no day's texts yet.
  void renewPlatform(benchmark::State& state) {
    state.PauseTiming();
    platform_.reset();
    platform_.emplace(store_);
    state.ResumeTiming();
  }

 private:
  MemoryKeyValueStore store_;
  std::optional<BenchPlatform> platform_{std::in_place, store_};
};

/// One change of the period on the charts screen.
void chart(benchmark::State& state) {
  Charting charting;
  const auto days = static_cast<std::int32_t>(state.range(0));
  for (auto _ : state) {
    charting.renewPlatform(state);
    auto values = Utils::getLastValuesForLabel(-1, days);
    benchmark::DoNotOptimize(Utils::makeChartDataSets2(values, days));
  }
}
BENCHMARK(chart)->Arg(7)->Arg(90)->Arg(-1)->Unit(benchmark::kMillisecond);

/// Merely reads the history and writes the day of each of its entries.
void chart_yardstick(benchmark::State& state) {
  Charting charting;
  for (auto _ : state) {
    charting.renewPlatform(state);
    const auto values = Utils::getValues();
    for (const HistoryEntry& entry : *values) {
      benchmark::DoNotOptimize(services().dates.formatted(entry.date, "dd/MM"));
    }
  }
}
BENCHMARK(chart_yardstick)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veyla
