#include "measuring/measurement_judge.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "measuring/doubts.h"
#include "measuring/measuring_screen.h"
#include "measuring/shortfall.h"
#include "tests/support/measuring_rig.h"
#include "tests/support/tables.h"

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
  EXPECT_THAT(judgeHeartrate(72, red, red, coachThatSaw(red, 42)).doubts, IsEmpty());
  EXPECT_THAT(judgeHeartrate(72, red, red, coachThatSaw(red, 43)).doubts,
              ElementsAre(Doubt::noFinger));
  // It takes less to explain why a pulse is not clear.
  EXPECT_THAT(judgeHeartrate(100, red, red, coachThatSaw(red, 14)).doubts,
              ElementsAre(Doubt::unclearPulse));
  EXPECT_THAT(judgeHeartrate(100, red, red, coachThatSaw(red, 15)).doubts,
              ElementsAre(Doubt::noFinger, Doubt::unclearPulse));
}

TEST(DoubtsTest, AFingerThatCameLateIsJudgedFromThenOnWhereEnoughFollows) {
  const auto late = [](std::size_t dark) {
    auto red = photoplethysmogram(72);
    std::fill_n(red.begin(), dark, 3.0F);
    return judgeHeartrate(72, red, red, coachThatSaw(red, dark, 0));
  };
  EXPECT_THAT(late(90).doubts, IsEmpty());
  EXPECT_GT(late(90).clarity, 0.9);
  EXPECT_THAT(late(91).doubts, ElementsAre(Doubt::noFinger, Doubt::unclearPulse));
}

TEST(DoubtsTest, ASaturationIsDoubtedForWhatStandsBehindMoreThanAFifthOfItsEstimates) {
  EXPECT_THAT(judgeSpo2({20, 4, 4, 4, 10}), IsEmpty());
  EXPECT_THAT(judgeSpo2({20, 0, 0, 0, 11}), ElementsAre(Doubt::unclearPulse));
  EXPECT_THAT(judgeSpo2({20, 5, 0, 0}), ElementsAre(Doubt::noBlue));
  EXPECT_THAT(judgeSpo2({20, 12, 20, 5}),
              ElementsAre(Doubt::noFinger, Doubt::noBlue, Doubt::noRedPulse));
}

TEST(DoubtsTest, EachSaysWhatItIsAboutAndSoDoesEachStateOfTheFinger) {
  std::string told;
  for (int i = 0; i <= static_cast<int>(Doubt::noRedPulse); ++i) {
    const auto doubt = static_cast<Doubt>(i);
    told.append(nameOf(doubt)).append(" | ").append(textOf(doubt)).append("\n");
  }
  using enum FingerState;
  for (const FingerState state : {noFinger, tooBright, moving, weak, good}) {
    told.append(nameOf(state)).append(" | ").append(textOf(state)).append("\n");
  }
  EXPECT_EQ(
      told,
      R"(noFinger | Unsure: no finger was seen for part of the time. Cover lens and light and measure again.
unclearPulse | Unsure: the pulse was unclear. Hold still, press lightly and measure again.
halfRate | Unsure: the pulse may be half as fast. Count it at the wrist for 15 seconds.
doubleRate | Unsure: the pulse may be twice as fast. Count it at the wrist for 15 seconds.
noBlue | Unsure: this camera sees next to no pulse in blue light, without which the oxygen value says nothing about the blood.
noRedPulse | Unsure: the red light shows no pulse. Press more lightly and measure again.
noFinger | Move your finger over lens and light
tooBright | Press more lightly
moving | Hold still
weak | Press more lightly
good | Finger in place
)");
}

TEST(ShortfallTest, AMissingValueIsExplainedByTheFingerFirstThenByTheEstimates) {
  using enum FingerState;
  const std::vector<FingerSpan> well = {{good, 2, 30}};
  const std::vector<FingerSpan> restless = {{moving, 4, 9}, {weak, 12, 14}, {good, 14, 30}};
  const EstimateCounts some{.accepted = 9};
  const EstimateCounts unclear{.accepted = 2, .rejected = 3, .none = 4};
  const EstimateCounts low{.accepted = 2, .low = 3};
  const std::string hardlyAny =
      "No oxygen value: this camera's colours give hardly any of 93 % or more.";
  const std::vector<FingerSpan> twice = {
      {noFinger, 2, 7}, {good, 7, 8.5}, {noFinger, 8.5, 14.5}, {good, 14.5, 30}};
  const std::vector<FingerSpan> often = {
      {weak, 2, 4}, {weak, 9, 11}, {weak, 16, 18}, {weak, 23, 25}, {weak, 30, 32}};
  const std::pair<MeasurementEvidence, std::string> cases[] = {
      {{well, false, 28, some, some}, ""},
      {{well, false, 28, unclear, some},
       "The pulse was unclear in 7 of 9 heart-rate estimates: hold still, press lightly, warm the "
       "finger."},
      {{well, false, 28, some, low}, hardlyAny},
      {{restless, false, 28, some, {.low = 3}, true}, replaced(hardlyAny, "hardly any", "none")},
      {{restless, false, 28, some, some, true}, ""},
      {{restless, false, 28, some, some, true, false, true},
       "The pulse was unclear from 4 to 14 s: hold still."},
      {{restless, false, 28, unclear, low}, "The pulse was unclear from 4 to 14 s: hold still."},
      {{{{weak, 2, 9}, {weak, 13, 21.6}, {weak, 25, 27}, {weak, 31, 32}}, false, 28, unclear},
       "The pulse was unclear from 2 to 9 s, from 13 to 27 s, from 31 to 32 s: press more "
       "lightly."},
      {{{{weak, 2, 9}, {moving, 9, 9.8}}, false, 28, unclear},
       "The pulse was unclear from 2 to 10 s: hold still and press more lightly."},
      {{{{moving, 2, 2.9}, {good, 8, 20}}, false, 28, {.accepted = 1, .none = 2}},
       "The pulse was unclear in 2 of 3 heart-rate estimates: hold still, press lightly, warm the "
       "finger."},
      // Nothing else helps before there is a finger.
      {{{{noFinger, 2, 17}, {moving, 17, 32}}, false, 28, some, low, true},
       "No finger from 2 to 17 s: cover lens and light."},
      {{{{noFinger, 2, 17}}, true, 28}, "No finger from 2 to 17 s: the picture is black."},
      {{{{tooBright, 3, 30}}, false, 28, some, low},
       "Too bright from 3 to 30 s: press more lightly."},
      // Nor is a camera to blame for a finger that lay badly.
      {{twice, false, 28, some, {.low = 3}, true},
       "No finger from 2 to 7 s, from 9 to 15 s: cover lens and light."},
      {{often, false, 40, unclear},
       "The pulse was unclear from 2 to 4 s, from 9 to 11 s, from 16 to 18 s and 2 times more: "
       "press more lightly."},
      {{{{noFinger, 2, 17}}, true, 28, some, some, true, true}, ""},
  };
  for (const auto& [evidence, text] : cases) {
    const auto why = shortfallOf(evidence);
    EXPECT_EQ(why ? why->text : "", text);
  }
}

TEST(MeasurementJudgeTest, WhatItSawEndsWithTheMeasurementAndAMarkStandsAsLongAsItsValue) {
  MeasuringRig rig;
  rig.appear();
  MeasurementJudge judge;
  rig.screen.addObserver(judge);
  const auto text = [&](Element element) { return rig.platform.display.view(element).text; };
  const auto measure = [&] {
    for (int i = 0; i < 3; ++i) rig.spo2(97);
  };

  rig.startMeasuring();
  rig.heartrateAmbiguous();
  rig.frames(26, {1, 1, 1, 1});
  rig.heartrateBin(80);
  EXPECT_EQ(text(MeasuringScreen::labelFinger), "Move your finger over lens and light");
  measure();
  EXPECT_EQ(text(MeasuringScreen::labelFinger), "");
  EXPECT_THAT(judge.spo2(), Optional(ElementsAre(Doubt::noFinger)));
  const std::string mark = text(MeasuringScreen::labelDoubtHeartrate);
  EXPECT_THAT(mark, StartsWith("Unsure: no finger"));
  EXPECT_EQ(text(MeasuringScreen::labelDoubtSpo2), "") << "said once";

  rig.screen.buttonCheckboxHeartrateTapped();
  rig.startMeasuring();
  EXPECT_EQ(judge.coach().frames(), 0U);
  rig.screen.videoProcessing()->captureOutput(DroppedSample{});
  EXPECT_EQ(judge.coach().frames(), 1U);
  EXPECT_FALSE(judge.heartrate());
  measure();
  EXPECT_THAT(judge.spo2(), Optional(ElementsAre(Doubt::unclearPulse))) << "nothing was seen yet";
  EXPECT_EQ(text(MeasuringScreen::labelDoubtHeartrate), mark) << "of the last heart rate";

  rig.startMeasuring();
  for (int i = 0; i < 30; ++i) rig.frame({255, i % 2 == 0 ? 80.0F : 82.0F, 40, 100});
  EXPECT_EQ(rig.platform.display.view(MeasuringScreen::labelFinger).image, "tooBright");
  EXPECT_THAT(rig.platform.log.lines, Contains("finger: tooBright"));
  measure();
  EXPECT_THAT(judge.spo2(), Optional(ElementsAre(Doubt::noRedPulse)));

  // In the dark another camera is offered, which begins anew, and none after the last one.
  const auto isOffered = [&] {
    return !rig.platform.display.view(MeasuringScreen::buttonNextCamera).hidden;
  };
  rig.platform.camera.nextCameras = 1;
  rig.startMeasuring();
  for (const int frames : {44, 1}) {
    EXPECT_FALSE(isOffered());
    rig.frames(static_cast<std::size_t>(frames), {1, 1, 1, 1});
  }
  EXPECT_TRUE(isOffered());
  EXPECT_EQ(text(MeasuringScreen::labelFinger), "No light reaches this lens");
  rig.screen.nextCameraButtonPush();
  EXPECT_FALSE(isOffered() || rig.screen.videoProcessing()->isRecording());
  rig.platform.time.runFor(3);
  EXPECT_TRUE(rig.screen.isRunning() && rig.screen.canBegin());
  rig.frames(45, {1, 1, 1, 1});
  EXPECT_FALSE(isOffered());
  EXPECT_EQ(text(MeasuringScreen::labelFinger), "Move your finger over lens and light");
  rig.screen.nextCameraButtonPush();
  EXPECT_TRUE(rig.screen.videoProcessing()->isRecording()) << "it goes on";
  rig.screen.stopButtonPush();
  rig.platform.time.runFor(0.02);

  rig.startMeasuring();
  rig.frames(30, {1, 1, 1, 1});
  rig.screen.stopButtonPush();
  rig.platform.time.runFor(0.02);
  const auto finger = [&] { return rig.platform.display.view(MeasuringScreen::labelFinger); };
  EXPECT_EQ(finger().text, "No finger from 2 to 4 s: the picture is black.");
  EXPECT_EQ(finger().image, "noFinger");
  rig.screen.buttonCheckboxHeartrateTapped();
  rig.startMeasuring();
  EXPECT_EQ(finger().text, "");
  for (int i = 0; i < 60; ++i) rig.spo2(92);
  EXPECT_THAT(text(MeasuringScreen::labelDoubtHeartrate), StartsWith("Unsure: the pulse was"));
  EXPECT_THAT(finger().text, StartsWith("No oxygen value"));
  EXPECT_EQ(finger().image, "noValue");
}

}  // namespace
}  // namespace veyla
