#include "platform/web/frame_pacer.h"

#include <gtest/gtest.h>

#include <vector>

namespace veyla {
namespace {

using Due = FramePacer::Due;

/// How often each frame of a camera is delivered; the last one is still held.
std::vector<int> deliveries(const std::vector<double>& times) {
  FramePacer pacer;
  std::vector<int> delivered;
  for (std::size_t i = 0; i < times.size(); ++i) {
    const Due due = pacer.frameAt(times[i]);
    if (i > 0) delivered.push_back(due.delivered);
  }
  return delivered;
}

std::vector<double> evenly(double framesPerSecond, int count) {
  std::vector<double> times;
  for (int i = 0; i < count; ++i) times.push_back(i / framesPerSecond);
  return times;
}

int sum(const std::vector<int>& counts) {
  int total = 0;
  for (const int count : counts) total += count;
  return total;
}

TEST(FramePacer, MakesFifteenFramesASecondOfEveryRate) {
  for (const double rate : {8.0, 15.0, 24.0, 25.0, 29.97, 30.0, 60.0}) {
    const int seconds = 20;
    const auto counts = deliveries(evenly(rate, static_cast<int>(seconds * rate) + 1));
    EXPECT_NEAR(sum(counts), seconds * VideoDataOutput::framesPerSecond, 1) << rate;
  }
}

TEST(FramePacer, TakesEverySecondFrameOfAWaveringThirty) {
  std::vector<double> times = evenly(30, 61);
  for (std::size_t i = 0; i < times.size(); ++i) times[i] += i % 3 == 0 ? 0.012 : -0.003;

  const auto counts = deliveries(times);

  for (std::size_t i = 0; i < counts.size(); ++i) EXPECT_EQ(counts[i], i % 2 == 0 ? 1 : 0) << i;
}

TEST(FramePacer, FillsTicksWhereTheCameraHasNoFrameAndDropsThemWhereItHasNoneForLong) {
  FramePacer pacer;
  pacer.frameAt(10);

  EXPECT_EQ(pacer.frameAt(10.2), (Due{.delivered = 3, .dropped = 0}));
  EXPECT_EQ(pacer.frameAt(10.8), (Due{.delivered = 5, .dropped = 4}));
  EXPECT_EQ(pacer.frameAt(10.85), (Due{.delivered = 1, .dropped = 0}));
}

TEST(FramePacer, HasNothingDueForATimeThatGoesBack) {
  FramePacer pacer;
  pacer.frameAt(10);
  pacer.frameAt(10.2);

  EXPECT_EQ(pacer.frameAt(9), Due{});
  EXPECT_EQ(pacer.frameAt(10.2), Due{});
}

TEST(FramePacer, BeginsAnewWithTheNextFrame) {
  FramePacer pacer;
  pacer.frameAt(10);
  pacer.frameAt(11);
  pacer.restart();

  EXPECT_EQ(pacer.frameAt(500), Due{});
  EXPECT_EQ(pacer.frameAt(500.2), (Due{.delivered = 3, .dropped = 0}));
}

}  // namespace
}  // namespace veyla
