#include "benchmarks/tuning/estimates.h"

#include <algorithm>
#include <string>

#include "apps/cli/measurement_run.h"
#include "platform/format.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"

namespace veyla::tuning {

namespace {

/// The built-in resources, but for heart-rate settings that accept everything and never finish.
class GatheringResources : public Resources {
 public:
  explicit GatheringResources(int rawDataSize) : rawDataSize_(rawDataSize) {}

  std::optional<std::string> read(std::string_view name, std::string_view type) const override {
    if (name != "HeartrateSettings") return builtIn_.read(name, type);
    return formatText(
        R"({"results": [{"iPhoneModel": "iphone6s", "rawDataSize": %d,
            "skipFramesBetweenMeasurements": 1, "neededValidHeartrate": 2000000000,
            "TTValidPercent": 0, "minimumBpm": %d, "TTMaxDistance": 0}]})",
        rawDataSize_, lowestMinimumBpm);
  }

 private:
  EmbeddedResources builtIn_;
  int rawDataSize_;
};

Estimate strongestOf(const HeartrateResult& result) {
  std::vector<FFTValue> bins = result.values;
  const auto end = bins.begin() + Estimate::binCount;
  std::partial_sort(bins.begin(), end, bins.end(),
                    [](const FFTValue& a, const FFTValue& b) { return a.value > b.value; });
  Estimate estimate;
  std::transform(bins.begin(), end, estimate.bins.begin(), [](const FFTValue& bin) {
    return Estimate::Bin{bin.value, static_cast<std::int32_t>(bin.index)};
  });
  return estimate;
}

}  // namespace

Estimates gatherEstimates(std::unique_ptr<RecordingSource> source, int rawDataSize,
                          double seconds) {
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  const GatheringResources resources(rawDataSize);
  MeasurementRun run({.heartrate = true, .spo2 = false, .duration = seconds}, std::move(source),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  Estimates estimates;
  run.trace = [&](const MeasurementTally::Estimate& traced) {
    if (estimates.perFrame.empty()) estimates.firstCounter = traced.counter;
    estimates.perFrame.push_back(strongestOf(*traced.heartrate));
  };
  run.run();
  return estimates;
}

}  // namespace veyla::tuning
