#include "platform/linux/series_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

#include "tests/linux/recordings.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class SeriesSourceTest : public testing::Test {
 protected:
  PlayedRecording read(const std::string& text) {
    SeriesSource source(folder_.write("a.csv", text));
    return play(source);
  }
  /// The refusal without the file's name, which it must begin with.
  std::string refusal(const std::string& text) {
    const std::string path = folder_.write("a.csv", text);
    const std::string message = refusalOf([&] { SeriesSource source(path); });
    EXPECT_THAT(message, StartsWith(path + ": "));
    EXPECT_EQ(message.find('\n'), std::string::npos);
    return message.substr(std::min(message.size(), path.size() + 2));
  }

  ScratchFolder folder_;
};

TEST_F(SeriesSourceTest, RowsBecomeFramesInSecondsFromTheFirstWithRedAsThePulse) {
  const auto played = read("time,R,G,B\n500,40.5,89.25,49\n533,41,88,48\n533,42,87,47\n");
  EXPECT_THAT(played.times, ElementsAre(0, 0.033, 0.033));
  EXPECT_THAT(played.frames, ElementsAre(FrameSample{40.5F, 89.25F, 49, 40.5F},
                                         FrameSample{41, 88, 48, 41}, FrameSample{42, 87, 47, 42}));
  EXPECT_THAT(played.remark, IsEmpty());
}

TEST_F(SeriesSourceTest, ColumnsComeInAnyOrderAndCaseWithOthersBetweenThem) {
  const auto played = read("\xEF\xBB\xBF b , HR,note,TIME,r,g\r\n3,9,thumb,0,1,2\r\n\r\n\r\n");
  EXPECT_THAT(played.frames, ElementsAre(FrameSample{1, 2, 3, 9}));
}

TEST_F(SeriesSourceTest, NumbersReadTheSameUnderEveryLocale) {
  const char* const former = std::setlocale(LC_ALL, "de_DE.UTF-8");
  const auto played = read("time,R,G,B\n0,1.5,2e1, 3.25 ");
  if (former) std::setlocale(LC_ALL, "C");
  EXPECT_THAT(played.frames, ElementsAre(FrameSample{1.5F, 20, 3.25F, 1.5F}));
}

TEST_F(SeriesSourceTest, ALastRowThatBrokeOffIsLeftOutAndRemarkedOn) {
  for (const char* rest : {"33,4", "33,4,5,", "3"}) {
    const auto played = read(std::string("time,R,G,B\n0,1,2,3\n") + rest);
    EXPECT_EQ(played.frames.size(), 1U) << rest;
    EXPECT_THAT(played.remark, AllOf(StartsWith(folder_.file("a.csv")), HasSubstr("cut off")));
  }
  EXPECT_EQ(refusal("time,R,G,B\n0,1,2,3\n33,4\n"),
            "line 3: 2 fields where the first line names 4; complete the row or take it out");
}

TEST_F(SeriesSourceTest, FaultsAreNamedByLineAndColumn) {
  EXPECT_THAT(refusal("time,R,B\n0,1,2\n"), StartsWith("line 1: column G: missing; "));
  EXPECT_THAT(refusal("time;R;G;B\n0;1;2;3\n"), EndsWith("and is \"time;R;G;B\""));
  EXPECT_THAT(refusal("time,R,G,B,r\n"), StartsWith("line 1: column R: named twice"));
  const std::string head = "time,R,G,B\n0,1,2,3\n";
  EXPECT_EQ(refusal(head + "33,red,2,3\n"),
            "line 3: column R: \"red\" is not a number; correct it or take the row out");
  EXPECT_THAT(refusal(head + "33,1,2 3,3\n"), StartsWith("line 3: column G: \"2 3\" is not a"));
  EXPECT_THAT(refusal(head + "33,1,,3\n"), StartsWith("line 3: column G: empty"));
  EXPECT_THAT(refusal(head + "33,1,2,nan\n"),
              StartsWith("line 3: column B: \"nan\" is not finite"));
  EXPECT_THAT(refusal(head + "inf,1,2,3\n"), StartsWith("line 3: column time: \"inf\" is not"));
  EXPECT_THAT(refusal(head + "33,256,2,3\n"), StartsWith("line 3: column R: \"256\" is outside"));
  EXPECT_THAT(refusal(head + "33,1,-0.5,3\n"), StartsWith("line 3: column G: \"-0.5\" is outside"));
  EXPECT_THAT(refusal(head + "-1,1,2,3\n"), StartsWith("line 3: column time: \"-1\" is before"));
  EXPECT_THAT(refusal(head + "10000,1,2,3\n20001,1,2,3\n"),
              StartsWith("line 4: column time: a step of 10.001 s from the row above; times are "
                         "milliseconds"));
  EXPECT_THAT(refusal(head + "33,1,2,3,4\n"), StartsWith("line 3: 5 fields where"));
  EXPECT_THAT(refusal(head + "\n\n33,1,2,3\n"), StartsWith("line 3: blank between rows"));
  EXPECT_THAT(refusal("time,R,G,B\n"), StartsWith("no rows"));
  EXPECT_THAT(refusal(head + std::string("3\0,\n", 4)), StartsWith("line 3: not text"));
  EXPECT_THAT(refusal("time,R,G,B\n" + std::string(100000, '7')), StartsWith("line 2: longer"));
  EXPECT_THAT(refusal(head + "33,1\x1b[31m,2,3\n"), HasSubstr("\"1?[31m\""));
}

TEST_F(SeriesSourceTest, TimesInSecondsAreRemarkedOn) {
  std::string text = "time,R,G,B\n";
  for (int i = 0; i <= 30; ++i) text += std::to_string(i / 31.0) + ",1,2,3\n";
  EXPECT_THAT(read(text).remark, HasSubstr("a.csv: all its rows lie within 0.000968 s, times are"));
  EXPECT_THAT(read(text + "1000,1,2,3\n").remark, IsEmpty());
}

TEST_F(SeriesSourceTest, LinesMayLieAnywhereAcrossTheBuffer) {
  std::string text = "time,R,G,B\n";
  constexpr int rows = 40000;
  for (int i = 0; i < rows; ++i) {
    text += std::to_string(33 * i) + "," + std::to_string(i % 251) + ".125,7,8\n";
  }
  const auto played = read(text);
  ASSERT_EQ(played.frames.size(), static_cast<std::size_t>(rows));
  for (int i = 0; i < rows; ++i) {
    ASSERT_EQ(played.frames[static_cast<std::size_t>(i)].red, static_cast<float>(i % 251 + 0.125));
  }
}

}  // namespace
}  // namespace veyla
