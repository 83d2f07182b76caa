#include "measuring/doubts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/support/builders.h"

namespace veyla {
namespace {

using namespace testing;

/// `red`, but for so many dark frames from one on.
FingerCoach coachThatSaw(const std::vector<float>& red, std::size_t dark = 0,
                         std::size_t from = 100) {
  FingerCoach coach;
  for (std::size_t i = 0; i < red.size(); ++i) {
    const bool isDark = i >= from && i < from + dark;
    coach.look(isDark ? FrameColours{} : FrameColours{red[i], 40, 30, std::nullopt});
  }
  return coach;
}

TEST(DoubtsTest, AHeartRateIsDoubtedWhereTheColoursDoNotRepeatAtItsPeriodOrAnotherOneServesAsWell) {
  const std::vector<float> still(210, 0);
  const std::tuple<double, double, double, std::vector<Doubt>> cases[] = {
      {72, 72, 5, {}},
      {45, 45, 0, {}},
      {200, 200, 0, {}},
      {38, 76, 3, {Doubt::halfRate}},
      {25, 50, 2, {Doubt::unclearPulse}},
      {101, 50.5, 0, {Doubt::doubleRate}},
      {64, 49, 0, {Doubt::unclearPulse}},
      {72, 100, 0, {Doubt::unclearPulse}}};
  for (const auto& [truth, told, breath, doubts] : cases) {
    SCOPED_TRACE(testing::Message() << told << " for " << truth);
    const auto series = photoplethysmogram(truth, 14, breath);
    // The clearer of the two channels speaks, whichever it is.
    for (const auto& judgement : {judgeHeartrate(told, series, still, coachThatSaw(series)),
                                  judgeHeartrate(told, still, series, coachThatSaw(series))}) {
      EXPECT_EQ(judgement.doubts, doubts);
      EXPECT_EQ(judgement.clarity >= 0.58, doubts.empty() || truth > told + 40);
    }
  }
  // How strong the second harmonic may be.
  for (const auto& [harmonic, doubts] :
       {std::pair{3.0, std::vector<Doubt>{}}, {3.5, std::vector{Doubt::doubleRate}}}) {
    std::vector<float> series;
    for (int i = 0; i < 210; ++i) {
      const double beat = 2 * std::numbers::pi * i / 15;
      series.push_back(static_cast<float>(150 + std::sin(beat) + harmonic * std::sin(2 * beat)));
    }
    EXPECT_EQ(judgeHeartrate(60, series, still, coachThatSaw(series)).doubts, doubts);
  }
}

TEST(DoubtsTest, AFingerThatWasAwayForAFifthOfTheTimeIsADoubtBeforeAllOthers) {
  const auto red = photoplethysmogram(72);
  EXPECT_THAT(judgeHeartrate(72, red, red, coachThatSaw(red, 40)).doubts, IsEmpty());
  EXPECT_THAT(judgeHeartrate(72, red, red, coachThatSaw(red, 60)).doubts,
              ElementsAre(Doubt::noFinger));
  // It takes less to explain why a pulse is not clear.
  EXPECT_THAT(judgeHeartrate(100, red, red, coachThatSaw(red, 12)).doubts,
              ElementsAre(Doubt::unclearPulse));
  EXPECT_THAT(judgeHeartrate(100, red, red, coachThatSaw(red, 20)).doubts,
              ElementsAre(Doubt::noFinger, Doubt::unclearPulse));
}

TEST(DoubtsTest, AFingerThatCameLateIsJudgedFromThenOnWhereEnoughFollows) {
  const auto late = [](std::size_t dark) {
    auto red = photoplethysmogram(72);
    std::fill_n(red.begin(), dark, 3.0F);
    return judgeHeartrate(72, red, red, coachThatSaw(red, dark, 0));
  };
  EXPECT_THAT(late(75).doubts, IsEmpty());
  EXPECT_GT(late(75).clarity, 0.9);
  EXPECT_THAT(late(100).doubts, ElementsAre(Doubt::noFinger, Doubt::unclearPulse));
}

TEST(DoubtsTest, ASaturationIsDoubtedForWhatStandsBehindMoreThanAFifthOfItsEstimates) {
  EXPECT_THAT(judgeSpo2({20, 4, 4, 4, 10}), IsEmpty());
  EXPECT_THAT(judgeSpo2({20, 0, 0, 0, 11}), ElementsAre(Doubt::unclearPulse));
  EXPECT_THAT(judgeSpo2({20, 5, 0, 0}), ElementsAre(Doubt::noBlue));
  EXPECT_THAT(judgeSpo2({20, 12, 20, 5}),
              ElementsAre(Doubt::noFinger, Doubt::noBlue, Doubt::noRedPulse));
}

TEST(DoubtsTest, EachSaysWhatItIsAbout) {
  std::string told;
  for (int i = 0; i <= static_cast<int>(Doubt::noRedPulse); ++i) {
    const auto doubt = static_cast<Doubt>(i);
    told.append(nameOf(doubt)).append(" | ").append(textOf(doubt)).append("\n");
  }
  EXPECT_EQ(
      told,
      R"(noFinger | Unsure: no finger was seen for part of the time. Cover lens and light and measure again.
unclearPulse | Unsure: the pulse was unclear. Hold still, press lightly and measure again.
halfRate | Unsure: the pulse may be half as fast. Count it at the wrist for 15 seconds.
doubleRate | Unsure: the pulse may be twice as fast. Count it at the wrist for 15 seconds.
noBlue | Unsure: this camera sees next to no pulse in blue light, without which the oxygen value says nothing about the blood.
noRedPulse | Unsure: the red light shows no pulse. Press more lightly and measure again.
)");
}

}  // namespace
}  // namespace veyla
