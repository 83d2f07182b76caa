#include "analysis/spo2_processing.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/support/builders.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

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
      {{100, 100.5F}, {50, 60}, {97.5F, false}, {97.5F, false}},
      // A blue minimum of 0 becomes 5.
      {{100, 110}, {0.5F, 10.5F}, {99.5F, true}, {99.5F, true}},
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
