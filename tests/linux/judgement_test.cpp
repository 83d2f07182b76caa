#include <gmock/gmock.h>

#include <cmath>
#include <memory>

#include "apps/cli/measurement_run.h"
#include "platform/format.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/portable/embedded_resources.h"
#include "tests/linux/recordings.h"

namespace veyla {
namespace {

/// Everything that the flow leaves behind: the store, each estimate, the end.
struct Left {
  std::string flow;
  MeasurementReport report;
};

Left measured(const std::string& path, double start, bool isJudged) {
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  const EmbeddedResources resources;
  MeasurementRequest request;
  request.start = start;
  request.duration = 42;
  MeasurementRun run(request, openRecording(path),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  run.isJudged = isJudged;
  Left left;
  run.trace = [&](const MeasurementTally::Estimate& estimate) {
    left.flow += formatText("%i %i %a %a;", estimate.counter, static_cast<int>(estimate.verdict),
                            estimate.heartrate ? double{estimate.heartrate->heartrate} : 0,
                            double{estimate.spo2});
  };
  left.report = run.run();
  const MeasurementReport& report = left.report;
  left.flow += formatText("%s %a %a %i %i", nameOf(report.outcome),
                          report.heartrate ? double{*report.heartrate} : 0,
                          report.spo2 ? double{*report.spo2} : 0, report.frames, report.framedrops);
  return left;
}

TEST(JudgementTest, TheFlowIsTheSameToTheBitAndRecordedFingersAreCalledFingers) {
  std::vector<std::string> paths;
  for (int i = 1; i <= 12; ++i) paths.push_back(recordedSeries(formatText("resting-%02d.csv", i)));
  for (int i = 1; i <= 3; ++i) {
    for (const char* hand : {"left", "right"}) {
      paths.push_back(recordedSeries(formatText("hypoxia-%d-%s.csv", i, hand)));
    }
  }
  std::erase(paths, "");
  if (paths.empty()) GTEST_SKIP() << "no recorded series here";
  double finished = 0;
  double called = 0;
  for (const std::string& path : paths) {
    for (const double start : {0.0, 20.0}) {
      SCOPED_TRACE(path + " from " + std::to_string(start));
      const Left judged = measured(path, start, true);
      EXPECT_EQ(judged.flow, measured(path, start, false).flow);
      if (!judged.report.heartrate) continue;
      finished += judged.report.seconds;
      for (const auto& [state, from, to] : judged.report.finger) {
        if (state != FingerState::good && state != FingerState::weak) called += to - from;
      }
    }
  }
  EXPECT_GT(finished, 200);
  EXPECT_LE(called, 0.02 * finished);
}

}  // namespace
}  // namespace veyla
