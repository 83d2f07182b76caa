#include "platform/linux/synthetic_finger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "apps/cli/command_device.h"
#include "apps/cli/frame_averager.h"
#include "platform/linux/resource_files.h"
#include "tests/linux/recordings.h"

namespace veyla {
namespace {

constexpr int samplesPerSecond = 1000;

/// The estimate from a window's ranges and minima, as the measurement forms it.
double spo2Over(const SyntheticFinger& finger, double start, double seconds) {
  ChannelMeans low{255, 255, 255};
  ChannelMeans high;
  for (int i = 0; i < seconds * samplesPerSecond; ++i) {
    const ChannelMeans colour = finger.at(start + i / static_cast<double>(samplesPerSecond));
    low = {std::min(low.red, colour.red), std::min(low.green, colour.green),
           std::min(low.blue, colour.blue)};
    high = {std::max(high.red, colour.red), std::max(high.green, colour.green),
            std::max(high.blue, colour.blue)};
  }
  const double red = high.red - low.red;
  const double green = high.green - low.green;
  return 100 * (1 - (red / low.red) / ((green - red) / low.blue));
}

/// Times at which brightness reaches its lowest of each beat.
std::vector<double> systoles(const SyntheticFinger& finger, double bpm, double seconds) {
  std::vector<double> times;
  const double radius = 0.4 * 60 / bpm;
  const auto at = [&](int i) { return finger.at(i / double{samplesPerSecond}).green; };
  const int reach = static_cast<int>(radius * samplesPerSecond);
  for (int i = reach; i < seconds * samplesPerSecond; ++i) {
    if (at(i - 1) <= at(i) || at(i + 1) < at(i)) continue;
    bool lowest = true;
    for (int j = i - reach; lowest && j <= i + reach; j += 5) lowest = at(i) <= at(j);
    if (lowest) times.push_back(i / double{samplesPerSecond});
  }
  return times;
}

ChannelMeans meanOf(const BgraFrame& frame) {
  double sums[3] = {};
  const std::size_t count = frame.width() * frame.height();
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t c = 0; c < 3; ++c) sums[c] += frame.baseAddress()[4 * i + c];
  }
  const auto n = static_cast<double>(count);
  return {sums[2] / n, sums[1] / n, sums[0] / n};
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
    const auto beats = systoles(SyntheticFinger(options), bpm, 120);
    ASSERT_GT(beats.size(), 3U);
    const auto intervals = static_cast<double>(beats.size() - 1);
    EXPECT_NEAR(60 * intervals / (beats.back() - beats.front()), bpm, 0.05);
    double shortest = 10;
    double longest = 0;
    for (std::size_t i = 1; i < beats.size(); ++i) {
      shortest = std::min(shortest, beats[i] - beats[i - 1]);
      longest = std::max(longest, beats[i] - beats[i - 1]);
    }
    EXPECT_GT(longest / shortest, 1.01);
    EXPECT_LT(longest / shortest, 1.06);
  }
}

TEST(SyntheticFingerTest, BrightnessFallsFasterThanItReturns) {
  FingerOptions options;
  options.breathing = 0;
  options.rateVariation = 0;
  options.bpm = 60;
  const SyntheticFinger finger(options);
  int falling = 0;
  int turns = 0;
  for (int i = 1; i < samplesPerSecond; ++i) {
    const auto at = [&](int j) { return finger.at(j / double{samplesPerSecond}).green; };
    falling += at(i) < at(i - 1) ? 1 : 0;
    turns += (at(i) < at(i - 1)) != (at(i + 1) < at(i)) ? 1 : 0;
  }
  EXPECT_LT(falling, samplesPerSecond / 2);
  EXPECT_EQ(turns, 4) << "systole, notch, dicrotic wave and the end of diastole";
}

TEST(SyntheticFingerTest, MotionComesInBurstsThatTakeLight) {
  FingerOptions still;
  FingerOptions moving;
  moving.motion = 10;
  double most = 0;
  int touched = 0;
  constexpr int samples = 6000;
  for (int i = 0; i < samples; ++i) {
    const double lost =
        1 - SyntheticFinger(moving).at(i * 0.01).red / SyntheticFinger(still).at(i * 0.01).red;
    most = std::max(most, lost);
    touched += lost > 0.001 ? 1 : 0;
  }
  EXPECT_GT(most, 0.03);
  EXPECT_LE(most, 0.1);
  EXPECT_GT(touched, samples / 50);
  EXPECT_LT(touched, samples / 3);
}

TEST(FingerPainterTest, TheSameSeedDrawsTheSameFramesAndAnotherDoesNot) {
  BgraFrame frames[3] = {{64, 48}, {64, 48}, {64, 48}};
  const ChannelMeans colour{180.3, 90.6, 25.1};
  FingerPainter(64, 48, 1, 7).paint(colour, 3, frames[0]);
  FingerPainter(64, 48, 1, 7).paint(colour, 3, frames[1]);
  FingerPainter(64, 48, 1, 8).paint(colour, 3, frames[2]);
  const auto bytes = [](const BgraFrame& frame) {
    return std::vector<int>(frame.baseAddress(), frame.baseAddress() + std::size_t{64} * 48 * 4);
  };
  EXPECT_EQ(bytes(frames[0]), bytes(frames[1]));
  EXPECT_NE(bytes(frames[0]), bytes(frames[2]));
}

TEST(FingerPainterTest, MeansKeepTheirFractionsUpToBothEnds) {
  for (const double noise : {0.0, 1.0, 4.0}) {
    const FingerPainter painter(320, 240, noise, 1);
    BgraFrame frame(320, 240);
    std::int64_t index = 0;
    for (const double value : {0.0, 0.02, 0.4, 1.7, 30.25, 128.9, 230.0, 250.5, 254.6, 254.97}) {
      painter.paint({value, 128.4, 255}, index++, frame);
      const ChannelMeans mean = meanOf(frame);
      // Three deviations of the mean of 76800 pixels, and of their rounding.
      const double tolerance = 3 * (noise + 0.5) / std::sqrt(320.0 * 240) + 0.01;
      EXPECT_NEAR(mean.red, value, tolerance) << noise;
      EXPECT_NEAR(mean.green, 128.4, tolerance);
      EXPECT_EQ(mean.blue, 255);
    }
    painter.paint({-3, 300, 0}, 0, frame);
    EXPECT_EQ(meanOf(frame).red, 0);
    EXPECT_EQ(meanOf(frame).green, 255);
  }
}

TEST(FingerPainterTest, CellsDifferSoThatWholeMediansCarryThePulse) {
  FingerOptions options;
  const SyntheticFinger finger(options);
  SyntheticSource source(options, 20, 15);
  FrameAverager averager(EmbeddedResources(), defaultDevice);
  double error = 0;
  double offset = 0;
  int count = 0;
  std::vector<double> drawn;
  std::vector<double> asked;
  while (source.advance()) {
    source.deliver(averager);
    drawn.push_back(static_cast<double>(averager.frame().record.red));
    asked.push_back(finger.at(source.time()).red);
    offset += drawn.back() - asked.back();
    ++count;
  }
  offset /= count;
  for (std::size_t i = 0; i < drawn.size(); ++i) {
    error += std::pow(drawn[i] - asked[i] - offset, 2) / count;
  }
  ASSERT_EQ(count, 300);
  const auto [low, high] = std::minmax_element(asked.begin(), asked.end());
  EXPECT_LT(std::sqrt(error), 0.1 * (*high - *low)) << "a tenth of red's own pulse";
}

TEST(ColourTrackTest, InterpolatesBetweenRowsAndHoldsTheEnds) {
  const ScratchFolder folder;
  ColourTrack track(
      folder.write("a.csv", "time,R,G,B\n100,10,20,30\n200,20,0,30\n200,50,0,30\n400,52,0,40\n"));
  EXPECT_DOUBLE_EQ(track.duration(), 0.3);
  EXPECT_DOUBLE_EQ(track.at(0.05).red, 15);
  EXPECT_DOUBLE_EQ(track.at(0.2).red, 51);
  EXPECT_DOUBLE_EQ(track.at(0.2).blue, 35);
  EXPECT_DOUBLE_EQ(track.at(9).red, 52);
  EXPECT_DOUBLE_EQ(track.at(0).green, 20) << "going back";
}

}  // namespace
}  // namespace veyla
