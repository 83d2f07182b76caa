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
}

TEST_F(HeartrateProcessingTest, TheStrongestBinIsSetAgainstTheFirstThatIsNotOfItsPeak) {
  using Peaks = std::map<std::size_t, double>;
  Peaks rising;
  for (std::size_t k = 0; k < 512; ++k) rising[k] = 3 + static_cast<double>(k);
  Peaks risingFromLess = rising;
  risingFromLess[1] = 2;
  const std::tuple<int, int, int, Peaks, const char*> cases[] = {
      // 40 beats a minute are bin 45.5, rounded to 46: bins 0 to 45 and 467 to 511 go. The extremes
      // are those above 46 itself.
      {40, 50, 5, {{45, 9}, {467, 8}, {46, 3}}, "46 of 0 to 0, by 100 %"},
      {40, 50, 5, {{45, 9}, {467, 8}, {466, 4}, {46, 2}}, "466 of 0 to 4, by 50 %"},
      {40, 50, 5, {{80, 0}}, "none"},
      {400, 50, 5, {{80, 5}}, "none"},
      {225, 50, 5, {{255, 9}, {256, 1}, {257, 8}}, "256 of 0 to 0, by 100 %"},
      {226, 50, 5, {{255, 9}, {256, 1}, {257, 8}}, "none"},
      {0, 50, 5, {{0, 8}, {511, 4}}, "0 of 0 to 4, by 50 %"},
      // No magnitude above 10000 is a smallest one, and bin 0, of the mean, does not count.
      {0, 0, 5, rising, "511 of 2.44141 to 514, by 0.194549561 %"},
      {0, 0, 5, risingFromLess, "511 of 2 to 514, by 0.194549561 %"},
      {40, 50, 5, {{80, 100}, {81, 90}, {86, 70}, {200, 40}}, "80 of 0 to 100, by 30.0000019 %"},
      {40, 50, 5, {{80, 100}, {81, 50}, {200, 49}}, "80 of 0 to 100, by 50 %"},
      {40, 101, 512, {{80, 100}, {81, 90}, {300, 10}}, "80 of 0 to 100, by 100 %"},
      {40, 50, 5, {{80, -100}, {81, 90}, {75, 80}, {200, 40}}, "80 of 0 to 100, by 60.0000038 %"}};
  for (const auto& [bpm, validPercent, maxDistance, peaks, expected] : cases) {
    settings(1024, validPercent, maxDistance, bpm);
    platform_.fft.peaks = peaks;
    platform_.log.lines.clear();
    const auto result = estimate({1});
    const auto told =
        formatText("%li of %g to %g, by %.9g %%", static_cast<long>(result.index),
                   static_cast<double>(result.min / 4096), static_cast<double>(result.max / 4096),
                   static_cast<double>(result.diffPercent));
    EXPECT_EQ(std::isnan(result.diffPercent) ? "none" : told, expected);
  }
  EXPECT_EQ(platform_.log.lines.size(), 3U) << "each step of the walk";
  EXPECT_EQ(platform_.log.lines.back(),
            "diffPercent: 60.00, diffIndex: 120, maxIndex: 80, curIndex: 200, maxValue: "
            "409600.000000, currValue: 163840.000000");

  settings(1024, 50, 5, 400);  // Bin 455: all but 57 bins are cut, by both cuts.
  EXPECT_EQ(estimate({1}).values.front().index, 456);
  EXPECT_EQ(estimate({1}).values.back().index, 511);
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

TEST_F(HeartrateProcessingTest, TheNeededCountEndsItAtExactlyThatAndIsHowManyMaySpread) {
  auto& processing = HeartrateProcessing::instance();
  for (const bool done : {false, false, false, true, false}) {
    EXPECT_EQ(processing.isDone(), done);
    Data::instance().addFourierValues({});
  }
  for (const float heartrate : {90.0F, 61.0F, 62.0F, 63.0F}) {
    Data::instance().addHeartrateValue(heartrate);
  }
  EXPECT_EQ(processing.diffHeartrates(), 1) << "of the last ones";
}

}  // namespace
}  // namespace veyla
