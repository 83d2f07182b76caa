#include "measuring/main_view_controller.h"

#include <gmock/gmock.h>

#include "history/history_store.h"
#include "measuring/measuring_screen.h"
#include "shell/alerts.h"
#include "tests/support/measuring_rig.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

using namespace MeasuringScreen;
using namespace testing;

class MainViewControllerTest : public testing::Test {
 protected:
  MainViewControllerTest() { rig_.appear(); }

  MeasuringRig rig_;
  TestPlatform& platform_ = rig_.platform;
  MainViewController& screen_ = rig_.screen;
  std::vector<std::string>& log_ = platform_.log.lines;
};

// From START to the first frame.

TEST_F(MainViewControllerTest, FramesOfTheCountdownCountButAreNotStored) {
  std::string seen;
  platform_.camera.begins = platform_.camera.device->lights = [&] { seen = rig_.seen(); };
  screen_.beginButtonPush();
  platform_.time.runFor(0.02);
  EXPECT_THAT(seen, StartsWith("START(fadeOut)"));
  log_.clear();
  rig_.frames(30);
  EXPECT_THAT(log_, IsEmpty());
  platform_.journal.clear();
  platform_.time.runFor(2);
  EXPECT_EQ(joined(platform_.journal.of("device")), "lock | torch 1 | flash 1 | unlock");
  EXPECT_THAT(seen, HasSubstr("in a couple of seconds ... |"));
  EXPECT_THAT(log_, ElementsAre("starting torch/flash"));

  rig_.frame({99.9F, 80.5F, 40, 98});
  EXPECT_EQ(screen_.videoProcessing()->counter(), 31);
  EXPECT_THAT(*screen_.data()->rawRedValues(), ElementsAre(99.9F));
  EXPECT_THAT(*screen_.data()->rawHRValues(), ElementsAre(98));
  EXPECT_THAT(screen_.chartFourierView().data(), ElementsAre(98));
  EXPECT_EQ(log_[1], "red 99, green 80, blue: 40");

  rig_.startMeasuring();
  EXPECT_THAT(*screen_.data()->rawRedValues(), SizeIs(1)) << "the second tap starts nothing";
  screen_.stopButtonPush();
  platform_.time.runFor(0.02);
  rig_.startMeasuring();
  EXPECT_EQ(screen_.videoProcessing()->counter(), 0);
  EXPECT_THAT(*screen_.data()->rawRedValues(), IsEmpty());
  EXPECT_THAT(screen_.chartFourierView().data(), IsEmpty());
}

// Which frames are estimated.

TEST_F(MainViewControllerTest, EstimatesBeginWithFullWindowsOnTheFramesTheSettingsName) {
  rig_.heartrateSetting("rawDataSize", 5);
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 3);
  rig_.spo2Setting("framesBeforeBeginning", 2);
  rig_.startMeasuring();
  screen_.videoProcessing()->setCounter(10);
  rig_.frames(6);
  std::erase_if(log_, [](const std::string& line) {
    return !line.starts_with("hr") && line.find(" frame ") == std::string::npos &&
           !line.starts_with("spo2");
  });
  EXPECT_EQ(replaced(joined(log_), "skipping", "-"),
            "- spo2 frame 11 | not - spo2 frame 12 | - spo2 frame 13 | not - spo2 frame 14 | "
            "spo2 0.00, counter: 14 | not - hr frame 15 | hr: 70 | - spo2 frame 15 | "
            "- hr frame 16 | not - spo2 frame 16 | spo2 0.00, counter: 16");
  EXPECT_THAT(platform_.display.view({"testLabel"}).text, StartsWith("ACR=0 DCR=100"));

  rig_.heartrateSetting("skipFramesBetweenMeasurements", 1);
  rig_.frame();
  EXPECT_THAT(*screen_.data()->heartrateValues(), SizeIs(2)) << "read anew at each frame";
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 0);
  rig_.frame();
  EXPECT_THAT(log_, Contains("skipping hr frame 18"));
}

TEST_F(MainViewControllerTest, TheMedianOfElevenIsShownAndFinalForTheHeartRateTheSpo2sIsOfAll) {
  rig_.heartrateSetting("neededValidHeartrate", 17);
  rig_.spo2Setting("neededValidSpo2", 17);
  rig_.startMeasuring();
  const auto expectSeen = [&](const std::string& values) {
    screen_.finishAnimations();
    EXPECT_THAT(rig_.seen(), HasSubstr(values));
  };
  for (int i = 0; i < 17; ++i) {
    rig_.heartrateBin(i < 10 ? 60 : 100);
    rig_.spo2(i < 10 ? 99 : 95);
    // Six of the last eleven decide: at 15, five of ten would not, and at 16, six of twelve.
    const int share = (100 * (i + 1) + 8) / 17;
    if (i < 15) expectSeen(formatText("now 53 99 | dials 53 99, rings %i %i", share, share));
    if (i == 15) expectSeen("now 88 95 | dials 88 95, rings 94 94");
  }
  // Seven of the last eleven, and ten of all seventeen.
  expectSeen(
      "last 88(zoomIn) 99(zoomIn)(zoomOut) | now =88(zoomIn) =99(zoomIn) | dials 88 99, rings 100 "
      "100");
  EXPECT_EQ(screen_.finalHeartrate(), 87.890625F);
  EXPECT_EQ(screen_.gaugeHR().unitOfMeasurement(), "88 BPM");
  EXPECT_TRUE(screen_.gaugeHR().animated() && screen_.gaugeSpo2().animated());
  EXPECT_EQ(platform_.display.view(labelHeartrate).font.size, 25);
  EXPECT_EQ(platform_.display.view(labelSpo2).font.size, 25);
}

// How a measurement ends.

TEST_F(MainViewControllerTest, TheEndKeepsFirstTheFirstValueThenTheSecondThenTheEntry) {
  rig_.startMeasuring();
  rig_.heartrateAmbiguous();
  rig_.spo2(97);
  rig_.heartrateBin(80);
  rig_.spo2(96);
  rig_.spo2(98);  // SpO2: 97, 96, 98. Heart rate: 70 twice.
  EXPECT_TRUE(screen_.isSpo2Done());
  EXPECT_FALSE(screen_.isDone());
  EXPECT_EQ(log_.back(), "spo2 values: (97, 96, 98)");
  rig_.heartrateBin(90);
  rig_.spo2(93);  // Heart rate: 70, 70, 79. The SpO2 is final and not estimated any more.

  std::vector<std::string> lasting;
  for (const std::string& line : platform_.journal.lines()) {
    const std::string service = line.substr(0, line.find(' '));
    if (service == "store" || service == "health" || line == "session stop") {
      lasting.push_back(line);
    }
  }
  EXPECT_EQ(joined(lasting),
            "store set last_spo2 | store flush | health 0.97 % | "
            "store set last_heartrate | store flush | health 70 count/min | "
            "session stop | store set values | store flush | store set rating_first_use | "
            "store set rating_significant_events | store flush");
  EXPECT_TRUE(screen_.isDone());
  EXPECT_EQ(Utils::getLastHeartrate(), 70.3125F);
  EXPECT_EQ(Utils::getLastSpo2(), 97);
  EXPECT_THAT(*Utils::getValues(),
              ElementsAre(HistoryEntry{70.3125, 97, platform_.date.now(), Labels{}, {}}));
  EXPECT_THAT(log_, AllOf(Contains("Done HR"), Contains("Done Spo2"), Contains("Done Both")));
}

// The screen's life, each test on a screen of its own.

TEST(MeasuringScreenLifeTest, EveryAlertSaysWhatToDo) {
  Somebody somebody;
  TestPlatform& platform = somebody.rig.platform;
  somebody.live("dark START 1 lit heartrate spo2 START 1 heartrate spo2 START 1");
  somebody.screen.showLogSigAlert();
  Alerts::instance().tapButton(platform.alerts.lastId, 0);
  EXPECT_EQ(platform.journal.of("screens").back(), "faq");
  somebody.live("denied START 1");

  std::vector<std::string> shown;
  for (const Alert& alert : platform.alerts.shown) {
    EXPECT_EQ(alert.color, accentRed);
    EXPECT_EQ(alert.iconTint, white);
    shown.push_back(inWords(alert));
  }
  EXPECT_THAT(
      shown,
      ElementsAre(
          "plain | Torch not found or not supported by this device. |  [OK]",
          "error | Error | There seems to be a problem with the video camera. Check your camera "
          "settings. [Done] [outside]",
          "warning | Nothing to run | You have disabled both heartrate and spo2 measurements. "
          "Enable at least one of them before tapping START. [Done] [outside]",
          "waiting | Starting ... | Cover flash and camera lens with finger... 2 s",
          "warning | Got problems? | If you keep getting '--' spo2 values, remove your finger, "
          "then tap START, and replace your finger on the flash and camera lens after "
          "\u00bd-1 second. [Read FAQ] [Done] [outside]",
          "warning | No Camera Access | Without camera access this app won't work. It's essential "
          "for Veyla to have access to the Camera. Please go to the iOS Settings App, scroll down "
          "and find Veyla, and allow Veyla to access the Camera. [Done] [outside]"));
}

TEST(MeasuringScreenLifeTest, EachWidgetIsDrawnAnewWhileItMovesAndOlderPhonesHaveSmallerValues) {
  for (const auto& [model, size] :
       {std::pair{"iPhone8,1", 25.0F}, {"iPhone3,1", 20.0F}, {"iPhone4,1", 20.0F}}) {
    MeasuringRig rig;
    rig.platform.device.model = model;
    rig.appear();
    EXPECT_EQ(rig.screen.labelValuesFontSize(), size);
    rig.startMeasuring();
    rig.platform.display.redraws.clear();
    rig.spo2(97);
    rig.platform.time.runFor(1);
    for (const auto& [element, redraws] : rig.platform.display.redraws) {
      EXPECT_GE(redraws, element == "chartFourierView" ? 2 : 10) << element;
    }
    EXPECT_THAT(rig.platform.display.redraws, SizeIs(5));
  }
}

TEST(MeasuringScreenLifeTest, TheFirstTimeTheIntroductionComesBeforeTheHealthStore) {
  MeasuringRig rig;
  rig.appear();
  EXPECT_EQ(joined(rig.platform.journal.of("screens")), "intro | back swipe off | title Veyla");
  EXPECT_THAT(rig.platform.health.requested, IsEmpty());

  MeasuringRig later;
  later.platform.store.values["pleaseNoteShown"] = false;  // Its presence is what counts.
  later.appear();
  later.screen.swipeLeft();
  later.screen.swipeRight();
  EXPECT_EQ(joined(later.platform.journal.of("screens")),
            "tint default | back swipe off | title Veyla | settings | results");
  EXPECT_THAT(later.platform.health.requested,
              ElementsAre(HealthSampleType::heartRate, HealthSampleType::oxygenSaturation));
}

TEST(MeasuringScreenLifeTest, ReleaseNotesFollowAChangeOfVersionHalfASecondLater) {
  for (const char* lastLaunched : {"", "1.0.0", "0.9.0"}) {
    MeasuringRig rig;
    if (*lastLaunched) rig.platform.store.values["last_launched_version"] = lastLaunched;
    rig.appear();
    rig.platform.time.runFor(0.49);
    EXPECT_THAT(rig.platform.journal.of("screens"), Not(Contains("release notes")));
    rig.platform.time.runFor(0.02);
    EXPECT_EQ(rig.platform.journal.of("screens").back() == "release notes",
              lastLaunched == std::string("0.9.0"));
  }
}

TEST(MeasuringScreenLifeTest, TheLogNamesTheReasonWhyTheCameraMayNotBeUsed) {
  using enum CameraAuthorization;
  const std::tuple<CameraAuthorization, bool, const char*> cases[] = {
      {notDetermined, true,
       "not determined - trying to get access | Granted access to video cam | Tapped Begin | "
       "Camera access not determined. Ask for permission."},
      {notDetermined, false,
       "not determined - trying to get access | Not granted access to video cam | Tapped Begin | "},
      {restricted, false,
       "restricted | Tapped Begin | You've been restricted from using the camera on this device. "
       "Without camera access this app won't work. Please contact the device owner so they can "
       "give you access."},
      {denied, false, "denied | Tapped Begin | No camera...."},
      {unknown, false, "not allowed - unknown authorization denial | Tapped Begin | No camera...."},
      {authorized, false, "allowed | Tapped Begin | setting"}};
  for (const auto& [authorization, grants, log] : cases) {
    MeasuringRig rig;
    rig.platform.camera.grants = grants;
    rig.platform.camera.authorization = authorization;
    rig.appear();
    rig.screen.beginButtonPush();
    rig.platform.time.runFor(0.02);
    std::erase_if(rig.platform.log.lines,
                  [](const std::string& line) { return line.starts_with("seconds:"); });
    EXPECT_THAT(joined(rig.platform.log.lines), StartsWith(std::string("video cam is ") + log));
  }
}

}  // namespace
}  // namespace veyla
