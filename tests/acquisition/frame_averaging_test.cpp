#include "acquisition/frame_averaging.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/builders.h"

namespace veyla {
namespace {

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

}  // namespace
}  // namespace veyla
