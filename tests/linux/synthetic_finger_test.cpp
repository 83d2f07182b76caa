#include "platform/linux/synthetic_finger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "apps/cli/command_device.h"
#include "apps/cli/frame_averager.h"
#include "platform/linux/resource_files.h"
#include "tests/linux/recordings.h"

namespace veyla {
namespace {

constexpr int samplesPerSecond = 1000;

double green(const SyntheticFinger& finger, int sample) {
  return finger.at(sample / double{samplesPerSecond}).green;
}

/// The estimate from a window's ranges and minima, as the measurement forms it.
double spo2Over(const SyntheticFinger& finger, double start, double seconds) {
  ChannelMeans low{255, 255, 255};
  ChannelMeans high;
  for (int i = 0; i < seconds * samplesPerSecond; ++i) {
    const ChannelMeans colour = finger.at(start + i / double{samplesPerSecond});
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
  for (const double spo2 : {50.0, 75.0, 90.0, 97.0, 99.0}) {
    for (const double bpm : {45.0, 72.0, 180.0}) {
      FingerOptions options;
      options.bpm = bpm;
      options.spo2 = spo2;
      const SyntheticFinger finger(options);
      for (const double start : {0.0, 3.3, 17.0}) {
        EXPECT_NEAR(spo2Over(finger, start, 4), spo2, 0.5) << bpm << " at " << start;
      }
    }
  }
  FingerOptions options;
  options.spo2 = 100;
  EXPECT_NEAR(spo2Over(SyntheticFinger(options), 0, 4), 99.5, 0.1) << "red must pulse all the same";
}

TEST(SyntheticFingerTest, BeatsAtTheAskedRateWithSlightVariation) {
  for (const double bpm : {40.0, 72.0, 200.0}) {
    FingerOptions options;
    options.bpm = bpm;
    options.breathing = 0;
    const SyntheticFinger varied(options);
    options.rateVariation = 0;
    const SyntheticFinger even(options);
    // After a breath of 4 s and a whole number of beats all is as it was, but not before.
    const double beat = 60 / bpm;
    double most = 0;
    for (double time = 0; time < 4; time += 0.01) {
      EXPECT_NEAR(even.at(time).green, even.at(time + 3 * beat).green, 1e-6);
      EXPECT_NEAR(varied.at(time).green, varied.at(time + 60).green, 1e-6);
      most = std::max(most, std::abs(varied.at(time).green - varied.at(time + beat).green));
    }
    EXPECT_GT(most, 0.1);
    EXPECT_LT(most, 2);
  }
}

TEST(SyntheticFingerTest, BrightnessFallsFasterThanItReturns) {
  FingerOptions options;
  options.breathing = 0;
  options.rateVariation = 0;
  options.bpm = 60;
  const SyntheticFinger finger(options);
  const auto falls = [&](int i) { return green(finger, i) < green(finger, i - 1); };
  int falling = 0;
  int turns = 0;
  for (int i = 1; i < samplesPerSecond; ++i) {
    falling += falls(i) ? 1 : 0;
    turns += falls(i) != falls(i + 1) ? 1 : 0;
  }
  EXPECT_LT(falling, samplesPerSecond / 2);
  EXPECT_EQ(turns, 4) << "systole, notch, dicrotic wave and the end of diastole";
}

TEST(SyntheticFingerTest, MotionComesInBurstsThatTakeLight) {
  FingerOptions options;
  const SyntheticFinger still(options);
  options.motion = 10;
  const SyntheticFinger moving(options);
  double most = 0;
  int touched = 0;
  constexpr int samples = 6000;
  for (int i = 0; i < samples; ++i) {
    const double lost = 1 - moving.at(i * 0.01).red / still.at(i * 0.01).red;
    most = std::max(most, lost);
    touched += lost > 0.001 ? 1 : 0;
  }
  EXPECT_GT(most, 0.03);
  EXPECT_LE(most, 0.1);
  EXPECT_GT(touched, samples / 50);
  EXPECT_LT(touched, samples / 3);
}

TEST(FingerPainterTest, TheSameSeedDrawsTheSameFramesAndAnotherDoesNot) {
  const auto painted = [](std::uint64_t seed) {
    BgraFrame frame(64, 48);
    FingerPainter(64, 48, 1, seed).paint({180.3, 90.6, 25.1}, 3, frame);
    return std::vector<int>(frame.baseAddress(), frame.baseAddress() + std::size_t{64} * 48 * 4);
  };
  EXPECT_EQ(painted(7), painted(7));
  EXPECT_NE(painted(7), painted(8));
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

TEST(FingerPainterTest, CellsDifferSoThatWholeMediansCarryThePulse) {
  const SyntheticFinger finger({});
  SyntheticSource source({}, 20, 15);
  FrameAverager averager(EmbeddedResources(), defaultDevice);
  std::vector<double> errors;
  std::vector<double> asked;
  while (source.advance()) {
    source.deliver(averager);
    asked.push_back(finger.at(source.time()).red);
    errors.push_back(static_cast<double>(averager.frame().record.red) - asked.back());
  }
  ASSERT_EQ(errors.size(), 300U);
  const double offset = std::accumulate(errors.begin(), errors.end(), 0.0) / 300;
  double square = 0;
  for (const double error : errors) square += std::pow(error - offset, 2) / 300;
  const auto [low, high] = std::minmax_element(asked.begin(), asked.end());
  EXPECT_LT(std::sqrt(square), 0.1 * (*high - *low)) << "a tenth of red's own pulse";
}

TEST(ColourTrackTest, InterpolatesBetweenRowsAndHoldsTheEnds) {
  const ScratchFolder folder;
  ColourTrack track(
      folder.write("a.csv", "time,R,G,B\n100,10,20,30\n200,20,0,30\n200,50,0,30\n400,52,0,40\n"));
  EXPECT_DOUBLE_EQ(track.duration(), 0.3);
  EXPECT_DOUBLE_EQ(track.at(0.05).red, 15);
  EXPECT_DOUBLE_EQ(track.at(0.05).green, 10);
  EXPECT_DOUBLE_EQ(track.at(0.2).red, 51);
  EXPECT_DOUBLE_EQ(track.at(0.2).blue, 35);
  EXPECT_DOUBLE_EQ(track.at(9).red, 52);
  EXPECT_DOUBLE_EQ(track.at(0).green, 20) << "going back";
}

}  // namespace
}  // namespace veyla
