#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/cli/history_command.h"
#include "benchmarks/bench_platform.h"
#include "history/history_store.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/temporary_folder.h"
#include "platform/portable/json.h"

namespace veyla {
namespace {

/// Ten measurements a day for ten years.
constexpr int entryCount = 36500;

/// A data folder with that history, and standard output led away.
class KeptHistory {
 public:
  KeptHistory() {
    SqliteKeyValueStore store(folder_.path());
    const BenchPlatform platform(store);
    std::vector<HistoryEntry> entries;
    for (int i = 0; i < entryCount; ++i) {
      Labels labels{};
      labels[static_cast<std::size_t>(i % 7)] = true;
      entries.push_back(measuredEntry(i, Date{1.4e9 + 8640.251234 * i}));
      entries.back().labels = labels;
    }
    Utils::setValues(entries);
    options.dataFolder = folder_.path();
    options.output = folder_.path() / "output";
  }

  HistoryOptions options;

 private:
  TemporaryFolder folder_;
};

/// Leads standard output into nothing while it lives.
class Silence {
 public:
  Silence() : kept_(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int nothing = ::open("/dev/null", O_WRONLY);
    ::dup2(nothing, STDOUT_FILENO);
    ::close(nothing);
  }
  ~Silence() {
    std::fflush(stdout);
    ::dup2(kept_, STDOUT_FILENO);
    ::close(kept_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  int kept_;
};

/// A whole `veyla history`, from opening the store to the last line.
void listHistory(benchmark::State& state) {
  const KeptHistory kept;
  const Silence silence;
  for (auto _ : state) benchmark::DoNotOptimize(runHistoryList(kept.options));
}
BENCHMARK(listHistory)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A whole `veyla history export`.
void exportHistory(benchmark::State& state) {
  const KeptHistory kept;
  for (auto _ : state) benchmark::DoNotOptimize(runHistoryExport(kept.options));
}
BENCHMARK(exportHistory)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Merely parses the history's JSON into the library's own tree.
void parsedHistory(benchmark::State& state) {
  const KeptHistory kept;
  SqliteKeyValueStore store(kept.options.dataFolder);
  const std::string text = writeJson(store.value("values").value_or(Value())).value_or("");
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(text));
}
BENCHMARK(parsedHistory)
    ->Name("listHistory_yardstick")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(parsedHistory)
    ->Name("exportHistory_yardstick")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace veyla
