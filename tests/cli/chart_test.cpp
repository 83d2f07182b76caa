#include <ctime>

#include "tests/cli/program.h"

namespace veyla {
namespace {

class ChartTest : public Program {
 protected:
  std::string chart(const std::string& more = {}) const { return "chart --data data " + more; }
  void demoHistory(const char* days = "30") const {
    done(std::string("demo-history --data data --days ") + days);
  }
};

TEST_F(ChartTest, PicturesAreWrittenByTheirEndingForEveryPeriodAndLabel) {
  demoHistory("200");
  for (const auto& entry : json("history --data data")) {
    EXPECT_LE(entry["labels"].size(), 2U) << "of one activity";
  }
  std::set<std::string> pictures;
  for (const std::string choice : {"--period week", "--period month", "--period 3months",
                                   "--period all", "--label 'training (AFTER)' --period all"}) {
    EXPECT_EQ(done(chart("-o picture.SVG " + choice)), "");
    pictures.insert(contentsOf(file("picture.SVG")));
  }
  EXPECT_EQ(pictures.size(), 5U);
  EXPECT_THAT(contentsOf(file("picture.SVG")), HasSubstr("All – Training (After)"));
  done(chart("-o picture.png"));
  EXPECT_THAT(contentsOf(file("picture.png")), HasSubstr("PNG"));
  // Languages with the same digits in the same order, whose letters these fonts lack.
  environment["FONTCONFIG_FILE"] =
      write("fonts.conf", "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir></fontconfig>");
  std::set<std::string> inDigits;
  for (const char* language : {"th_TH.UTF-8", "hi_IN.UTF-8"}) {
    environment["LC_ALL"] = language;
    const Result told = run(chart("-o picture.png"));
    EXPECT_THAT(told.error, StartsWith("veyla: no font here has the letters of this language"));
    EXPECT_EQ(linesOf(told.error).size(), 1U);
    inDigits.insert(contentsOf(file("picture.png")));
  }
  EXPECT_EQ(inDigits.size(), 1U);
}

TEST_F(ChartTest, WithoutAFileTheChartsAreDrawnInTheTerminal) {
  demoHistory();
  const std::string plain = done(chart());
  EXPECT_THAT(plain, StartsWith("Week\n\n*●* heartrate (data points are averaged for each day)\n"));
  EXPECT_THAT(plain, AllOf(HasSubstr("*●* spo2 (data points are averaged for each day)"),
                           HasSubstr(" 150\n"), Not(HasSubstr("\x1b"))));
  EXPECT_LE(widestLine(plain), 80);
  environment["LC_ALL"] = "C";
  const std::string ascii = done(chart("--period month --label Resting"));
  EXPECT_THAT(ascii, StartsWith("Month - Resting\n\n*o* heartrate"));
  EXPECT_TRUE(isAscii(ascii)) << ascii;
  environment["LC_ALL"] = "C.UTF-8";
  for (const int columns : {20, 40, 60, 200}) {
    const Result drawn = onTerminal(chart("--period 3months"), columns);
    EXPECT_EQ(drawn.status, 0);
    EXPECT_THAT(drawn.out, AllOf(HasSubstr("\x1b[1;31m-●- \x1b[0mheartrate"),
                                 HasSubstr("\x1b[1;34m-●- \x1b[0mspo2")));
    EXPECT_LE(widestLine(drawn.out), std::max(columns, 40));
    EXPECT_GT(widestLine(drawn.out), columns - 4);
  }
  environment["NO_COLOR"] = "1";
  EXPECT_THAT(onTerminal(chart(), 60).out, Not(HasSubstr("\x1b")));
}

TEST_F(ChartTest, APictureIsWholeOrTheOldOneStays) {
  demoHistory();
  write("picture.png", "old");
  const auto refused = [&](const char* insteadOfDrawing, const char* part) {
    provide("gnuplot", insteadOfDrawing);
    expectRefused(run(chart("-o picture.png")), 4, part);
  };
  refused("printf 'set terminal x\\n^\\nline 3: no such terminal\\n' >&2; exit 1",
          "gnuplot: line 3: no such terminal; check it with gnuplot --version");
  refused("head -c 3000 /dev/zero", "gnuplot: its picture is not whole");
  refused("kill -9 $$", "gnuplot: it broke off");
  environment["PATH"] = file("nothing");
  expectRefused(run(chart()), 4, "gnuplot: not found; install it: apt-get install gnuplot-nox");
  EXPECT_EQ(contentsOf(file("picture.png")), "old");
  EXPECT_EQ(names(), (std::set<std::string>{"bin", "data", "picture.png"}));
}

TEST_F(ChartTest, WhatIsNotDrawnIsToldAndTheRestDrawn) {
  const auto now = static_cast<double>(std::time(nullptr));
  keep(Value::Array{Value::Dictionary{{"hr", "72"}}, entry(0, 89, now - 86400),
                    entry(151, 89, now)});
  const Result drawn = run(chart());
  EXPECT_EQ(drawn.status, 3);
  EXPECT_THAT(drawn.out, HasSubstr("*●* heartrate"));
  EXPECT_EQ(drawn.error,
            "veyla: data/veyla.db: entry 3 of the history is left out: its \"hr\" is no number; "
            "delete it with veyla history delete 3\n"
            "veyla: 1 heart rate lies outside 50 to 150 and is not drawn\n"
            "veyla: 2 SpO2 values lie outside 90 to 100 and are not drawn\n");
}

TEST_F(ChartTest, RandomEntriesNeverMixWithAHistory) {
  EXPECT_THAT(done("demo-history --days 3"), HasSubstr("in " + file("home/veyla-demo")));
  EXPECT_EQ(names("home"), std::set<std::string>{"veyla-demo"});
  const std::string store = contentsOf(file("home/veyla-demo/veyla.db"));
  expectRefused(run("demo-history"), 2, "veyla-demo/veyla.db has a history already");
  EXPECT_EQ(contentsOf(file("home/veyla-demo/veyla.db")), store);
  std::filesystem::create_directory(file("letters"));
  write("letters/letter", "");
  expectRefused(run("demo-history --data letters"), 2, "letters holds other things");
  EXPECT_EQ(names("letters"), std::set<std::string>{"letter"});
}

}  // namespace
}  // namespace veyla
