#include "measuring/measurement_judge.h"

#include <gmock/gmock.h>

#include "measuring/measuring_screen.h"
#include "tests/support/measuring_rig.h"

namespace veyla {
namespace {

using namespace testing;

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
  EXPECT_FALSE(judge.heartrate());
  measure();
  EXPECT_THAT(judge.spo2(), Optional(ElementsAre(Doubt::unclearPulse))) << "nothing was seen yet";
  EXPECT_EQ(text(MeasuringScreen::labelDoubtHeartrate), mark) << "of the last heart rate";

  rig.startMeasuring();
  for (int i = 0; i < 30; ++i) rig.frame({255, i % 2 == 0 ? 80.0F : 82.0F, 40, 100});
  EXPECT_EQ(rig.platform.display.view(MeasuringScreen::labelFinger).image, "tooBright");
  EXPECT_EQ(text(MeasuringScreen::labelFinger), "Press more lightly");
  measure();
  EXPECT_THAT(judge.spo2(), Optional(ElementsAre(Doubt::noRedPulse)));

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
  EXPECT_THAT(finger().text, StartsWith("No oxygen value"));
  EXPECT_EQ(finger().image, "noValue");
}

}  // namespace
}  // namespace veyla
