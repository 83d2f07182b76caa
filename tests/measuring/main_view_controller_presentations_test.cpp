#include <gmock/gmock.h>

#include "history/history_store.h"
#include "shell/launch_history.h"
#include "tests/support/measuring_rig.h"

namespace veyla {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

/// What a presentation does to the views, in any order but that of animations.
class PresentationTest : public testing::Test {
 protected:
  PresentationTest() { rig_.appear(); }

  std::vector<std::string> shownBy(void (MainViewController::*presentation)()) {
    platform_.journal.clear();
    platform_.display.holdsAnimations = true;
    (screen_.*presentation)();
    return platform_.journal.of("display");
  }
  std::vector<std::string> shownAfterTheAnimation() {
    platform_.journal.clear();
    platform_.display.finishAnimations();
    return platform_.journal.of("display");
  }
  /// Whether gauges and rings stand at their starts, and how they got there.
  void expectZero(bool animated) {
    if (animated) screen_.finishAnimations();
    EXPECT_EQ(screen_.gaugeHR().value(), 50);
    EXPECT_EQ(screen_.gaugeSpo2().value(), 93);
    EXPECT_EQ(screen_.circleprogressHeartrate().progress(), 0);
    EXPECT_EQ(screen_.circleprogressSpo2().progress(), 0);
    EXPECT_EQ(screen_.gaugeHR().animated(), animated);
    EXPECT_EQ(screen_.gaugeSpo2().animated(), animated);
    EXPECT_EQ(screen_.circleprogressHeartrate().animated(), animated);
    EXPECT_EQ(screen_.circleprogressSpo2().animated(), animated);
  }
  void measureOnce() {
    rig_.startMeasuring();
    rig_.spo2(97);
    screen_.finishAnimations();
  }

  MeasuringRig rig_;
  TestPlatform& platform_ = rig_.platform;
  MainViewController& screen_ = rig_.screen;
};

constexpr auto heartrateBlankFont = "labelHeartrate font HelveticaNeue-Light 25";
constexpr auto spo2BlankFont = "labelSpo2 font HelveticaNeue-Light 25";
constexpr auto instruction = "labelGrey text Tap START to begin - don't cover camera";

TEST_F(PresentationTest, Initial) {
  measureOnce();
  Utils::setLastHeartrate(71.6F);
  EXPECT_THAT(
      shownBy(&MainViewController::showStateInitial),
      UnorderedElementsAre("chartFourierView hidden", "viewLastMeasurements shown",
                           "labelLastHeartrate text 72", "labelLastSpo2 text --",
                           heartrateBlankFont, "labelHeartrate text --", spo2BlankFont,
                           "labelSpo2 text --", "buttonCheckboxHeartrate shown",
                           "buttonCheckboxSpo2 shown", instruction, "labelGrey opacity 1",
                           "labelRed opacity 0", "stopButton opacity 0", "beginButton opacity 1"));
  expectZero(false);
}

TEST_F(PresentationTest, TappedStart) {
  measureOnce();
  EXPECT_THAT(
      shownBy(&MainViewController::showStateTappedStart),
      UnorderedElementsAre(
          "chartFourierView hidden", "viewLastMeasurements shown", heartrateBlankFont,
          "labelHeartrate text --", spo2BlankFont, "labelSpo2 text --",
          "buttonCheckboxHeartrate hidden", "buttonCheckboxSpo2 hidden", "beginButton fadeOut",
          "labelGrey text Cover flash and camera lens with finger...", "labelGrey opacity 1",
          "labelRed text Will begin in a couple of seconds ...", "labelRed opacity 1"));
  EXPECT_THAT(shownAfterTheAnimation(), ElementsAre("stopButton fadeIn"));
  expectZero(true);
}

TEST_F(PresentationTest, Measuring) {
  screen_.buttonCheckboxSpo2Tapped();
  EXPECT_THAT(shownBy(&MainViewController::showStateMeasuring),
              UnorderedElementsAre("labelRed slideLeft", "labelMeasuringHeartrate shimmers"));
  EXPECT_THAT(shownAfterTheAnimation(),
              ElementsAre("labelRed text Analyzing - hold steady ...", "labelRed slideRight"));
}

TEST_F(PresentationTest, Chart) {
  EXPECT_THAT(shownBy(&MainViewController::showStateChart), ElementsAre("viewCenter zoomOut"));
  EXPECT_THAT(
      shownAfterTheAnimation(),
      ElementsAre("chartFourierView shown", "viewLastMeasurements hidden", "viewCenter zoomIn"));
}

TEST_F(PresentationTest, Done) {
  EXPECT_THAT(shownBy(&MainViewController::showStateDone),
              UnorderedElementsAre("stopButton slideUp", instruction, "labelGrey fadeIn",
                                   "labelRed text FINISHED", "labelRed fadeIn",
                                   "buttonCheckboxHeartrate shown", "buttonCheckboxSpo2 shown",
                                   "viewCenter zoomOut"));
  EXPECT_THAT(shownAfterTheAnimation(),
              ElementsAre("beginButton slideUp", "chartFourierView hidden",
                          "viewLastMeasurements shown", "viewCenter zoomIn"));
}

TEST_F(PresentationTest, AfterLowSignalGaugesRingsAndValuesStay) {
  measureOnce();
  EXPECT_THAT(shownBy(&MainViewController::showStateAfterLowSig),
              UnorderedElementsAre("stopButton opacity 0", "beginButton opacity 1", instruction,
                                   "labelGrey opacity 1", "labelRed opacity 0",
                                   "buttonCheckboxHeartrate shown", "buttonCheckboxSpo2 shown",
                                   "labelMeasuringHeartrate stops shimmering",
                                   "labelMeasuringSpo2 stops shimmering"));
  EXPECT_EQ(screen_.gaugeSpo2().value(), 97);
}

TEST_F(PresentationTest, TappedStop) {
  measureOnce();
  EXPECT_THAT(shownBy(&MainViewController::showStateTappedStop),
              UnorderedElementsAre(
                  "chartFourierView hidden", "viewLastMeasurements shown", "stopButton slideUp",
                  instruction, "labelGrey fadeIn", "labelRed fadeIn",
                  "labelMeasuringHeartrate stops shimmering", "labelMeasuringSpo2 stops shimmering",
                  "buttonCheckboxHeartrate shown", "buttonCheckboxSpo2 shown", heartrateBlankFont,
                  "labelHeartrate text --", spo2BlankFont, "labelSpo2 text --"));
  EXPECT_THAT(shownAfterTheAnimation(), ElementsAre("beginButton slideUp"));
  expectZero(true);
}

TEST_F(PresentationTest, ACheckboxTogglesItsValueAndItsGauge) {
  platform_.journal.clear();
  platform_.log.lines.clear();
  screen_.buttonCheckboxHeartrateTapped();
  EXPECT_FALSE(screen_.runHeartrate());
  EXPECT_THAT(platform_.log.lines, IsEmpty());
  screen_.buttonCheckboxHeartrateTapped();
  screen_.buttonCheckboxSpo2Tapped();
  EXPECT_TRUE(screen_.runHeartrate());
  EXPECT_FALSE(screen_.runSpo2());
  EXPECT_THAT(
      platform_.journal.of("display"),
      ElementsAre("buttonCheckboxHeartrate image checkbox_unmarked.png",
                  "viewGaugeHeartrate zoomOut", "buttonCheckboxHeartrate image checkbox_marked.png",
                  "viewGaugeHeartrate zoomIn", "buttonCheckboxSpo2 image checkbox_unmarked.png",
                  "viewGaugeSpo2 zoomOut"));
  EXPECT_THAT(platform_.log.lines, ElementsAre("hitting spo2 checkbox"));
}

// The screen's life, each test on a screen of its own.

TEST(MeasuringScreenLifeTest, LoadingSetsGaugesRingsAndFontsUp) {
  MeasuringRig rig;
  rig.appear();
  const WMGaugeView& gauge = rig.screen.gaugeHR();
  EXPECT_EQ(gauge.minValue, 50);
  EXPECT_EQ(gauge.maxValue, 100);
  EXPECT_EQ(gauge.scaleDivisions, 10);
  EXPECT_EQ(rig.screen.gaugeSpo2().minValue, 93);
  EXPECT_EQ(rig.screen.gaugeSpo2().scaleDivisions, 7);
  EXPECT_EQ(rig.screen.circleprogressHeartrate().hintTextGenerationBlock(0.5F), "");
  EXPECT_EQ(rig.screen.circleprogressSpo2().startAngle, 270);
  EXPECT_TRUE(rig.screen.runHeartrate());
  EXPECT_TRUE(rig.screen.runSpo2());
  for (const char* older : {"iPhone3,1", "iPhone4,1"}) {
    MeasuringRig smaller;
    smaller.platform.device.model = older;
    smaller.appear();
    EXPECT_EQ(smaller.screen.labelValuesFontSize(), 20);
  }
}

TEST(MeasuringScreenLifeTest, AppearingShowsTheTitleAndSwipesLeadOn) {
  MeasuringRig rig;
  Utils::setFirstTimeNotePopup();
  rig.appear();
  rig.screen.swipeLeft();
  rig.screen.swipeRight();
  EXPECT_THAT(rig.platform.journal.of("screens"),
              ElementsAre("tint default", "back swipe off", "title Veyla", "settings", "results"));
}

TEST(MeasuringScreenLifeTest, TheFirstTimeTheIntroductionComesBeforeTheHealthStore) {
  MeasuringRig rig;
  rig.appear();
  EXPECT_THAT(rig.platform.journal.of("screens"), Contains("intro"));
  EXPECT_THAT(rig.platform.health.requested, IsEmpty());

  MeasuringRig later;
  later.platform.store.values["pleaseNoteShown"] = false;  // Its presence is what counts.
  later.appear();
  EXPECT_THAT(later.platform.journal.of("screens"), Not(Contains("intro")));
  EXPECT_THAT(later.platform.health.requested,
              ElementsAre(HealthSampleType::heartRate, HealthSampleType::oxygenSaturation));
}

TEST(MeasuringScreenLifeTest, ReleaseNotesFollowAChangeOfVersionHalfASecondLater) {
  MeasuringRig rig;
  rig.platform.store.values["last_launched_version"] = "0.9.0";
  rig.appear();
  rig.platform.time.runFor(0.49);
  EXPECT_THAT(rig.platform.journal.of("screens"), Not(Contains("release notes")));
  rig.platform.time.runFor(0.02);
  EXPECT_THAT(rig.platform.journal.of("screens"), Contains("release notes"));

  MeasuringRig first;
  first.appear();
  first.platform.time.run();
  EXPECT_THAT(first.platform.journal.of("screens"), Not(Contains("release notes")));
}

TEST(MeasuringScreenLifeTest, TheCameraIsAskedForOnceTheScreenHasAppeared) {
  using Case = std::pair<CameraAuthorization, std::vector<std::string>>;
  const std::string asking = "video cam is not determined - trying to get access";
  for (const bool grants : {true, false}) {
    MeasuringRig rig;
    rig.platform.camera.grants = grants;
    rig.platform.camera.authorization = CameraAuthorization::notDetermined;
    rig.screen.viewDidAppear();
    EXPECT_THAT(rig.platform.log.lines,
                ElementsAre(asking, grants ? "Granted access to video cam"
                                           : "Not granted access to video cam"));
  }
  const Case cases[] = {
      {CameraAuthorization::restricted, {"video cam is restricted"}},
      {CameraAuthorization::denied, {"video cam is denied"}},
      {CameraAuthorization::authorized, {"video cam is allowed"}},
      {CameraAuthorization::unknown, {"video cam is not allowed - unknown authorization denial"}}};
  for (const auto& [authorization, lines] : cases) {
    MeasuringRig rig;
    rig.platform.camera.authorization = authorization;
    rig.screen.viewDidAppear();
    EXPECT_EQ(rig.platform.log.lines, lines);
    EXPECT_THAT(rig.platform.alerts.shown, IsEmpty());
  }
}

}  // namespace
}  // namespace veyla
