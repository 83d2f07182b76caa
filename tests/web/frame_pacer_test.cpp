#include "platform/web/frame_pacer.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace veyla {
namespace {

using Due = FramePacer::Due;

/// How often each of a camera's frames is delivered, `count` of them; the last one is still held.
std::vector<int> deliveries(double framesPerSecond, int count, double wavering) {
  FramePacer pacer;
  std::vector<int> delivered;
  for (int i = 0; i < count; ++i) {
    const double late = i % 3 == 1 ? 0.8 * wavering : -0.2 * wavering;
    const Due due = pacer.frameAt(i / framesPerSecond + late);
    if (i > 0) delivered.push_back(due.delivered);
  }
  return delivered;
}

TEST(FramePacer, MakesFifteenFramesASecondOfEveryRateAndTakesEachSecondOneOfAWaveringThirty) {
  for (const double rate : {8.0, 15.0, 24.0, 25.0, 29.97, 30.0, 60.0}) {
    const auto counts = deliveries(rate, static_cast<int>(20 * rate) + 1, 0);
    EXPECT_NEAR(std::accumulate(counts.begin(), counts.end(), 0), 300, 1) << rate;
  }
  const auto counts = deliveries(30, 61, 0.015);
  for (std::size_t i = 0; i < counts.size(); ++i) EXPECT_EQ(counts[i], i % 2 == 0 ? 1 : 0) << i;
}

}  // namespace
}  // namespace veyla
