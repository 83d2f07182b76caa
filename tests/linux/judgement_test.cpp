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

/// A measurement's report, and in `flow` everything that the flow came to: each estimate, the end.
MeasurementReport measured(const std::string& path, double start, bool isJudged,
                           std::string& flow) {
  TimedQueue queue;
  QueueClock clock({}, queue);
  MemoryKeyValueStore store;
  const EmbeddedResources resources;
  MeasurementRun run({.start = start, .duration = 42}, openRecording(path),
                     {.queue = queue, .clock = clock, .store = store, .resources = resources});
  run.isJudged = isJudged;
  run.trace = [&](const MeasurementTally::Estimate& estimate) {
    flow += formatText("%i %i %a %a;", estimate.counter, static_cast<int>(estimate.verdict),
                       estimate.heartrate ? double{estimate.heartrate->heartrate} : 0,
                       double{estimate.spo2});
  };
  const MeasurementReport report = run.run();
  flow += formatText("%s %a %a %i %i", nameOf(report.outcome), double{report.heartrate.value_or(0)},
                     double{report.spo2.value_or(0)}, report.frames, report.framedrops);
  return report;
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
      std::string judgedFlow;
      std::string flow;
      const MeasurementReport judged = measured(path, start, true, judgedFlow);
      measured(path, start, false, flow);
      EXPECT_EQ(judgedFlow, flow);
      if (!judged.heartrate) continue;
      finished += judged.seconds;
      for (const auto& [state, from, to] : judged.finger) {
        if (state != FingerState::good && state != FingerState::weak) called += to - from;
      }
    }
  }
  EXPECT_GT(finished, 200);
  EXPECT_LE(called, 0.02 * finished);
}

}  // namespace
}  // namespace veyla
