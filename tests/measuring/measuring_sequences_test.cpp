#include <gmock/gmock.h>

#include <random>

#include "history/history_store.h"
#include "measuring/measuring_screen.h"
#include "tests/support/random_walk.h"
#include "tests/support/tables.h"

namespace veyla {
namespace {

const char* nameOf(MeasurementEnd end) {
  static constexpr const char* names[] = {"finished",   "lowSignal", "stopped",
                                          "background", "left",      "cameraLost",
                                          "refused",    "failed",    "replaced"};
  return names[static_cast<int>(end)];
}

/// With parts of what is seen by their names.
std::vector<std::pair<std::string, std::string>> rowsOf(const std::string& table) {
  return veyla::rowsOf(
      table, {{"{initial}", "START | {tap} | last -- -- | {zero} | {boxes}"},
              {"{starting}", "STOP | {will} | {cover} | last -- -- | {zero} | alert Starting ..."},
              {"{measuring}", "STOP | {analyzing} | {cover} | last -- -- | {zero} | {on}"},
              {"{stopped}", "START | {analyzing} | {tap} | last -- -- | {zero} | {boxes}"},
              {"{finished}",
               "START | FINISHED | {tap} | last 70 97 | now =70 =97 | dials 70 97, rings 100 100 | "
               "{boxes}"},
              {"{tap}", "Tap START to begin - don't cover camera"},
              {"{cover}", "Cover flash and camera lens with finger..."},
              {"{will}", "Will begin in a couple of seconds ..."},
              {"{analyzing}", "Analyzing - hold steady ..."},
              {"{dark}", "Torch not found or not supported by this device."},
              {"{zero}", "now -- -- | dials 50 93, rings 0 0"},
              {"{boxes}", "[x] | [x]"},
              {"{on}", "heart rate shimmers | SpO2 shimmers | torch | measuring"}});
}

// The states, with what moves between them.

TEST(MeasuringSequencesTest, FromStartToTheResult) {
  Somebody somebody;
  somebody.rig.heartrateSetting("neededValidHeartrate", 4);
  for (const auto& [happenings, seen] : rowsOf(R"(
START 0.01   -> {initial}
0.02         -> START(fadeOut) | {will} | {cover} | last -- -- | {zero} | alert Starting ...
0.3          -> STOP(fadeIn) | {will} | {cover} | last -- -- | {zero} | alert Starting ...
0.3          -> {starting}
1.5          -> STOP | {will}(slideLeft) | {cover} | last -- -- | {zero} | {on}
0.3          -> STOP | {analyzing}(slideRight) | {cover} | last -- -- | {zero} | {on}
0.3          -> {measuring}
good         -> STOP | {analyzing} | {cover} | last -- -- | now 70 97 | dials 70 97, rings 0 0 | {on}
0.3 good 0.3 -> STOP | {analyzing} | {cover} | last -- -- | now 70 97 | dials 70 97, rings 50 67 | {on}
nearly       -> STOP | {analyzing} | {cover} | last -- -- | now 70 97 | dials 70 97, rings 50 67 | {on}
curve        -> STOP | {analyzing} | {cover} | last -- --(zoomOut) | now 70 97 | dials 70 97, rings 50 67 | {on}
0.26         -> STOP | {analyzing} | {cover} | pulse(zoomIn) | now 70 97 | dials 70 97, rings 50 67 | {on}
good 0.05    -> STOP | {analyzing} | {cover} | pulse(zoomIn) | now 70 =97(zoomIn) | dials 70 97, rings 56 75 | heart rate shimmers | torch | measuring
0.45         -> STOP | {analyzing} | {cover} | pulse | now 70 =97 | dials 70 97, rings 75 100 | heart rate shimmers | torch | measuring
good         -> STOP(slideUp) | FINISHED(fadeIn) | {tap}(fadeIn) | pulse(zoomOut) | now =70(zoomIn) =97 | dials 70 97, rings 75 100 | {boxes}
0.32         -> START(slideUp) | FINISHED | {tap} | last 70(zoomIn) 97(zoomIn) | now =70(zoomIn) =97 | dials 70 97, rings 100 100 | {boxes}
1            -> {finished}
START 0.03   -> START(fadeOut) | {will} | {cover} | last 70 97 | now -- -- | dials 50 93, rings 95 95 | alert Starting ...
1            -> STOP | {will} | {cover} | last 70 97 | {zero} | alert Starting ...
)")) {
    EXPECT_EQ(somebody.after(happenings), seen) << happenings;
  }
}

TEST(MeasuringSequencesTest, FromMeasuringBackToStart) {
  for (const auto& [happenings, seen] : rowsOf(R"(
START 1 STOP 0.7                 -> START | {will} | {tap} | last -- -- | {zero} | {boxes}
START 3 STOP 0.019               -> {measuring}
START 3 good 1 STOP 0.02         -> STOP(slideUp) | {analyzing}(fadeIn) | {tap}(fadeIn) | last -- -- | now -- -- | dials 50 93, rings 33 33 | {boxes}
START 3 good 1 STOP 1 lost 1     -> {stopped}
START 3 good 1 lost 1            -> {stopped} | alert Camera lost
START 3 good 1 background 5      -> STOP | {analyzing} | {cover} | last -- -- | now 70 97 | dials 70 97, rings 33 33
START 3 good 1 leave 5           -> STOP | {analyzing} | {cover} | last -- -- | now 70 97 | dials 70 97, rings 33 33
heartrate 1 START 3 good 1 low*60 -> START | {tap} | last -- -- | now -- -- | dials 50 97, rings 0 33 | viewGaugeHeartrate gone | [ ] | [x] | alert Got problems?
START 3 curve 0.1 low*60 3       -> START | {tap} | last 70 -- | now =70 -- | dials 70 93, rings 100 0 | {boxes} | alert Got problems?
START 3 curve 1 low*60 OK START 3 -> STOP | {analyzing} | {cover} | last 70 -- | {zero} | {on}
heartrate                        -> START | {tap} | last -- -- | {zero} | viewGaugeHeartrate(zoomOut) | [ ] | [x]
spo2 1 spo2                      -> START | {tap} | last -- -- | {zero} | viewGaugeSpo2(zoomIn) | {boxes}
heartrate START 3                -> STOP | {analyzing} | {cover} | last -- -- | {zero} | viewGaugeHeartrate gone | SpO2 shimmers | torch | measuring
START 3 none*3 curve 3           -> STOP | {analyzing} | {cover} | last 70 -- | now =70 -- | dials 70 93, rings 100 0 | SpO2 shimmers | torch | measuring
spo2 START 3                     -> STOP | {analyzing} | {cover} | last -- -- | {zero} | viewGaugeSpo2 gone | heart rate shimmers | torch | measuring
denied START 3                   -> {initial} | alert No Camera Access
START 1.9 STOP 0.5 START 2.01    -> {starting}
START 1.9 lost OK 0.05 START 2.01 -> {starting}
START 0.5 background return START 2.01 -> {starting}
dark START 3                     -> STOP | {will} | {cover} | last -- -- | {zero} | alert {dark} | alert Error
dark START 3 lit OK STOP 1       -> START | {will} | {tap} | last -- -- | {zero} | {boxes} | alert {dark}
dark START 3 lit OK background return START 3 -> {measuring} | alert {dark}
)")) {
    EXPECT_EQ(Somebody().after(happenings), seen) << happenings;
  }
}

// What is late.

TEST(MeasuringSequencesTest, TheLaterStateStandsAloneAndForGood) {
  for (const auto& [row, seen] : rowsOf(R"(
START ~ background return 3            -> {initial}
START 2.42 ~ STOP 3                    -> {stopped}
START 2.03 STOP ~ 3                    -> START | {will} | {tap} | last -- -- | {zero} | {boxes}
START 2.03 curve ~ 3                   -> STOP | {analyzing} | {cover} | pulse | {zero} | {on}
START 3 STOP ~ STOP 3                  -> {stopped}
START 3 STOP 0.01 lost OK START ~ 3    -> {measuring}
START 3 curve ~ STOP 3                 -> {stopped}
START 3 curve ~ background return 3    -> {initial}
START 3 good*2 STOP 0.01 good ~ 3      -> {finished}
START 3 good*3 ~ background return 3   -> START | {tap} | last 70 97 | {zero} | {boxes}
START 3 good*3 ~ START 3               -> STOP | {analyzing} | {cover} | last 70 97 | {zero} | {on}
START 3 ~ interruption START 3         -> {measuring}
)")) {
    for (const char* delay : {"0", "0.01", "0.02", "0.1", "0.2", "0.25", "0.4"}) {
      const std::string happenings = replaced(row, "~", delay);
      Somebody somebody;
      EXPECT_EQ(somebody.after(happenings), seen) << happenings;
      EXPECT_EQ(somebody.after("5"), seen) << happenings << " and 5 s more";
    }
  }
}

TEST(MeasuringSequencesTest, ACameraThatOpensLateIsAskedNothingBeforeAndFindsWhoeverStillWaits) {
  for (const auto& [happenings, seen] : rowsOf(R"(
START 1 START 1                          -> {initial}
START 1 START 1 opened 3                 -> {measuring}
START 1 STOP 1 opened 3                  -> START |  | {tap} | last -- -- | {zero} | {boxes}
START 1 background opened return 3       -> {initial}
START 1 leave appear opened 3            -> {initial}
)")) {
    Somebody somebody;
    somebody.camera.opensLater = true;
    EXPECT_EQ(somebody.after(happenings), seen) << happenings;
    EXPECT_EQ(somebody.camera.isWaitedFor(), somebody.screen.isRunning()) << happenings;
  }
}

// How each measurement ends, and that it does so once.

TEST(MeasuringSequencesTest, EveryEndIsToldOnceAndOnlyAFinishedOneIsKept) {
  for (const auto& [happenings, ends] : rowsOf(R"(
START 3 good*3                       -> finished: 70 97
heartrate START 3 good*3             -> finished: 0 97
spo2 START 3 good*3                  -> finished: 70 0
heartrate START 3 low*60             -> lowSignal
START START 1 START 3 STOP 0.01 STOP -> stopped
START 3 lost STOP                    -> cameraLost
START background return              -> background
START 3 leave 1 appear               -> left
START 3 interruption START 3 STOP    -> replaced stopped
denied START 3 STOP                  -> refused
dark START 3 lit OK STOP             -> failed
)")) {
    Somebody somebody;
    somebody.live(happenings + " 1 good*3 low*60 1");
    std::string told;
    for (const MeasurementEnd end : somebody.ends)
      told += (told.empty() ? "" : " ") + std::string(nameOf(end));
    const auto entries = Utils::getValues();
    const bool isKept = entries && !entries->empty();
    if (isKept) told += formatText(": %.0f %.0f", entries->back().hr, entries->back().spo2);
    const TestPlatform& platform = somebody.rig.platform;
    EXPECT_EQ(told, ends) << happenings;
    EXPECT_EQ(somebody.entries(), isKept ? 1U : 0U) << happenings;
    EXPECT_EQ(platform.journal.of("store").empty(), !isKept) << happenings;
    EXPECT_EQ(platform.journal.of("health").empty(), !isKept) << happenings;
    EXPECT_FALSE(somebody.screen.isRunning()) << happenings;
    EXPECT_TRUE(somebody.screen.isDone()) << happenings;
  }
}

TEST(MeasuringSequencesTest, OneFrameCannotBothFinishAMeasurementAndBeTheLastLowOne) {
  Somebody low;
  low.rig.spo2Setting("neededValidSpo2", 1000);
  low.live("START 3 good*3 low*59");
  low.rig.spo2Setting("neededValidSpo2", 3);  // The values there are suffice from now on.
  low.live("low 1");
  EXPECT_EQ(low.ends, std::vector{MeasurementEnd::lowSignal});
  EXPECT_EQ(low.entries(), 0U);
  EXPECT_FALSE(Utils::hasLastSpo2());
  EXPECT_THAT(low.rig.platform.journal.of("health"), testing::SizeIs(1));

  Somebody curve;
  curve.rig.heartrateSetting("neededValidHeartrate", 1000);
  curve.rig.heartrateSetting("rawDataSize", 90);  // It would come with the same frame.
  curve.live("START 3 low*60 3");
  EXPECT_TRUE(curve.rig.platform.display.isSeen(MeasuringScreen::viewLastMeasurements));
}

TEST(MeasuringSequencesTest, EstimatesAreJudgedCountedAndShown) {
  Somebody somebody;
  somebody.rig.heartrateSetting("neededValidHeartrate", 1000);
  somebody.rig.spo2Setting("neededValidSpo2", 1000);
  somebody.live("START 3");
  // A heart rate is clear enough if its rival is half as strong.
  for (const auto& [estimates, seen] : rowsOf(R"(
spo2=92.99*59               -> 70 --, low 59, missing 0, unclear 0
spo2=93                     -> 70 93, low 0, missing 0, unclear 0
rival=0.51 good*29          -> 70 97, low 0, missing 0, unclear 29
good                        -> -- 97, low 0, missing 0, unclear 30
rival=0.5 good              -> 70 97, low 0, missing 0, unclear 0
none*30                     -> 70 97, low 0, missing 30, unclear 0
none                        -> 70 --, low 0, missing 31, unclear 0
spo2=98                     -> 70 97, low 0, missing 0, unclear 0
rival=0.9 low*59 none*3     -> -- --, low 59, missing 3, unclear 62
low                         -> -- --, low 60, missing 3, unclear 63
START 3                     -> -- --, low 0, missing 0, unclear 0
)")) {
    somebody.live(estimates);
    const MainViewController& screen = somebody.screen;
    const auto text = [&](Element element) {
      return somebody.rig.platform.display.view(element).text;
    };
    EXPECT_EQ(text(MeasuringScreen::labelHeartrate) + ' ' + text(MeasuringScreen::labelSpo2) +
                  formatText(", low %i, missing %i, unclear %i",
                             static_cast<int>(screen.framesWhereLowSig()),
                             screen.failedSpo2Counter(), screen.failedHeartratesCounter()),
              seen)
        << estimates;
  }
}

TEST(MeasuringSequencesTest, TwoThousandRandomSequencesLeaveAScreenThatMakesSense) {
  std::map<MeasurementEnd, int> ends;
  for (std::uint32_t seed = 1; seed <= 2000; ++seed) {
    std::mt19937 random(seed);
    RandomWalk walk([&](std::size_t count) {
      return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    });
    ASSERT_EQ(walk.run(40), "") << "seed " << seed;
    for (const MeasurementEnd end : walk.ends()) ++ends[end];
  }
  EXPECT_EQ(ends.size(), 9U);
  for (const auto& [end, times] : ends) EXPECT_GT(times, 5) << "too seldom " << nameOf(end);
}

}  // namespace
}  // namespace veyla
