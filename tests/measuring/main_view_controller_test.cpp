#include "measuring/main_view_controller.h"

#include <gmock/gmock.h>

#include "history/history_store.h"
#include "shell/alerts.h"
#include "shell/launch_history.h"
#include "tests/support/measuring_rig.h"

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

  std::string heartrateText() { return platform_.display.view({"labelHeartrate"}).text; }
  std::string spo2Text() { return platform_.display.view({"labelSpo2"}).text; }
  int logged(const std::string& line) {
    return static_cast<int>(
        std::count(platform_.log.lines.begin(), platform_.log.lines.end(), line));
  }
  /// The lines of services that keep something or ask for attention.
  std::vector<std::string> lasting() {
    std::vector<std::string> lines;
    for (const std::string& line : platform_.journal.lines()) {
      const bool lasts = line.starts_with("store") || line.starts_with("health") ||
                         line.starts_with("session stop") || line.starts_with("screens");
      if (lasts) lines.push_back(line);
    }
    return lines;
  }

  MeasuringRig rig_;
  TestPlatform& platform_ = rig_.platform;
  MainViewController& screen_ = rig_.screen;
};

// From START to the first frame.

TEST_F(MainViewControllerTest, EveryAlertSaysWhatToDo) {
  const auto expectAlert = [&](const char* title, AlertKind kind, const char* subtitle) {
    const Alert& alert = platform_.alerts.shown.back();
    EXPECT_EQ(alert.title, title);
    EXPECT_EQ(alert.kind, kind);
    EXPECT_EQ(alert.subtitle, subtitle);
    const bool waits = kind == AlertKind::waiting;
    EXPECT_EQ(alert.closeButton, waits ? std::nullopt : std::optional<std::string>("Done"));
    EXPECT_EQ(alert.closesOnOutsideTap, !waits);
    EXPECT_EQ(alert.duration, waits ? std::optional(2.0) : std::nullopt);
    EXPECT_EQ(alert.color, (Color{200.0 / 255, 2.0 / 255, 0, 1}));
    EXPECT_EQ(alert.iconTint, (Color{1, 1, 1, 1}));
  };
  const auto start = [&] {
    screen_.beginButtonPush();
    platform_.time.runFor(0.02);
  };
  platform_.camera.authorization = CameraAuthorization::denied;
  start();
  expectAlert(
      "No Camera Access", AlertKind::warning,
      "Without camera access this app won't work. It's essential for Veyla to have access to "
      "the Camera. Please go to the iOS Settings App, scroll down and find Veyla, and allow "
      "Veyla to access the Camera.");
  EXPECT_FALSE(screen_.isRunning());
  platform_.camera.authorization = CameraAuthorization::authorized;
  platform_.camera.device->torch = false;
  start();
  expectAlert("Error", AlertKind::error,
              "There seems to be a problem with the video camera. Check your camera settings.");
  const auto tapBoxes = [&] {
    screen_.buttonCheckboxHeartrateTapped();
    screen_.buttonCheckboxSpo2Tapped();
  };
  tapBoxes();
  EXPECT_TRUE(screen_.isRunning());
  start();
  expectAlert("Nothing to run", AlertKind::warning,
              "You have disabled both heartrate and spo2 measurements. Enable at least one of them "
              "before tapping START.");
  EXPECT_FALSE(screen_.isRunning());
  tapBoxes();
  platform_.camera.device->torch = true;
  start();
  expectAlert("Starting ...", AlertKind::waiting, "Cover flash and camera lens with finger...");
  screen_.showLogSigAlert();
  expectAlert(
      "Got problems?", AlertKind::warning,
      "If you keep getting '--' spo2 values, remove your finger, then tap START, and replace "
      "your finger on the flash and camera lens after \u00bd-1 second.");
  ASSERT_THAT(platform_.alerts.shown.back().buttons, SizeIs(1));
  EXPECT_EQ(platform_.alerts.shown.back().buttons[0].title, "Read FAQ");
  Alerts::instance().tapButton(platform_.alerts.lastId, 0);
  EXPECT_EQ(platform_.journal.of("screens").back(), "faq");
}

TEST_F(MainViewControllerTest, TheLogNamesTheReasonWhyTheCameraMayNotBeUsed) {
  const std::pair<CameraAuthorization, const char*> refusals[] = {
      {CameraAuthorization::notDetermined, "Camera access not determined. Ask for permission."},
      {CameraAuthorization::restricted,
       "You've been restricted from using the camera on this device. Without camera access this "
       "app won't work. Please contact the device owner so they can give you access."},
      {CameraAuthorization::denied, "No camera...."},
      {CameraAuthorization::unknown, "No camera...."}};
  for (const auto& [authorization, reason] : refusals) {
    platform_.log.lines.clear();
    platform_.camera.authorization = authorization;
    screen_.beginButtonPush();
    platform_.time.run();
    EXPECT_THAT(platform_.log.lines, ElementsAre("Tapped Begin", reason));
  }
  EXPECT_EQ(platform_.camera.session, nullptr);
}

TEST_F(MainViewControllerTest, FramesOfTheCountdownCountButAreNotStored) {
  screen_.beginButtonPush();
  platform_.time.runFor(0.02);
  platform_.log.lines.clear();
  rig_.frames(30);
  EXPECT_THAT(platform_.log.lines, IsEmpty());
  platform_.journal.clear();
  platform_.time.runFor(2);
  EXPECT_THAT(platform_.journal.of("device"), ElementsAre("lock", "torch 1", "flash 1", "unlock"));
  EXPECT_THAT(platform_.log.lines, ElementsAre("starting torch/flash"));

  rig_.frame({99.9F, 80.5F, 40, 98});
  EXPECT_EQ(screen_.videoProcessing()->counter(), 31);
  EXPECT_THAT(*screen_.data()->rawRedValues(), ElementsAre(99.9F));
  EXPECT_THAT(*screen_.data()->rawGreenValues(), ElementsAre(80.5F));
  EXPECT_THAT(*screen_.data()->rawBlueValues(), ElementsAre(40));
  EXPECT_THAT(*screen_.data()->rawHRValues(), ElementsAre(98));
  EXPECT_THAT(screen_.chartFourierView().data(), ElementsAre(98));
  EXPECT_THAT(platform_.log.lines, Contains("red 99, green 80, blue: 40"));
}

TEST_F(MainViewControllerTest, ACountdownOfWhatIsDoneLeadsToNothing) {
  screen_.beginButtonPush();
  platform_.time.runFor(1);
  screen_.setIsDone(true);
  platform_.time.runFor(2);
  EXPECT_EQ(platform_.camera.device->torchMode(), LightMode::off);
  EXPECT_FALSE(screen_.canBegin());
}

TEST_F(MainViewControllerTest, ANewStartForgetsTheMeasurementBefore) {
  const auto counts = [&] {
    return std::array<std::size_t, 6>{
        screen_.framesWhereLowSig(),
        static_cast<std::size_t>(screen_.failedSpo2Counter()),
        static_cast<std::size_t>(screen_.failedHeartratesCounter()),
        static_cast<std::size_t>(screen_.videoProcessing()->counter()),
        screen_.data()->rawRedValues()->size(),
        screen_.chartFourierView().data().size()};
  };
  rig_.startMeasuring();
  rig_.heartrateAmbiguous();
  rig_.spo2(90);
  rig_.noSpo2();
  EXPECT_THAT(counts(), ElementsAre(1, 1, 2, 4, 4, 4));
  screen_.stopButtonPush();
  platform_.time.runFor(0.02);
  rig_.startMeasuring();
  EXPECT_THAT(counts(), testing::Each(0));
}

// Which frames are estimated.

TEST_F(MainViewControllerTest, HeartrateEstimatesBeginWithAFullWindowOnTheFramesTheSettingsName) {
  rig_.heartrateSetting("rawDataSize", 4);
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 3);
  rig_.spo2Setting("rawDataSize", 1000);
  rig_.startMeasuring();
  screen_.videoProcessing()->setCounter(10);
  rig_.frames(3);  // 11 to 13: 12 is a multiple of 3, but the window is short.
  EXPECT_THAT(platform_.log.lines, Not(Contains(StartsWith("skipping hr"))));
  rig_.frames(3);
  EXPECT_THAT(platform_.log.lines,
              AllOf(Contains("skipping hr frame 14"), Contains("not skipping hr frame 15"),
                    Contains("skipping hr frame 16")));
  EXPECT_THAT(*screen_.data()->heartrateValues(), SizeIs(1));

  rig_.heartrateSetting("skipFramesBetweenMeasurements", 1);
  rig_.frame();
  EXPECT_THAT(*screen_.data()->heartrateValues(), SizeIs(2)) << "read anew at each frame";
  rig_.heartrateSetting("skipFramesBetweenMeasurements", 0);
  rig_.frame();
  EXPECT_EQ(logged("skipping hr frame 18"), 1);
}

TEST_F(MainViewControllerTest, Spo2EstimatesWaitForTheFramesBeforeTheirWindowToo) {
  rig_.spo2Setting("framesBeforeBeginning", 3);
  rig_.spo2Setting("skipFramesBetweenMeasurements", 1);
  screen_.buttonCheckboxHeartrateTapped();
  rig_.startMeasuring();
  rig_.frames(4);
  EXPECT_EQ(logged("not skipping spo2 frame 4"), 1) << "logged whether or not it is estimated";
  EXPECT_EQ(screen_.failedSpo2Counter(), 0);
  rig_.frame();
  EXPECT_EQ(screen_.failedSpo2Counter(), 1);
  EXPECT_EQ(logged("spo2 0.00, counter: 5"), 1);
  EXPECT_THAT(platform_.log.lines, Not(Contains("not skipping hr frame 2")));
  EXPECT_THAT(platform_.display.view({"testLabel"}).text, StartsWith("ACR=0 DCR=100"));
}

TEST_F(MainViewControllerTest, TheChartAppearsOnceThirtyFramesAfterTheFirstFullWindow) {
  constexpr Element chart{"chartFourierView"};
  rig_.heartrateSetting("neededValidHeartrate", 1000);
  rig_.startMeasuring();
  rig_.frames(31);
  EXPECT_TRUE(platform_.display.playing({"viewCenter"}).empty());
  rig_.frame();
  platform_.time.runFor(1);
  EXPECT_TRUE(platform_.display.isSeen(chart));
  rig_.frames(40);
  EXPECT_TRUE(platform_.display.playing({"viewCenter"}).empty()) << "once";
  EXPECT_EQ(platform_.display.redraws["chartFourierView"], 72);
}

// What becomes of an estimate.

TEST_F(MainViewControllerTest, AnAcceptedHeartrateIsShownAsTheMedianOfTheLastEleven) {
  rig_.heartrateSetting("neededValidHeartrate", 46);
  rig_.spo2Setting("neededValidSpo2", 100);
  rig_.startMeasuring();
  const auto estimate = [&](int count, std::size_t bin) {
    rig_.heartrateBin(bin);
    for (int i = 0; i < count; ++i) rig_.spo2(97);
  };
  estimate(6, 60);
  estimate(5, 100);
  EXPECT_EQ(heartrateText(), "53") << "60 × 0.879, six of eleven; of ten it would be the other";
  estimate(6, 100);
  EXPECT_EQ(heartrateText(), "88");
  estimate(6, 60);
  EXPECT_EQ(heartrateText(), "53") << "six of eleven; of twelve it would be the other";
  EXPECT_EQ(platform_.display.view({"labelHeartrate"}).font, (Font{"HelveticaNeue-Light", 25}));
  EXPECT_EQ(screen_.gaugeHR().value(), 52.734375F);
  EXPECT_TRUE(screen_.gaugeHR().animated());
  EXPECT_EQ(screen_.gaugeHR().unitOfMeasurement(), "53 BPM");
  screen_.finishAnimations();
  EXPECT_EQ(screen_.circleprogressHeartrate().progress(), 0.5F);
  EXPECT_EQ(logged("hr: 88"), 11);
  EXPECT_EQ(platform_.log.lines.back(), "spo2 97.00, counter: 46");
}

TEST_F(MainViewControllerTest, AnEstimateAtTheThresholdIsAccepted) {
  rig_.startMeasuring();
  platform_.fft.peaks = {{80, 1}, {200, 0.5}};
  rig_.noSpo2();
  EXPECT_THAT(*screen_.data()->fourierValues(), SizeIs(1));
  platform_.fft.peaks = {{80, 1}, {200, 0.51}};
  rig_.noSpo2();
  EXPECT_THAT(*screen_.data()->fourierValues(), SizeIs(1));
  EXPECT_EQ(screen_.failedHeartratesCounter(), 1);
  rig_.heartrateBin(80);
  rig_.noSpo2();
  EXPECT_EQ(screen_.failedHeartratesCounter(), 0);
}

TEST_F(MainViewControllerTest,
       TheThirtiethFailedHeartrateAndTheThirtyFirstMissingSpo2BlankTheValues) {
  rig_.startMeasuring();
  rig_.spo2(97);
  rig_.heartrateAmbiguous();
  const auto estimates = [&](int count) {
    for (int i = 0; i < count; ++i) rig_.noSpo2();
    return heartrateText() + ' ' + spo2Text();
  };
  EXPECT_EQ(estimates(29), "70 97");
  EXPECT_EQ(estimates(1), "-- 97");
  EXPECT_EQ(estimates(1), "-- --");
  EXPECT_FALSE(screen_.isDone());
  rig_.spo2(98);
  EXPECT_EQ(screen_.failedSpo2Counter(), 0);
}

TEST_F(MainViewControllerTest, AnSpo2OfNinetyThreeIsAcceptedAndLowAndMissingOnesAreCountedApart) {
  rig_.heartrateSetting("neededValidHeartrate", 1000);
  rig_.startMeasuring();
  for (int i = 0; i < 59; ++i) rig_.spo2(92.99F);
  EXPECT_EQ(screen_.framesWhereLowSig(), 59U);
  EXPECT_THAT(*screen_.data()->spo2Values(), IsEmpty());
  EXPECT_EQ(spo2Text(), "--");
  rig_.spo2(93);
  EXPECT_EQ(screen_.framesWhereLowSig(), 0U);
  EXPECT_THAT(*screen_.data()->spo2Values(), ElementsAre(93));
  EXPECT_EQ(spo2Text(), "93");
  EXPECT_TRUE(screen_.gaugeSpo2().animated());
  screen_.finishAnimations();
  EXPECT_EQ(screen_.circleprogressSpo2().progress(), 1.0F / 3.0F);
  for (int i = 0; i < 59; ++i) rig_.spo2(92);
  for (int i = 0; i < 3; ++i) rig_.noSpo2();
  EXPECT_EQ(screen_.framesWhereLowSig(), 59U);
  EXPECT_EQ(screen_.failedSpo2Counter(), 3);
  EXPECT_FALSE(screen_.isDone());
  rig_.spo2(92);
  EXPECT_TRUE(screen_.isDone()) << "the sixtieth since the accepted one";
  EXPECT_EQ(screen_.failedSpo2Counter(), 3);
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
  EXPECT_EQ(platform_.log.lines.back(), "spo2 values: (97, 96, 98)");
  rig_.heartrateBin(90);
  rig_.spo2(93);  // Heart rate: 70, 70, 79. The SpO2 is final and not estimated any more.

  EXPECT_THAT(lasting(), ElementsAre("store set last_spo2", "store flush", "health 0.97 %",
                                     "store set last_heartrate", "store flush",
                                     "health 70 count/min", "session stop", "store set values",
                                     "store flush", "store set rating_first_use",
                                     "store set rating_significant_events", "store flush"));
  EXPECT_TRUE(screen_.isDone());
  EXPECT_EQ(Utils::getLastHeartrate(), 70.3125F);
  EXPECT_EQ(Utils::getLastSpo2(), 97);
  const auto entries = Utils::getValues();
  ASSERT_THAT(*entries, SizeIs(1));
  EXPECT_EQ(entries->front(),
            (HistoryEntry{70.3125, 97, platform_.date.now(), Labels{}, std::nullopt}));
  EXPECT_THAT(platform_.log.lines,
              AllOf(Contains("Done HR"), Contains("Done Spo2"), Contains("Done Both")));
  EXPECT_EQ(platform_.camera.device->torchMode(), LightMode::off);

  // A frame after the end is counted, and nothing else.
  platform_.journal.clear();
  platform_.log.lines.clear();
  rig_.frame();
  EXPECT_EQ(screen_.videoProcessing()->counter(), 9);
  EXPECT_THAT(*screen_.data()->rawRedValues(), SizeIs(8));
  EXPECT_THAT(platform_.journal.lines(), IsEmpty());
  EXPECT_THAT(platform_.log.lines, IsEmpty());
}

TEST_F(MainViewControllerTest, TheFinalHeartrateIsTheMedianOfElevenAndTheFinalSpo2OfAll) {
  rig_.heartrateSetting("neededValidHeartrate", 17);
  rig_.spo2Setting("neededValidSpo2", 17);
  rig_.startMeasuring();
  for (int i = 0; i < 17; ++i) {
    rig_.heartrateBin(i < 10 ? 60 : 100);
    rig_.spo2(i < 10 ? 99 : 95);
    // Six of the last eleven decide: at 15, five of ten would not, and at 16, six of twelve.
    if (i < 16) {
      EXPECT_EQ(spo2Text(), i < 15 ? "99" : "95");
    }
  }
  ASSERT_TRUE(screen_.isDone());
  EXPECT_EQ(screen_.finalHeartrate(), 87.890625F) << "seven of the last eleven";
  EXPECT_EQ(screen_.finalSpo2(), 99) << "ten of all seventeen";
  EXPECT_EQ(heartrateText() + ' ' + spo2Text(), "88 99");
  EXPECT_EQ(screen_.gaugeHR().value(), 87.890625F);
  EXPECT_EQ(screen_.gaugeSpo2().value(), 99);
  EXPECT_EQ(platform_.display.view({"labelLastHeartrate"}).text, "88");
  EXPECT_EQ(platform_.display.view({"labelLastSpo2"}).text, "99");
  EXPECT_EQ(platform_.display.view({"labelHeartrate"}).font, (Font{"HelveticaNeue-Medium", 25}));
  EXPECT_EQ(platform_.display.view({"labelSpo2"}).font, (Font{"HelveticaNeue-Medium", 25}));
  EXPECT_FALSE(platform_.display.view({"labelMeasuringHeartrate"}).shimmering);
}

TEST_F(MainViewControllerTest, AValueThatWasNotWantedIsSavedAsZero) {
  screen_.buttonCheckboxSpo2Tapped();
  rig_.startMeasuring();
  for (int i = 0; i < 3; ++i) rig_.spo2(97);
  screen_.buttonCheckboxSpo2Tapped();
  screen_.buttonCheckboxHeartrateTapped();
  rig_.startMeasuring();
  for (int i = 0; i < 3; ++i) rig_.spo2(97);
  std::vector<std::pair<double, double>> saved;
  for (const auto entries = *Utils::getValues(); const HistoryEntry& entry : entries)
    saved.emplace_back(entry.hr, entry.spo2);
  EXPECT_THAT(saved, ElementsAre(std::pair(70.3125, 0), std::pair(0, 97)));
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
  const WMGaugeView& gauge = rig.screen.gaugeHR();
  EXPECT_EQ(gauge.minValue, 50);
  EXPECT_EQ(gauge.maxValue, 100);
  EXPECT_EQ(gauge.scaleDivisions, 10);
  EXPECT_EQ(rig.screen.gaugeSpo2().minValue, 93);
  EXPECT_EQ(rig.screen.gaugeSpo2().scaleDivisions, 7);
  EXPECT_EQ(rig.screen.circleprogressHeartrate().hintTextGenerationBlock(0.5F), "");
  EXPECT_EQ(rig.screen.circleprogressSpo2().startAngle, 270);
  EXPECT_TRUE(rig.screen.runHeartrate() && rig.screen.runSpo2());
  rig.startMeasuring();
  rig.platform.display.redraws.clear();
  rig.spo2(97);
  rig.platform.time.runFor(1);
  EXPECT_THAT(
      rig.platform.display.redraws,
      testing::UnorderedElementsAre(testing::Pair("gaugeHR", testing::Gt(20)),
                                    testing::Pair("gaugeSpo2", testing::Gt(20)),
                                    testing::Pair("circleprogressHeartrate", testing::Gt(10)),
                                    testing::Pair("circleprogressSpo2", testing::Gt(10)),
                                    testing::Pair("chartFourierView", 2)));
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
  EXPECT_THAT(rig.platform.journal.of("screens"),
              ElementsAre("intro", "back swipe off", "title Veyla"));
  EXPECT_THAT(rig.platform.health.requested, IsEmpty());

  MeasuringRig later;
  later.platform.store.values["pleaseNoteShown"] = false;  // Its presence is what counts.
  later.appear();
  later.screen.swipeLeft();
  later.screen.swipeRight();
  EXPECT_THAT(later.platform.journal.of("screens"),
              ElementsAre("tint default", "back swipe off", "title Veyla", "settings", "results"));
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
  using enum CameraAuthorization;
  struct Case {
    CameraAuthorization authorization;
    bool grants;
    std::vector<std::string> lines;
  };
  const std::string asking = "video cam is not determined - trying to get access";
  const Case cases[] = {
      {notDetermined, true, {asking, "Granted access to video cam"}},
      {notDetermined, false, {asking, "Not granted access to video cam"}},
      {restricted, false, {"video cam is restricted"}},
      {denied, false, {"video cam is denied"}},
      {authorized, false, {"video cam is allowed"}},
      {unknown, false, {"video cam is not allowed - unknown authorization denial"}}};
  for (const auto& [authorization, grants, lines] : cases) {
    MeasuringRig rig;
    rig.platform.camera.grants = grants;
    rig.platform.camera.authorization = authorization;
    rig.screen.viewDidAppear();
    EXPECT_EQ(rig.platform.log.lines, lines);
    EXPECT_THAT(rig.platform.alerts.shown, IsEmpty());
  }
}

}  // namespace
}  // namespace veyla
