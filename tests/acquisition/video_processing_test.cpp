#include "acquisition/video_processing.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>

#include "acquisition/frame_averaging.h"
#include "analysis/vector_utils.h"
#include "tests/support/builders.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

constexpr TestFrame::Pixel black{0, 0, 0};
constexpr TestFrame::Pixel fingertip{10, 200, 100};

FrameSample averageCells(const TestFrame& frame, std::vector<int> cells) {
  // The same one from frame to frame, as while measuring.
  static GridAverager averager;
  return averager.average(frame.baseAddress(), frame.width(), frame.height(), cells);
}

FrameSample averageAll(const TestFrame& frame) {
  return averageWholeFrame(frame.baseAddress(), frame.width(), frame.height(), frame.bytesPerRow());
}

TEST(FrameAveragingTest, ChannelMeansGiveTheRecordOfTheirWholeFrameAndThatStaysAsItIs) {
  const FrameSample record{100, 148, 10, 148};
  EXPECT_EQ(wholeFrameRecord({100.9F, 200.9F, 10.9F, 100.9F}), record);
  EXPECT_EQ(wholeFrameRecord({100, 200, 10, 100}), record);
  EXPECT_EQ(wholeFrameRecord(record), record);
  // Grey, and no luma in whole numbers.
  EXPECT_EQ(wholeFrameRecord({255, 255, 9.5F, 255}), (FrameSample{255, 226, 9, 226}));
}

TEST(FrameAveragingTest, TheWholeFrameTruncatesMeansAndSurvivesTheLargestSums) {
  TestFrame frame(2, 1, black);
  frame.set(0, 0, {3, 7, 7});
  EXPECT_EQ(averageAll(frame), (FrameSample{3, 2, 1, 2}));
  const TestFrame white(1200, 600, {255, 255, 255});
  EXPECT_EQ(averageAll(white), (FrameSample{255, 255, 255, 255}));
  // An odd row loses its last pixel, but not its share.
  TestFrame odd(3, 2, {90, 90, 90});
  for (const std::size_t y : {0U, 1U}) odd.set(2, y, {255, 255, 255});
  EXPECT_EQ(averageAll(odd).red, 60);
  // Rows have padding, which is stepped over.
  const TestFrame padded(4, 3, fingertip, 3);
  EXPECT_EQ(averageAll(padded).red, 100);
  EXPECT_EQ(averageWholeFrame(padded.baseAddress(), 0, 0, 0), FrameSample{});
}

TEST(FrameAveragingTest, GridRowsAreReadAsUnpaddedWhateverTheyAre) {
  // The cell's second sample, at y = 4, is the 64th pixel in memory: (13, 3) where rows take 17.
  TestFrame frame(16, 32, black, 1);
  frame.set(13, 3, fingertip);
  EXPECT_EQ(averageCells(frame, {1}).red, 100);
  // 10 × 11 pixels: cells of 2 × 2, one sample each.
  TestFrame odd(10, 11, black);
  odd.set(6, 6, fingertip);
  EXPECT_EQ(averageCells(odd, {16}).red, 100);
  EXPECT_EQ(GridAverager::rowStep(11), 1U) << "the cells' first rows lie between the steps";
}

TEST(FrameAveragingTest, ACellSamplesEveryFourthPixelOfEveryFourthRow) {
  TestFrame frame(192, 144, black);
  int sampled = 0;
  // 12 × 9 samples: 55 of 108 decide the upper median at position 54.
  for (std::size_t y = 0; y < 36 && sampled < 54; y += 4) {
    for (std::size_t x = 0; x < 48 && sampled < 54; x += 4, ++sampled) frame.set(x, y, fingertip);
  }
  EXPECT_EQ(averageCells(frame, {1}), (FrameSample{100, 200, 10, 100}));
  frame.set(0, 0, black);
  EXPECT_EQ(averageCells(frame, {1}), FrameSample{});
}

TEST(FrameAveragingTest, CellsGiveUpperMediansHoweverManySamplesAndCellsThereAre) {
  std::uint32_t random = 1;
  for (std::size_t columns = 1; columns <= 30; ++columns) {
    TestFrame frame(16 * columns, 320, black);
    std::vector<double> reds;
    for (std::size_t i = 0; i < 20 * columns; ++i) {
      random = random * 1664525 + 1013904223;
      const auto red = static_cast<std::uint8_t>(i % 3 == 0 ? 255 : random >> 24);
      frame.set(i % columns * 4, i / columns * 4, {0, 0, red});
      reds.push_back(red);
    }
    std::vector<int> cells(columns, 1);
    cells.push_back(2);
    const auto share = static_cast<double>(columns) / static_cast<double>(cells.size());
    ASSERT_FLOAT_EQ(averageCells(frame, cells).red,
                    static_cast<float>(VectorUtils::medianOf(reds) * share));
  }
  // However near to those of the frame before or far from them.
  for (const int from : {0, 1, 4, 5, 128, 251, 255}) {
    for (int to = std::max(from - 9, 0); to <= std::min(from + 9, 255); ++to) {
      for (const int red : {from, to}) {
        const TestFrame frame(16, 16, {0, 0, static_cast<std::uint8_t>(red)});
        ASSERT_EQ(averageCells(frame, {1}).red, red) << from << " to " << to;
      }
    }
  }
}

TEST(FrameAveragingTest, CellsAreNumberedRowByRowAndAveragedWithFractions) {
  TestFrame frame(192, 144, black);
  for (std::size_t y = 0; y < 144; ++y) {
    for (std::size_t x = 0; x < 192; ++x) {
      const auto cell = static_cast<std::uint8_t>(y / 36 * 4 + x / 48 + 1);
      frame.set(x, y, {0, static_cast<std::uint8_t>(cell * 2), cell});
    }
  }
  for (int cell = 1; cell <= 16; ++cell) {
    EXPECT_EQ(averageCells(frame, {cell}).red, static_cast<float>(cell));
  }
  EXPECT_EQ(averageCells(frame, {1, 2, 2}).red, static_cast<float>(5.0 / 3));
  EXPECT_EQ(averageCells(frame, {1, 2}).green, 3);
  EXPECT_EQ(averageCells(frame, {0, 17, -3, 5}).red, 5) << "numbers without a cell are passed over";
  EXPECT_EQ(averageCells(TestFrame(3, 144, fingertip), {1, 16}), FrameSample{}) << "no pixels";
  EXPECT_EQ(averageCells(TestFrame(192, 3, fingertip), {1, 16}), FrameSample{});
}

TEST(FrameAveragingTest, CellsOfTwoColoursDifferByWhatTheyHaveMoreThanAllTogether) {
  TestFrame frame(192, 144, {20, 20, 200});
  for (std::size_t y = 0; y < 72; ++y) {
    for (std::size_t x = 0; x < 192; ++x) frame.set(x, y, {20, 200, 20});
  }
  GridAverager averager;
  std::vector<int> cells(FrameCells::count);
  std::iota(cells.begin(), cells.end(), 1);
  averager.average(frame.baseAddress(), frame.width(), frame.height(), cells);
  ASSERT_TRUE(averager.cells());
  // Of 240 steps of light each has 90 of red and of green too many or too few.
  EXPECT_FLOAT_EQ(averager.cells()->colourSpread, 180 / 240.0F);
  EXPECT_EQ(averager.cells()->brightness[0], 240);
}

struct RecorderDelegate : VideoDelegate {
  std::vector<FrameSample> frames;

  void updateMeasurementsWithRed(float red, float green, float blue, float hr) override {
    frames.push_back({red, green, blue, hr});
  }
};

class VideoProcessingTest : public testing::Test {
 protected:
  VideoProcessingTest() { video_.setDelegate(&delegate_); }

  TestPlatform platform_;
  RecorderDelegate delegate_;
  VideoProcessing video_;
};

TEST_F(VideoProcessingTest, StartConfiguresTheDeviceThenJoinsItToARunningSession) {
  withCameraSettings({{"exposureMode", 2},
                      {"whiteBalanceMode", 1},
                      {"focusMode", 0},
                      {"flashMode", 2},
                      {"automaticallyEnablesLowLightBoostWhenAvailable", true}});
  video_.setCounter(7);
  video_.setFramedrops(3);
  EXPECT_TRUE(video_.startRecording());

  EXPECT_EQ(joined(platform_.journal.lines()),
            "session begin | session preset low | device lock | device exposure 2 | "
            "device white balance 1 | device focus 0 | device focus range 2 | "
            "device low-light boost 1 | device unlock | session add input | session add output | "
            "session commit | session start");
  EXPECT_EQ(joined(platform_.log.lines),
            "setting exposure: 2 | setting whitebalance: 1 | setting focusMode: 0 | "
            "setting autoFocusRangeRestriction: 2 | "
            "setting automaticallyEnablesLowLightBoostWhenAvailable=1");
  EXPECT_EQ(video_.counter(), 0);
  EXPECT_EQ(video_.framedrops(), 0);
  EXPECT_EQ(video_.before(), TestPlatform::start);
  EXPECT_TRUE(video_.isRecording());
  EXPECT_FALSE(video_.isIphone4() || video_.isIphone6());
  EXPECT_TRUE(video_.videoDataOutput()->alwaysDiscardsLateVideoFrames);
  EXPECT_EQ(video_.videoDataOutput()->pixelFormat, "BGRA");
  EXPECT_EQ(video_.videoDataOutput()->sampleBufferDelegate, &video_);
}

TEST_F(VideoProcessingTest, ASettingThatTheDeviceLacksIsLoggedAndTheStartGoesOn) {
  withCameraSettings({{"exposureMode", 1}, {"focusMode", 2}, {"flashMode", 1}});
  auto& device = *platform_.camera.device;
  device.exposureModes = device.whiteBalanceModes = device.focusModes = {};
  device.rangeRestriction = FocusRange::unrestricted;
  device.lowLightBoost = false;
  device.lockable = false;
  EXPECT_TRUE(video_.startRecording());
  const std::string no = "Device does not support ";
  EXPECT_EQ(joined(platform_.log.lines), no + "focusMode: 1 | " + no + "whitebalance: 0 | " + no +
                                             "focusMode: 2 | " + no +
                                             "autoFocusRangeRestriction: 1 | " + no +
                                             "automaticallyEnablesLowLightBoostWhenAvailable: 0");
  EXPECT_THAT(platform_.journal.of("device"), ElementsAre("lock", "unlock"));
}

TEST_F(VideoProcessingTest,
       TheTelephotoCameraComesBeforeTheLastWideAngleOneAndWithoutThemNothingRuns) {
  constexpr auto dual = CaptureDeviceType::dualCamera;
  constexpr auto wide = CaptureDeviceType::wideAngleCamera;
  constexpr auto tele = CaptureDeviceType::telephotoCamera;
  const std::pair<std::vector<CaptureDeviceType>, std::optional<std::size_t>> cases[] = {
      {{dual, wide, tele, wide, tele}, 2}, {{wide, dual, wide}, 2}, {{dual}, {}}};
  auto& listed = platform_.camera.backDevices;
  for (const auto& [types, chosen] : cases) {
    listed.emplace();
    for (const auto type : types) {
      listed->push_back(std::make_shared<ScriptedDevice>(platform_.journal, type));
    }
    EXPECT_EQ(video_.backFacingCamera(), chosen ? listed->at(*chosen) : nullptr);
  }
  EXPECT_FALSE(video_.startRecording());
  EXPECT_EQ(inWords(platform_.alerts.shown.back()), "plain | Camera not found |  [OK]");
  EXPECT_FALSE(video_.isRecording());
  listed = std::nullopt;
  platform_.camera.defaultDevice = platform_.camera.device;
  EXPECT_EQ(video_.backFacingCamera(), platform_.camera.device);
}

TEST_F(VideoProcessingTest, StopTurnsTheTorchOffReportsAndTakesTheSessionApart) {
  video_.stopRecording();  // Without a start there is nothing to take apart.
  video_.startRecording();
  platform_.journal.clear();
  video_.setCounter(30);
  video_.captureOutput(DroppedSample{});
  platform_.time.runFor(4);
  video_.stopRecording();
  EXPECT_EQ(joined(platform_.journal.lines()),
            "device lock | device torch 0 | device unlock | session stop | session remove input | "
            "session remove output");
  EXPECT_FALSE(video_.captureSession());
  EXPECT_THAT(delegate_.frames, IsEmpty()) << "a dropped frame is not delivered";
  video_.startRecording();
  video_.stopRecording();
  std::erase_if(platform_.log.lines,
                [](const std::string& line) { return line.starts_with("setting"); });
  EXPECT_THAT(platform_.log.lines,
              ElementsAre("seconds: 0.000000, frames 0, framedrops 0, fps: 0.000000",
                          "frame dropped: 1, counter: 30",
                          "seconds: 4.000000, frames 30, framedrops 1, fps: 7.500000",
                          "seconds: 0.000000, frames 0, framedrops 0, fps: 0.000000"));
}

TEST_F(VideoProcessingTest, GridCellsAreReadFromTheSettingsAtEachFrameWhateverTheLockSays) {
  video_.startRecording();
  // Of another cell where its rows are taken as they are.
  TestFrame frame(16, 32, black, 1);
  frame.set(13, 3, fingertip);
  frame.lockable = false;
  withSpo2Settings({{"grids", Value::Array{1}}});
  video_.captureOutput(frame);
  withSpo2Settings({});
  video_.captureOutput(frame);

  ASSERT_EQ(delegate_.frames.size(), 2U);
  EXPECT_EQ(delegate_.frames[0], (FrameSample{100, 200, 10, 100}));
  EXPECT_TRUE(std::isnan(delegate_.frames[1].red));
  EXPECT_EQ(frame.unlocks, 2);
  EXPECT_EQ(video_.rowStep(144), 4U);
}

TEST_F(VideoProcessingTest, OneProfileAveragesTheWholeFrameAndSkipsOneThatCannotBeLocked) {
  platform_.device.model = "iPhone3,1";
  video_.startRecording();
  TestFrame frame(192, 144, {10, 200, 100}, 16);
  video_.captureOutput(frame);
  EXPECT_THAT(delegate_.frames, ElementsAre(FrameSample{100, 148, 10, 148}));
  EXPECT_EQ(frame.unlocks, 0);
  EXPECT_EQ(video_.rowStep(144), 1U);

  frame.lockable = false;
  video_.captureOutput(frame);
  EXPECT_EQ(delegate_.frames.size(), 1U);

  video_.captureOutput(FrameSample{100.5F, 200.5F, 10.5F, 100.5F});
  EXPECT_EQ(delegate_.frames.back(), delegate_.frames.front()) << "from its channel means";
}

TEST_F(VideoProcessingTest, TheDumpTellsTheCamerasStateOnEveryFifteenthFrame) {
  video_.startRecording();
  platform_.log.lines.clear();
  platform_.camera.device->focusModes = {CaptureMode::automatic};
  video_.setCounter(14);
  video_.avCaptureSettings();
  EXPECT_THAT(platform_.log.lines, IsEmpty());
  video_.setCounter(15);
  video_.avCaptureSettings();
  EXPECT_EQ(replaced(joined(platform_.log.lines), "\t", ""),
            "-------------CAN CHANGE--- | exposureMode: 2 | supported: | locked: YES | auto: YES | "
            "continuous: YES | torchMode: 0 | supported: | off: YES | on: YES | auto: NO | "
            "focusMode: 0 | supported: | locked: NO | auto: YES | continuous: NO | "
            "whiteBalanceMode: 1 | supported: | locked: YES | auto: YES | continuous: YES | "
            "videoZoomFactor: 1.250000 | autoFocusRangeRestriction: 1 | "
            "automaticallyEnablesLowLightBoostWhenAvailable: 1 | supported: YES | "
            "-------------CAN NOT CHANGE--- | isAdjustingWhiteBalance: 1 | isAdjustingFocus: 0 | "
            "isAdjustingExposure: 1 | torchLevel: 0.500000 | "
            "-----------------------------------------");
  platform_.log.lines.clear();
  platform_.journal.clear();
  video_.setCounter(0);
  video_.avCaptureSettings();
  EXPECT_EQ(platform_.log.lines.size(), 31U);
  EXPECT_THAT(platform_.journal.lines(), ElementsAre("device lock", "device unlock"));
}

}  // namespace
}  // namespace veyla
