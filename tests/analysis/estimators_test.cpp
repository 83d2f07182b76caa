#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "analysis/heartrate_processing.h"
#include "analysis/spo2_processing.h"
#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

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
    for (const float sample : pulse) Data::instance().addHRValue(sample);
    return HeartrateProcessing::instance().calculateHeartrate();
  }

  TestPlatform platform_;
};

TEST_F(HeartrateProcessingTest, ACosineStandsOutOnTheReportedScale) {
  const auto result = estimate(wave(80));
  EXPECT_EQ(result.index, 80);
  EXPECT_EQ(result.heartrate, 70.3125F);
  EXPECT_EQ(HeartrateProcessing::calcBPM(512), 450);
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
      {40, 50, 5, {{0, 9}, {1, 9}, {45, 9}, {467, 8}, {46, 3}}, "46 of 0 to 0, by 100 %"},
      {40, 50, 5, {{45, 9}, {467, 8}, {466, 4}, {46, 2}}, "466 of 0 to 4, by 50 %"},
      {40, 50, 5, {{80, 0}}, "none"},
      {225, 50, 5, {{255, 9}, {256, 1}, {257, 8}}, "256 of 0 to 0, by 100 %"},
      {226, 50, 5, {{255, 9}, {256, 1}, {257, 8}}, "none"},
      {0, 50, 5, {{0, 8}, {511, 4}}, "0 of 0 to 4, by 50 %"},
      // No magnitude above 10000 is a smallest one, and bin 0, of the mean, does not count.
      {0, 0, 5, rising, "511 of 2.44141 to 514, by 0.194549561 %"},
      {0, 0, 5, risingFromLess, "511 of 2 to 514, by 0.194549561 %"},
      {40, 50, 5, {{80, 100}, {81, 90}, {86, 70}, {200, 40}}, "80 of 0 to 100, by 30.0000019 %"},
      {40, 50, 5, {{80, 100}, {81, 50}, {200, 49}}, "80 of 0 to 100, by 50 %"},
      {40, 101, 512, {{80, 100}, {81, 90}, {300, 10}}, "80 of 0 to 100, by 100 %"},
      {40, 50, 5, {{80, 100}, {90, NAN}, {100, 30}, {200, 40}}, "80 of 0 to 100, by 60.0000038 %"},
      {40, 50, 5, {{80, -100}, {85, 90}, {75, 80}, {200, 40}}, "80 of 0 to 100, by 60.0000038 %"}};
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

struct Range {
  float min;
  float max;
};

/// Frames that swing once between the extremes of each channel.
void addSwing(Range red, Range green, Range blue) {
  for (const bool high : {false, true}) {
    Data::instance().addRedValue(high ? red.max : red.min);
    Data::instance().addGreenValue(high ? green.max : green.min);
    Data::instance().addBlueValue(high ? blue.max : blue.min);
  }
}

constexpr auto otherPhone = "iPhone8,1";
constexpr auto iphone4 = "iPhone3,1";
constexpr auto iphone4s = "iPhone4,1";

/// A saturation, and whether it tells that it stands on hardly any blue.
using Estimate = std::pair<float, bool>;

/// What one swing gives on this hardware.
Estimate estimateOf(const char* hardware, bool newAlgorithm, Range red, Range green, Range blue) {
  TestPlatform platform(hardware);
  withSpo2Settings({{"useNewAlgorithm", newAlgorithm}, {"rawDataSize", 10}});
  addSwing(red, green, blue);
  Spo2Processing& processing = Spo2Processing::instance();
  const float spo2 = processing.calculateSpo2({});
  EXPECT_EQ(processing.figures().lacksRedPulse, red.min == red.max);
  return {spo2, processing.figures().lacksBlue};
}

TEST(Spo2ProcessingTest, TheOldAlgorithmComparesRedWithBlueAndHelpsTwoDevicesOut) {
  // The ratios are rounded to single precision before they are compared.
  const auto rounded =
      static_cast<float>((1.0 - static_cast<double>((1.0F / 90.0F) / (13.0F / 70.0F))) * 100);
  const std::tuple<Range, Range, Estimate, Estimate> cases[] = {
      {{100, 110}, {50, 60}, {50, false}, {50, false}},
      {{90, 91}, {70, 83}, {rounded, false}, {rounded, false}},
      // The percentage is taken in double precision.
      {{100, 101}, {50, 53}, {83.33333588F, false}, {83.33333588F, false}},
      // A blue range below 3 becomes 10.
      {{100, 110}, {50, 52}, {-150, false}, {50, true}},
      {{100, 110}, {50, 50}, {0, false}, {50, true}},
      {{100, 112}, {50, 53}, {-100, false}, {-100, false}},
      // A red range of 0 becomes 1.
      {{100, 100}, {50, 60}, {0, false}, {95, false}},
      {{100, 100.125F}, {50, 60}, {99.375F, false}, {99.375F, false}},
      // A blue minimum of 0 becomes 5.
      {{100, 110}, {0.125F, 10.125F}, {99.875F, true}, {99.875F, true}},
      {{100, 110}, {0, 10}, {0, true}, {95, true}},
      {{0, 110}, {50, 60}, {0, false}, {0, false}},
      {{100, 110}, {3.5F, 10.5F}, {95, true}, {95, true}},
      {{100, 110}, {4, 12}, {95, false}, {95, false}}};
  for (const auto& [red, blue, estimate, onTwoDevices] : cases) {
    EXPECT_EQ(estimateOf(otherPhone, false, red, {80, 80}, blue), estimate);
    for (const char* device : {iphone4, iphone4s}) {
      EXPECT_EQ(estimateOf(device, false, red, {80, 80}, blue), onTwoDevices);
    }
  }
  TestPlatform nothingRecorded;
  EXPECT_EQ(Spo2Processing::instance().calculateSpo2({}), 0);
}

TEST(Spo2ProcessingTest, TheOldWindowsAreNinetyFramesAndLongerOnTwoDevices) {
  const auto spo2WithOutlierAt = [](const char* hardware, int framesBack, bool inRed) {
    TestPlatform platform(hardware);
    for (int i = 200; i > 0; --i) {
      const bool high = i % 2 == 0;
      Data::instance().addRedValue(inRed && i == framesBack ? 200 : high ? 110 : 100);
      Data::instance().addBlueValue(!inRed && i == framesBack ? 250 : high ? 60 : 50);
    }
    return Spo2Processing::instance().calculateSpo2({});
  };
  for (const bool inRed : {true, false}) {
    const float within = inRed ? -400 : 97.5F;
    EXPECT_FLOAT_EQ(spo2WithOutlierAt(otherPhone, 91, inRed), 50);
    EXPECT_FLOAT_EQ(spo2WithOutlierAt(otherPhone, 90, inRed), within);
    EXPECT_FLOAT_EQ(spo2WithOutlierAt(iphone4, 151, inRed), 50);
    EXPECT_FLOAT_EQ(spo2WithOutlierAt(iphone4s, 150, inRed), within);
  }
}

TEST(Spo2ProcessingTest, TheNewAlgorithmSetsGreenBeyondRedAgainstTheBlueMinimum) {
  const std::tuple<Range, Range, Range, Estimate> cases[] = {
      {{100, 110}, {80, 110}, {40, 40}, {80, false}},
      {{100, 110}, {80, 90}, {40, 45}, {-std::numeric_limits<float>::infinity(), false}},
      {{100, 110}, {80, 80}, {40, 45}, {0, false}},
      {{100, 100}, {80, 90}, {40, 45}, {0, false}},
      {{0, 10}, {80, 110}, {40, 45}, {0, false}},
      {{100, 110}, {0, 30}, {40, 45}, {0, false}},
      {{100, 110}, {80, 85}, {40, 45}, {0, false}},  // 180 per cent are discarded,
      {{100, 110}, {80, 110}, {0, 5}, {100, true}},  // and 100 itself stays.
      {{100, 110}, {80, 104}, {3.5F, 9}, {97.5F, true}},
      {{100, 110}, {80, 106}, {4, 9}, {97.5F, false}}};
  for (const auto& [red, green, blue, estimate] : cases) {
    EXPECT_EQ(estimateOf(otherPhone, true, red, green, blue), estimate);
  }
}

TEST(Spo2ProcessingTest, TheNewWindowAndItsDetrendingComeFromTheSettings) {
  TestPlatform platform;
  auto& processing = Spo2Processing::instance();
  addSwing({10, 210}, {10, 210}, {10, 210});
  addSwing({100, 110}, {80, 110}, {40, 40});
  withSpo2Settings({{"useNewAlgorithm", true}, {"rawDataSize", 2}});
  EXPECT_EQ(processing.calculateSpo2({}), 80);
  EXPECT_THAT(platform.log.lines,
              ElementsAre("Using new spo2 algorithm", "Not Using spo2 raw values detrend", _));

  withSpo2Settings({{"useNewAlgorithm", true}, {"rawDataSize", 2}, {"useTrend", true}});
  EXPECT_EQ(processing.calculateSpo2({}), 0) << "two samples are their own line";
  EXPECT_THAT(platform.log.lines, Contains("Using spo2 raw values detrend"));

  // A level that rises by 10 a frame under the swing leaves the value nearly alone.
  Data::instance().reset();
  for (int i = 0; i < 200; ++i) {
    const auto rise = static_cast<float>(10 * i);
    const auto high = static_cast<float>(i % 2);
    Data::instance().addRedValue(1000 + rise + 1 * high);
    Data::instance().addGreenValue(1000 + rise + 21 * high);
    Data::instance().addBlueValue(1000 + rise);
  }
  withSpo2Settings({{"useNewAlgorithm", true}, {"rawDataSize", 200}, {"useTrend", true}});
  EXPECT_NEAR(processing.calculateSpo2({}), 95, 0.2);
  EXPECT_NEAR(processing.figures().red.dc, 1995, 1) << "the mean level is kept";
}

TEST(Spo2ProcessingTest, LabelAndLogTellTheFiguresBehindTheValue) {
  TestPlatform platform;
  std::string label;
  const auto toLabel = [&](const std::string& text) { label = text; };
  addSwing({100, 110}, {80, 85}, {40, 60});
  withSpo2Settings({{"useNewAlgorithm", false}});
  EXPECT_EQ(Spo2Processing::instance().calculateSpo2(toLabel), 80);
  EXPECT_EQ(label, "");
  EXPECT_THAT(platform.log.lines,
              ElementsAre("Using old spo2 algorithm",
                          "spo2: 80.0, ACred: 10.0, DCred: 100.0, ACblue: 20.0, DCblue: 40.0"));

  withSpo2Settings({{"useNewAlgorithm", true}, {"rawDataSize", 2}});
  EXPECT_EQ(Spo2Processing::instance().calculateSpo2(toLabel), 0);
  EXPECT_EQ(label, "ACR=10 DCR=100 ACG=5 DCG=80 ACB=20 DCB=40 old spo2=80.0, new spo2=180.0")
      << "before the value is discarded";
  EXPECT_EQ(platform.log.lines.back(),
            "newspo2: 180.0, spo2: 80.0, ACred: 10.0, DCred: 100.0, ACblue: 20.0, DCblue: 40.0");
}

}  // namespace
}  // namespace veyla
