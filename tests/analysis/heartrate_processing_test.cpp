#include "analysis/heartrate_processing.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

class HeartrateProcessingTest : public testing::Test {
 protected:
  HeartrateProcessingTest() { settings(1024, 50, 5); }

  void settings(int rawDataSize, int validPercent, int maxDistance, int minimumBpm = 40) {
    withHeartrateSettings({{"rawDataSize", rawDataSize},
                           {"minimumBpm", minimumBpm},
                           {"TTValidPercent", validPercent},
                           {"TTMaxDistance", maxDistance},
                           {"neededValidHeartrate", 3}});
  }

  HeartrateResult estimate(const std::vector<float>& pulse) {
    Data::instance().reset();
    addPulse(pulse);
    return HeartrateProcessing::instance().calculateHeartrate();
  }

  TestPlatform platform_;
};

TEST_F(HeartrateProcessingTest, ACosineStandsOutOnTheReportedScale) {
  const auto result = estimate(wave(80));
  EXPECT_EQ(result.index, 80);
  EXPECT_EQ(result.heartrate, 70.3125F);
  EXPECT_GT(result.diffPercent, 99);
  // Amplitude 10 over 1024 samples: 5120, times 4096.
  EXPECT_NEAR(result.max, 5120.0 * 4096, 5120.0 * 4096 * 1e-4);
  EXPECT_LT(result.min, 10000);

  ASSERT_EQ(result.values.size(), 205U);
  EXPECT_EQ(result.values.front().index, 47);
  EXPECT_EQ(result.values.back().index, 251);
  EXPECT_EQ(result.values[80 - 47].value, result.max);

  EXPECT_LT(estimate(wave(80, 1024, 0.25)).max, result.max / 100) << "only the real part counts";
  const auto upsideDown = estimate(wave(80, 1024, 0.5));
  EXPECT_EQ(upsideDown.index, 80) << "a negative real part is as strong as a positive one";
  EXPECT_NEAR(upsideDown.max, result.max, result.max * 1e-3F);
}

TEST_F(HeartrateProcessingTest, BothEndsOfTheSpectrumAreCut) {
  // 40 beats a minute are bin 45.5, rounded to 46: bins 0 to 45 and 467 to 511 go.
  std::map<std::size_t, double>& peaks = platform_.fft.peaks;
  peaks = {{45, 9}, {467, 8}, {46, 3}};
  EXPECT_EQ(estimate({1}).index, 46);
  EXPECT_EQ(estimate({1}).max, 0) << "the extremes are those above the cut-off bin itself";
  peaks = {{45, 9}, {467, 8}, {466, 3}, {46, 2}};
  EXPECT_EQ(estimate({1}).index, 466);
  EXPECT_EQ(estimate({1}).max, 3.0F * 4096);
  EXPECT_EQ(estimate({1}).min, 0);

  settings(1024, 50, 5, 0);
  peaks = {{0, 9}, {511, 8}};
  EXPECT_EQ(estimate({1}).index, 0) << "without a lower limit nothing is cut";

  peaks = {{255, 9}, {256, 1}, {257, 8}};
  settings(1024, 50, 5, 225);
  EXPECT_EQ(estimate({1}).index, 256) << "the one bin that is left in the middle";
  settings(1024, 50, 5, 226);
  EXPECT_TRUE(std::isnan(estimate({1}).diffPercent)) << "none is left";
}

TEST_F(HeartrateProcessingTest, TheSmallestMagnitudeIsCappedAndTheBinsEndWithTheSpectrum) {
  settings(1024, 50, 5, 400);  // Bin 455: everything but bins 455 to 511 is cut, by both cuts.
  platform_.fft.peaks = {{80, 5}};
  const auto result = estimate({1});
  EXPECT_EQ(result.values.front().index, 456);
  EXPECT_EQ(result.values.back().index, 511);
  EXPECT_EQ(result.max, 0);

  settings(1024, 50, 5, 0);
  platform_.fft.peaks.clear();
  for (std::size_t k = 0; k < 512; ++k) platform_.fft.peaks[k] = 3 + static_cast<double>(k);
  EXPECT_EQ(estimate({1}).min, 10000) << "4 × 4096 is no new minimum";
  platform_.fft.peaks[1] = 2;
  EXPECT_EQ(estimate({1}).min, 2.0F * 4096) << "bin 0, of the mean, does not count";
}

TEST_F(HeartrateProcessingTest, OnlyTheLastSamplesCountAndAShortWindowIsPadded) {
  // A level that rises is no pulse, and what a longer window held is gone.
  auto rising = wave(80);
  for (std::size_t i = 0; i < rising.size(); ++i) rising[i] += 50 * static_cast<float>(i);
  EXPECT_GT(estimate(rising).diffPercent, 99);

  settings(256, 50, 5);
  std::vector<float> pulse(500, 200.0F);
  auto newest = wave(20, 256);
  const float clear = estimate(newest).diffPercent;
  for (float& value : newest) value += 150;
  EXPECT_NEAR(estimate(newest).diffPercent, clear, 0.01) << "the mean does not leak into it";
  pulse.insert(pulse.end(), newest.begin(), newest.end());
  const auto alone = estimate(newest);
  EXPECT_LT(alone.max, 1.1F * 1280 * 4096) << "a quarter of the long one's";
  const auto after = estimate(pulse);
  EXPECT_EQ(alone.index, 80) << "20 periods of 256 samples are 80 of 1024";
  EXPECT_EQ(after.max, alone.max);
  EXPECT_EQ(after.values, alone.values);
}

TEST_F(HeartrateProcessingTest, RivalsOfTheSamePeakAreWalkedPast) {
  auto& peaks = platform_.fft.peaks;
  peaks = {{80, 100}, {81, 90}, {75, 80}, {200, 40}, {300, 10}};
  EXPECT_EQ(estimate({1}).index, 80);
  EXPECT_EQ(estimate({1}).diffPercent, (1.0F - 0.4F) * 100.0F)
      << "the first that is clearly weaker";
  EXPECT_EQ(platform_.log.lines.size(), 6U) << "each step of two walks";
  EXPECT_EQ(platform_.log.lines.back(),
            "diffPercent: 60.00, diffIndex: 120, maxIndex: 80, curIndex: 200, maxValue: "
            "409600.000000, currValue: 163840.000000");

  peaks = {{80, 100}, {81, 90}, {86, 70}, {200, 40}};
  EXPECT_EQ(estimate({1}).diffPercent, (1.0F - 0.7F) * 100.0F)
      << "six bins away, a near rival no longer";

  peaks = {{80, 100}, {81, 50}, {200, 49}};
  EXPECT_EQ(estimate({1}).diffPercent, 50) << "exactly the demanded distance is clean";

  peaks = {{80, 100}, {110, 100}};
  EXPECT_EQ(estimate({1}).diffPercent, 0) << "a second peak as strong as the first";
}

TEST_F(HeartrateProcessingTest, WhenEveryBinBelongsToThePeakTheLastOneStandsAndAFlatSignalHasNone) {
  settings(1024, 101, 512);
  platform_.fft.peaks = {{80, 100}};
  EXPECT_EQ(estimate({1}).diffPercent, 100);
  EXPECT_EQ(platform_.log.lines.size(), 511U);
  platform_.fft.peaks = {{80, 0}};
  EXPECT_TRUE(std::isnan(estimate({1}).diffPercent));
  EXPECT_EQ(estimate({1}).max, 0);
}

TEST_F(HeartrateProcessingTest, TheSpreadIsThatOfTheLastNeededHeartratesAndTheirCountIsTheEnd) {
  auto& processing = HeartrateProcessing::instance();
  EXPECT_EQ(processing.diffHeartrates(), 0);
  Data::instance().addHeartrateValue(500);
  EXPECT_TRUE(std::isnan(processing.diffHeartrates()));
  for (const float heartrate : {60.0F, 62.0F, 64.0F}) Data::instance().addHeartrateValue(heartrate);
  EXPECT_EQ(processing.diffHeartrates(), 2);
  for (const bool done : {false, false, false, true, false}) {
    EXPECT_EQ(processing.isDone(), done);
    Data::instance().addFourierValues({});
  }
}

}  // namespace
}  // namespace veyla
