#include "platform/linux/synthetic_finger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/linux/recordings.h"

namespace veyla {
namespace {

/// The estimate from a window's ranges and minima, as the measurement forms it.
double spo2Over(double spo2, double bpm, double start) {
  FingerOptions options;
  options.bpm = bpm;
  options.spo2 = spo2;
  const SyntheticFinger finger(options);
  ChannelMeans low{255, 255, 255};
  ChannelMeans high;
  for (double time = start; time < start + 4; time += 0.001) {
    const ChannelMeans colour = finger.at(time);
    for (double ChannelMeans::*channel :
         {&ChannelMeans::red, &ChannelMeans::green, &ChannelMeans::blue}) {
      low.*channel = std::min(low.*channel, colour.*channel);
      high.*channel = std::max(high.*channel, colour.*channel);
    }
  }
  const double red = high.red - low.red;
  return 100 * (1 - (red / low.red) / ((high.green - low.green - red) / low.blue));
}

TEST(SyntheticFingerTest, GivesTheAskedSaturationOverAnyWindow) {
  for (const double spo2 : {50.0, 75.0, 90.0, 99.0}) {
    for (const double bpm : {45.0, 180.0}) {
      for (const double start : {0.0, 3.3}) {
        EXPECT_NEAR(spo2Over(spo2, bpm, start), spo2, 0.5) << bpm << " at " << start;
      }
    }
  }
  EXPECT_NEAR(spo2Over(100, 72, 0), 99.5, 0.1) << "red must pulse all the same";
}

TEST(FingerPainterTest, MeansKeepTheirFractionsUpToBothEnds) {
  for (const double noise : {0.0, 1.0, 4.0}) {
    const FingerPainter painter(192, 144, noise, 1);
    BgraFrame frame(192, 144);
    FrameCollector painted;
    const auto paint = [&](const ChannelMeans& means) {
      painter.paint(means, static_cast<std::int64_t>(painted.frames.size()), frame);
      painted.captureOutput(static_cast<PixelBuffer&>(frame));
      return painted.frames.back();
    };
    // Three deviations of the mean of all pixels, and of their rounding.
    const double tolerance = 3 * (noise + 0.5) / std::sqrt(192.0 * 144) + 0.01;
    for (const double value : {0.0, 0.02, 0.4, 1.7, 30.25, 128.9, 230.0, 250.5, 254.6, 254.97}) {
      const FrameSample mean = paint({value, 128.4, 255});
      EXPECT_NEAR(mean.red, value, tolerance) << noise;
      EXPECT_NEAR(mean.green, 128.4, tolerance);
      EXPECT_EQ(mean.blue, 255);
    }
    const FrameSample ends = paint({-3, 300, 0});
    EXPECT_EQ(ends.red, 0);
    EXPECT_EQ(ends.green, 255);
  }
}

}  // namespace
}  // namespace veyla
