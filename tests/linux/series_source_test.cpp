#include "platform/linux/series_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

#include "tests/linux/recordings.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class SeriesSourceTest : public testing::Test {
 protected:
  /// Under a name of another kind, which decides nothing.
  PlayedRecording read(const std::string& text) { return playedOf(folder_.write("a.mp4", text)); }

  ScratchFolder folder_;
};

TEST_F(SeriesSourceTest, RowsBecomeFramesInSecondsFromTheFirstWithRedAsThePulse) {
  const auto played = read("time,R,G,B\n500,40.5,89.25,49\n533,41,88,48\n533,42,87,47\n");
  EXPECT_THAT(played.times, ElementsAre(0, 0.033, 0.033));
  EXPECT_THAT(played.frames, ElementsAre(FrameSample{40.5F, 89.25F, 49, 40.5F},
                                         FrameSample{41, 88, 48, 41}, FrameSample{42, 87, 47, 42}));
  EXPECT_EQ(played.remark, "");
  // Columns in any order and case with others between them, under every locale.
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_THAT(read("\xEF\xBB\xBF b , HR,note,TIME,r,g\r\n3,9.5,thumb,0, 1 ,2e1\r\n\r\n\r\n").frames,
              ElementsAre(FrameSample{1, 20, 3, 9.5F}));
  std::setlocale(LC_ALL, "C");
}

TEST_F(SeriesSourceTest, WhatSeemsWrongIsRemarkedOn) {
  for (const char* rest : {"33,4", "33,4,5,", "3"}) {
    const auto played = read(std::string("time,R,G,B\n0,1,2,3\n") + rest);
    EXPECT_EQ(played.frames.size(), 1U) << rest;
    EXPECT_THAT(played.remark, HasSubstr("a.mp4: cut off"));
  }
  std::string text = "time,R,G,B\n";
  for (int i = 0; i <= 30; ++i) text += std::to_string(i / 31.0) + ",1,2,3\n";
  EXPECT_THAT(read(text).remark, HasSubstr("a.mp4: all its rows lie within 0.000968 s, times are"));
  EXPECT_EQ(read(text + "1000,1,2,3\n").remark, "");
}

TEST_F(SeriesSourceTest, FaultsAreNamedByLineAndColumn) {
  const std::string rows = "time,R,G,B\n0,1,2,3\n";
  const std::pair<std::string, const char*> faults[] = {
      {"time,R,B\n0,1,2\n",
       "line 1: column G: missing; the first line must name time, R, G and B, and is \"time,R,B\""},
      {"time,R,G,B,r\n", "line 1: column R: named twice"},
      {"time,R,G,B\n", "no rows"},
      {"time,R,G,B\n" + std::string(100000, '7'), "line 2: longer"},
      {rows + "33,red,2,3\n", "line 3: column R: \"red\" is not a number; correct it or take the"},
      {rows + "33,1,2,nan\n", "line 3: column B: \"nan\" is not finite"},
      {rows + "33,256,2,3\n", "line 3: column R: \"256\" is outside"},
      {rows + "33,1\x1b[31m,2,3\n", "line 3: column R: \"1?[31m\""},
      {rows + "-1,1,2,3\n", "line 3: column time: \"-1\" is before"},
      {rows + "10000,1,2,3\n20001,1,2,3\n", "line 4: column time: a step of 10.001 s from the row"},
      {rows + "33,4\n", "line 3: 2 fields where the first line names 4; complete the row or take"},
      {rows + "\n\n33,1,2,3\n", "line 3: blank between rows"},
      {rows + std::string("3\0,\n", 4), "line 3: not text"}};
  for (const auto& [text, fault] : faults) {
    const std::string path = folder_.write("a.csv", text);
    EXPECT_THAT(refusalOf([&] { SeriesSource source(path); }), StartsWith(path + ": " + fault));
  }
}

}  // namespace
}  // namespace veyla
