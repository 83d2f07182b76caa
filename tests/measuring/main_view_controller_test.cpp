#include "measuring/main_view_controller.h"

#include <gmock/gmock.h>

#include "history/history_store.h"
#include "shell/alerts.h"
#include "tests/support/measuring_rig.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class MainViewControllerTest : public testing::Test {
 protected:
  MainViewControllerTest() { rig_.appear(); }

  std::string values() {
    const auto& display = platform_.display;
    return display.view({"labelHeartrate"}).text + ' ' + display.view({"labelSpo2"}).text;
  }
  /// Has values final after so many.
  void need(int heartrates, int saturations) {
    rig_.heartrateSetting("neededValidHeartrate", heartrates);
    rig_.spo2Setting("neededValidSpo2", saturations);
  }

  MeasuringRig rig_;
  TestPlatform& platform_ = rig_.platform;
  MainViewController& screen_ = rig_.screen;
  std::vector<std::string>& log_ = platform_.log.lines;
};

// From START to the first frame.

TEST_F(MainViewControllerTest, EveryAlertSaysWhatToDo) {
  ScriptedCamera& camera = platform_.camera;
  const auto alertAfterStart = [&] {
    screen_.beginButtonPush();
    platform_.time.runFor(0.02);
    const Alert& alert = platform_.alerts.shown.back();
    EXPECT_EQ(alert.color, (Color{200.0 / 255, 2.0 / 255, 0, 1}));
    EXPECT_EQ(alert.iconTint, (Color{1, 1, 1, 1}));
    return inWords(alert);
  };
  const auto tapBoxes = [&] {
    screen_.buttonCheckboxHeartrateTapped();
    screen_.buttonCheckboxSpo2Tapped();
  };
  camera.authorization = CameraAuthorization::denied;
  EXPECT_EQ(alertAfterStart(),
            "warning | No Camera Access | Without camera access this app won't work. It's "
            "essential for Veyla to have access to the Camera. Please go to the iOS Settings App, "
            "scroll down and find Veyla, and allow Veyla to access the Camera. [Done] [outside]");
  EXPECT_FALSE(screen_.isRunning());
  camera.authorization = CameraAuthorization::authorized;
  camera.device->torch = false;
  EXPECT_EQ(alertAfterStart(),
            "error | Error | There seems to be a problem with the video camera. Check your camera "
            "settings. [Done] [outside]");
  EXPECT_TRUE(screen_.isRunning());
  tapBoxes();
  EXPECT_EQ(alertAfterStart(),
            "warning | Nothing to run | You have disabled both heartrate and spo2 measurements. "
            "Enable at least one of them before tapping START. [Done] [outside]");
  EXPECT_FALSE(screen_.isRunning());
  tapBoxes();
  camera.device->torch = true;
  EXPECT_EQ(alertAfterStart(),
            "waiting | Starting ... | Cover flash and camera lens with finger... 2 s");
  screen_.showLogSigAlert();
  EXPECT_EQ(inWords(platform_.alerts.shown.back()),
            "warning | Got problems? | If you keep getting '--' spo2 values, remove your finger, "
            "then tap START, and replace your finger on the flash and camera lens after "
            "\u00bd-1 second. [Read FAQ] [Done] [outside]");
  Alerts::instance().tapButton(platform_.alerts.lastId, 0);
  EXPECT_EQ(platform_.journal.of("screens").back(), "faq");
}

TEST_F(MainViewControllerTest, FramesOfTheCountdownCountButAreNotStored) {
  screen_.beginButtonPush();
  platform_.time.runFor(0.02);
  log_.clear();
  rig_.frames(30);
  EXPECT_THAT(log_, IsEmpty());
  platform_.journal.clear();
  platform_.time.runFor(2);
  EXPECT_EQ(joined(platform_.journal.of("device")), "lock | torch 1 | flash 1 | unlock");
  EXPECT_THAT(log_, ElementsAre("starting torch/flash"));

  rig_.frame({99.9F, 80.5F, 40, 98});
  EXPECT_EQ(screen_.videoProcessing()->counter(), 31);
  EXPECT_THAT(*screen_.data()->rawRedValues(), ElementsAre(99.9F));
  EXPECT_THAT(*screen_.data()->rawGreenValues(), ElementsAre(80.5F));
  EXPECT_THAT(*screen_.data()->rawBlueValues(), ElementsAre(40));
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

TEST_F(MainViewControllerTest, ACountdownOfWhatIsDoneLeadsToNothing) {
  screen_.beginButtonPush();
  platform_.time.runFor(1);
  screen_.setIsDone(true);
  platform_.time.runFor(2);
  EXPECT_FALSE(screen_.canBegin());
}

// Which frames are estimated.

TEST_F(MainViewControllerTest, HeartrateEstimatesBeginWithAFullWindowOnTheFramesTheSettingsName) {
  rig_.heartrateSetting("rawDataSize", 4);
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 3);
  rig_.spo2Setting("rawDataSize", 1000);
  rig_.startMeasuring();
  screen_.videoProcessing()->setCounter(10);
  rig_.frames(3);  // 11 to 13: 12 is a multiple of 3, but the window is short.
  EXPECT_THAT(log_, Not(Contains(StartsWith("skipping hr"))));
  rig_.frames(3);
  EXPECT_THAT(log_, AllOf(Contains("skipping hr frame 14"), Contains("not skipping hr frame 15"),
                          Contains("skipping hr frame 16")));
  EXPECT_THAT(*screen_.data()->heartrateValues(), SizeIs(1));

  rig_.heartrateSetting("skipFramesBetweenMeasurements", 1);
  rig_.frame();
  EXPECT_THAT(*screen_.data()->heartrateValues(), SizeIs(2)) << "read anew at each frame";
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 0);
  rig_.frame();
  EXPECT_THAT(log_, Contains("skipping hr frame 18"));
}

TEST_F(MainViewControllerTest, Spo2EstimatesWaitForTheFramesBeforeTheirWindowToo) {
  rig_.spo2Setting("framesBeforeBeginning", 3);
  rig_.spo2Setting("skipFramesBetweenMeasurements", 1);
  screen_.buttonCheckboxHeartrateTapped();
  rig_.startMeasuring();
  rig_.frames(4);
  EXPECT_THAT(log_, Contains("not skipping spo2 frame 4")) << "whether or not it is estimated";
  EXPECT_EQ(screen_.failedSpo2Counter(), 0);
  rig_.frame();
  EXPECT_EQ(screen_.failedSpo2Counter(), 1);
  EXPECT_EQ(log_.back(), "spo2 0.00, counter: 5");
  EXPECT_THAT(log_, Not(Contains("not skipping hr frame 2")));
  EXPECT_THAT(platform_.display.view({"testLabel"}).text, StartsWith("ACR=0 DCR=100"));
}

TEST_F(MainViewControllerTest, TheChartAppearsOnceThirtyFramesAfterTheFirstFullWindow) {
  const auto isComing = [&] { return !platform_.display.playing({"viewCenter"}).empty(); };
  need(1000, 3);
  rig_.startMeasuring();
  rig_.frames(31);
  EXPECT_FALSE(isComing());
  rig_.frame();
  EXPECT_TRUE(isComing());
  platform_.time.runFor(1);
  rig_.frames(40);
  EXPECT_FALSE(isComing()) << "once";
  EXPECT_EQ(platform_.display.redraws["chartFourierView"], 72);
}

// What becomes of an estimate.

TEST_F(MainViewControllerTest, EstimatesAreJudgedCountedAndShown) {
  need(1000, 1000);
  rig_.startMeasuring();
  // The saturation of each estimate, 0 for none; and how clear the heart rate is from there on. One
  // is clear enough if its rival is half as strong.
  for (const auto& [estimates, seen] : rowsOf(R"(
92.99*59      -> 70 --, low 59, missing 0, unclear 0
93            -> 70 93, low 0, missing 0, unclear 0
0.51 97*29    -> 70 97, low 0, missing 0, unclear 29
97            -> -- 97, low 0, missing 0, unclear 30
0.5 97        -> 70 97, low 0, missing 0, unclear 0
0*30          -> 70 97, low 0, missing 30, unclear 0
0             -> 70 --, low 0, missing 31, unclear 0
98            -> 70 97, low 0, missing 0, unclear 0
0.9 92*59 0*3 -> -- --, low 59, missing 3, unclear 62
92            -> -- --, low 60, missing 3, unclear 63, done
START         -> -- --, low 0, missing 0, unclear 0
)")) {
    std::istringstream words(estimates);
    for (std::string word; words >> word;) {
      if (word == "START") {
        rig_.startMeasuring();
      } else if (word.starts_with("0.")) {
        platform_.fft.peaks = {{80, 1}, {200, std::stod(word)}};
      } else {
        const std::size_t times = word.find('*');
        const int count = times == std::string::npos ? 1 : std::stoi(word.substr(times + 1));
        for (int i = 0; i < count; ++i) rig_.spo2(std::stof(word));
      }
    }
    EXPECT_EQ(values() + formatText(", low %i, missing %i, unclear %i%s",
                                    static_cast<int>(screen_.framesWhereLowSig()),
                                    screen_.failedSpo2Counter(), screen_.failedHeartratesCounter(),
                                    screen_.isDone() ? ", done" : ""),
              seen)
        << estimates;
  }
}

TEST_F(MainViewControllerTest, TheMedianOfElevenIsShownAndFinalForTheHeartRateTheSpo2sIsOfAll) {
  need(17, 17);
  rig_.startMeasuring();
  for (int i = 0; i < 17; ++i) {
    rig_.heartrateBin(i < 10 ? 60 : 100);
    rig_.spo2(i < 10 ? 99 : 95);
    // Six of the last eleven decide: at 15, five of ten would not, and at 16, six of twelve.
    if (i < 16) {
      EXPECT_EQ(values(), i < 15 ? "53 99" : "88 95");
      EXPECT_EQ(screen_.gaugeHR().value(), i < 15 ? 52.734375F : 87.890625F);
      EXPECT_EQ(screen_.gaugeSpo2().value(), i < 15 ? 99 : 95);
      EXPECT_EQ(screen_.gaugeHR().unitOfMeasurement(), i < 15 ? "53 BPM" : "88 BPM");
      EXPECT_TRUE(screen_.gaugeHR().animated() && screen_.gaugeSpo2().animated());
      screen_.finishAnimations();
      EXPECT_EQ(screen_.circleprogressHeartrate().progress(), static_cast<float>(i + 1) / 17);
      EXPECT_EQ(screen_.circleprogressSpo2().progress(), static_cast<float>(i + 1) / 17);
    }
  }
  ASSERT_TRUE(screen_.isDone());
  EXPECT_EQ(std::count(log_.begin(), log_.end(), "hr: 88"), 2);
  EXPECT_EQ(screen_.finalHeartrate(), 87.890625F) << "seven of the last eleven";
  EXPECT_EQ(screen_.finalSpo2(), 99) << "ten of all seventeen";
  EXPECT_EQ(values(), "88 99");
  EXPECT_EQ(screen_.gaugeHR().value(), 87.890625F);
  EXPECT_EQ(screen_.gaugeSpo2().value(), 99);
  EXPECT_EQ(platform_.display.view({"labelLastHeartrate"}).text, "88");
  EXPECT_EQ(platform_.display.view({"labelLastSpo2"}).text, "99");
  EXPECT_EQ(platform_.display.view({"labelHeartrate"}).font, (Font{"HelveticaNeue-Medium", 25}));
  EXPECT_EQ(platform_.display.view({"labelSpo2"}).font, (Font{"HelveticaNeue-Medium", 25}));
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
  EXPECT_EQ(platform_.camera.device->torchMode(), LightMode::off);

  // A frame after the end is counted, and nothing else.
  platform_.journal.clear();
  log_.clear();
  rig_.frame();
  EXPECT_EQ(screen_.videoProcessing()->counter(), 9);
  EXPECT_THAT(*screen_.data()->rawRedValues(), SizeIs(8));
  EXPECT_THAT(platform_.journal.lines(), IsEmpty());
  EXPECT_THAT(log_, IsEmpty());
}

TEST_F(MainViewControllerTest, AValueThatWasNotWantedIsSavedAsZero) {
  screen_.buttonCheckboxSpo2Tapped();
  for (const bool isSpo2 : {false, true}) {
    rig_.startMeasuring();
    for (int i = 0; i < 3; ++i) rig_.spo2(97);
    const HistoryEntry saved = Utils::getValues()->back();
    EXPECT_EQ(std::pair(saved.hr, saved.spo2),
              isSpo2 ? std::pair(0., 97.) : std::pair(70.3125, 0.));
    screen_.buttonCheckboxSpo2Tapped();
    screen_.buttonCheckboxHeartrateTapped();
  }
}

TEST_F(MainViewControllerTest, AFingerIsDarkInAllThreeColours) {
  EXPECT_TRUE(MainViewController::isFingerOnCameraRed(99, 99, 9));
  EXPECT_FALSE(MainViewController::isFingerOnCameraRed(100, 0, 0));
  EXPECT_FALSE(MainViewController::isFingerOnCameraRed(0, 100, 0));
  EXPECT_FALSE(MainViewController::isFingerOnCameraRed(0, 0, 10));
}

// The screen's life, each test on a screen of its own.

TEST(MeasuringScreenLifeTest, LoadingSetsGaugesRingsAndFontsUp) {
  MeasuringRig rig;
  rig.appear();
  EXPECT_EQ(rig.screen.gaugeHR().maxValue, 100);
  EXPECT_EQ(rig.screen.gaugeHR().scaleDivisions, 10);
  EXPECT_EQ(rig.screen.gaugeSpo2().scaleDivisions, 7);
  EXPECT_EQ(rig.screen.circleprogressHeartrate().hintTextGenerationBlock(0.5F), "");
  EXPECT_EQ(rig.screen.circleprogressSpo2().startAngle, 270);
  EXPECT_TRUE(rig.screen.runHeartrate() && rig.screen.runSpo2());
  rig.startMeasuring();
  rig.platform.display.redraws.clear();
  rig.spo2(97);
  rig.platform.time.runFor(1);
  for (const auto& [element, redraws] : rig.platform.display.redraws) {
    EXPECT_GE(redraws, element == "chartFourierView" ? 2 : 10) << element;
  }
  EXPECT_THAT(rig.platform.display.redraws, SizeIs(5));
  for (const char* older : {"iPhone3,1", "iPhone4,1"}) {
    MeasuringRig smaller;
    smaller.platform.device.model = older;
    smaller.appear();
    EXPECT_EQ(smaller.screen.labelValuesFontSize(), 20);
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
  for (const bool isFirst : {true, false}) {
    MeasuringRig rig;
    if (!isFirst) rig.platform.store.values["last_launched_version"] = "0.9.0";
    rig.appear();
    rig.platform.time.runFor(0.49);
    EXPECT_THAT(rig.platform.journal.of("screens"), Not(Contains("release notes")));
    rig.platform.time.runFor(0.02);
    EXPECT_EQ(rig.platform.journal.of("screens").back() == "release notes", !isFirst);
  }
}

TEST(MeasuringScreenLifeTest, TheLogNamesTheReasonWhyTheCameraMayNotBeUsed) {
  using enum CameraAuthorization;
  struct Case {
    CameraAuthorization authorization;
    bool grants;
    const char* appearing;
    const char* starting;
  };
  const Case cases[] = {
      {notDetermined, true,
       "video cam is not determined - trying to get access | Granted access to video cam",
       "Camera access not determined. Ask for permission."},
      {notDetermined, false,
       "video cam is not determined - trying to get access | Not granted access to video cam",
       "Camera access not determined. Ask for permission."},
      {restricted, false, "video cam is restricted",
       "You've been restricted from using the camera on this device. Without camera access this "
       "app won't work. Please contact the device owner so they can give you access."},
      {denied, false, "video cam is denied", "No camera...."},
      {unknown, false, "video cam is not allowed - unknown authorization denial", "No camera...."},
      {authorized, false, "video cam is allowed", nullptr}};
  for (const auto& [authorization, grants, appearing, starting] : cases) {
    MeasuringRig rig;
    rig.platform.camera.grants = grants;
    rig.platform.camera.authorization = authorization;
    rig.screen.viewDidLoad();
    rig.screen.viewDidAppear();
    EXPECT_EQ(joined(rig.platform.log.lines), appearing);
    EXPECT_THAT(rig.platform.alerts.shown, IsEmpty());
    if (!starting) continue;
    rig.platform.log.lines.clear();
    rig.screen.beginButtonPush();
    rig.platform.time.run();
    EXPECT_THAT(rig.platform.log.lines, ElementsAre("Tapped Begin", starting));
    EXPECT_EQ(rig.platform.camera.session, nullptr);
  }
}

}  // namespace
}  // namespace veyla
