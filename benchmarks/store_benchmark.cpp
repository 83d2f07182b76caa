#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "benchmarks/bench_platform.h"
#include "history/history_store.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/temporary_folder.h"

namespace veyla {
namespace {

void sizes(benchmark::internal::Benchmark* of) {
  of->Arg(10)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
}

std::vector<HistoryEntry> history(std::int64_t size) {
  std::vector<HistoryEntry> entries;
  for (std::int64_t i = 0; i < size; ++i) {
    entries.push_back({60 + static_cast<double>(i % 300) / 10, 97.3,
                       Date{1.7e9 + 3600.25 * static_cast<double>(i)}, Labels{}, std::nullopt});
  }
  return entries;
}

void saveEntry(benchmark::State& state) {
  const TemporaryFolder folder;
  SqliteKeyValueStore store(folder.path());
  const BenchPlatform platform(store);
  const auto entries = history(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    Utils::setValues(entries);
    state.ResumeTiming();
    Utils::saveHeartrate(72, 97, Date{1.8e9}, std::nullopt);
  }
}
BENCHMARK(saveEntry)->Apply(sizes);

/// Merely writes a page to a file and brings it to the disk.
void saveEntry_yardstick(benchmark::State& state) {
  const TemporaryFolder folder;
  const std::string page(4096, 'x');
  const std::string file = folder.path() / "page";
  for (auto _ : state) {
    const int descriptor = ::open(file.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    benchmark::DoNotOptimize(::write(descriptor, page.data(), page.size()));
    ::fsync(descriptor);
    ::close(descriptor);
  }
}
BENCHMARK(saveEntry_yardstick)->Apply(sizes);

}  // namespace
}  // namespace veyla
