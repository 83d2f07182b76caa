#include "platform/linux/synthetic_finger.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "tests/linux/recordings.h"

namespace veyla {
namespace {

TEST(FingerPainterTest, MeansKeepTheirFractionsUpToBothEnds) {
  for (const double noise : {0.0, 4.0}) {
    const FingerPainter painter(192, 144, noise, 1);
    BgraFrame frame(192, 144);
    FrameCollector painted;
    // Three deviations of the mean of all pixels, and of their rounding.
    const double tolerance = 3 * (noise + 0.5) / std::sqrt(192.0 * 144) + 0.01;
    for (const double value : {-3.0, 0.0, 0.4, 30.25, 254.97, 300.0}) {
      painter.paint({value, 128.4, 255}, static_cast<std::int64_t>(painted.frames.size()), frame);
      painted.captureOutput(static_cast<PixelBuffer&>(frame));
      const FrameSample mean = painted.frames.back();
      EXPECT_NEAR(mean.red, std::clamp(value, 0.0, 255.0), tolerance) << noise;
      EXPECT_NEAR(mean.green, 128.4, tolerance);
      EXPECT_EQ(mean.blue, 255);
    }
  }
}

}  // namespace
}  // namespace veyla
