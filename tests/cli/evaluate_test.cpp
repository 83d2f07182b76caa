#include "tests/cli/program.h"

namespace veyla {
namespace {

constexpr const char* head = "time,heartrate,spo2\n";

using EvaluateTest = Program;

TEST_F(EvaluateTest, ErrorsAreThoseAgainstTheReference) {
  // Windows begin at 0 and at 20 s. The rates are bins of the spectrum: 60.645 and 79.980.
  done("synth finger.csv --bpm 60 --seconds 63");
  changed("made-60.csv", "$1,3,3,3", 26, 29);
  done("synth finger.csv --bpm 80 --seconds 63");
  changed("made-80.csv", "$1,3,3,3", 20);
  // The rows at 30 and 34 s speak for 3 seconds, the longest that one does.
  write("made-60.reference.csv", std::string(head) + "10,64,97\n30,50,\n31,50,\n34,62,\n70,1,1\n");
  write("made-80.reference.csv", "time,heartrate,spo2\r\n10,100,90\r\n");
  write("more.csv", contentsOf(file("finger.csv")));
  const auto tableOf = [&](const char* options, int status, const char* complaint) {
    const Result result = run(std::string("evaluate . --only both ") + options);
    EXPECT_EQ(result.status, status);
    EXPECT_THAT(result.error, StartsWith(complaint));
    EXPECT_THAT(result.error, EndsWith("veyla: ./finger.csv (and 1 more): passed over; it has no "
                                       "NAME.reference.csv beside it\n"));
    return std::regex_replace(result.out, std::regex(" +"), " ");
  };
  const std::string table = tableOf("--windows w.csv --plots plots", 0, "");
  EXPECT_EQ(tableOf("--windows /dev/full", 4, "veyla: /dev/full: the disk is full"), table);
  EXPECT_EQ(table,
            "recording windows finished time 90th MAE median MAPE >5 >10 unsure MAE* >5* >10* bias "
            "per time lag MAE SpO2 RMSE\n"
            "made-60 2 2 17.9 s 19.3 s 5.00 5.00 8.8% 50.0% 0.0% 50.0% 3.36 0.0% 0.0% 1.64 4.43 "
            "10 s 1.36 0.2\n"
            "made-80 2 1 16.3 s 16.3 s 20.02 20.02 20.0% 100.0% 100.0% 0.0% 20.02 100.0% 100.0% "
            "-20.02 20.02 0 s 20.02 6.9\n"
            "all made 4 3 16.3 s 18.9 s 10.01 6.64 12.5% 66.7% 33.3% 33.3% 11.69 50.0% 50.0% "
            "-5.58 9.63 10 s 1.36 4.9\n"
            "all 4 3 16.3 s 18.9 s 10.01 6.64 12.5% 66.7% 33.3% 33.3% 11.69 50.0% 50.0% "
            "-5.58 9.63 10 s 1.36 4.9\n");
  EXPECT_EQ(contentsOf(file("w.csv")),
            "recording,start,outcome,seconds,heartrate,referenceHeartrate,referencePerTime,spo2,"
            "referenceSpo2,clarity,unsure\n"
            "made-60,0,finished,16.267,60.645,64.000,64.000,96.780,97.000,0.991,0\n"
            "made-60,20,finished,19.600,60.645,54.000,55.143,96.926,,0.005,1\n"
            "made-80,0,finished,16.267,79.980,100.000,100.000,96.919,90.000,0.982,0\n"
            "made-80,20,endOfInput,39.933,,,,,,,\n");
  EXPECT_EQ(names("plots"), (std::set<std::string>{"bland-altman.png", "error-over-rate.png"}));
  EXPECT_NE(contentsOf(file("plots/bland-altman.png")),
            contentsOf(file("plots/error-over-rate.png")));

  for (const int columns : {40, 60}) {
    const std::string out = onTerminal("evaluate .", columns).out;
    const std::size_t begin = out.rfind("\x1b[2K");
    EXPECT_LE(widestLine(out.substr(begin, out.find("veyla: ") - begin)), columns);
  }

  const Json list = json("evaluate .");
  EXPECT_EQ(list[0], Json::parse(R"({"name": "made-60", "kind": "recording", "windows": 2,
      "finished": 2, "percentUnfinished": 0.0, "medianSeconds": 16.1, "percentUnsure": 50.0,
      "ninetiethPercentileSeconds": 18.9, "meanAbsoluteError": 5.0, "medianAbsoluteError": 5.0,
      "meanAbsolutePercentageError": 8.773804, "percentOver5": 50.0, "percentOver10": 0.0,
      "meanAbsoluteErrorOfSure": 3.355469, "percentOver5OfSure": 0.0, "percentOver10OfSure": 0.0,
      "bias": 1.644531, "meanAbsoluteErrorPerTime": 4.428571, "lagSeconds": 10.0,
      "meanAbsoluteErrorAtLag": 1.355469, "spo2RootMeanSquareError": null})"));
  EXPECT_EQ(list[1]["percentUnfinished"], 50);
  EXPECT_EQ(list[2]["kind"], "set");
  EXPECT_EQ(json("evaluate . --jobs 1"), list);
  for (const char* end : {".csv", ".reference.csv"}) {
    std::filesystem::rename(file("made-80") + end, file("made-8\xff") + end);
  }
  EXPECT_EQ(json("evaluate .")[1]["name"], "made-8\uFFFD");
}

TEST_F(EvaluateTest, WhatIsMissingOrBrokenIsNamed) {
  const auto refused = [&](const char* part) { expectRefused(run("evaluate ."), 3, part); };
  refused("holds no NAME.reference.csv");
  write("a.reference.csv", std::string(head) + "0,72,97\n");
  refused("a.reference.csv: there is no recording a.* beside it");
  done("synth a.csv --seconds 5");
  refused("no recording is as long as a window of 42 s");
  for (const char* row : {"x,72,97", "1,abc,97", "1,nan,97", "1,0,97", "5,72,97\n4,72,97"}) {
    write("a.reference.csv", std::string(head) + "0,72,97\n" + row + "\n");
    refused("a.reference.csv: line ");
  }
  write("a.reference.csv", head);
  refused("a.reference.csv: holds no value");
  std::filesystem::rename(file("a.reference.csv"), file("b.reference.csv"));
  mkfifo(file("a.reference.csv").c_str(), 0600);
  refused("a.reference.csv: not a regular file");
  std::filesystem::rename(file("b.reference.csv"), file("a.reference.csv"));
  write("a.mp4", "");
  refused(" lie beside it; leave one there");
}

TEST_F(EvaluateTest, ABrokenRecordingIsToldAndTheOthersAreMeasured) {
  for (const std::string name : {"a", "b"}) {
    write(name + ".reference.csv", std::string(head) + "25,72,97\n");
    write(name + ".mp4", "no video");
  }
  expectRefused(run("evaluate ."), 3, "(1 more are as bad)");
  std::filesystem::remove(file("b.mp4"));
  done("synth b.csv --seconds 45");
  // A reference that says nothing of the window leaves nothing to plot, and the rest as it is.
  const Result bare = run("evaluate . --plots plots");
  EXPECT_EQ(bare.status, 3);
  EXPECT_THAT(bare.out, ContainsRegex("\nb +1 +1 .* -- +-- +-- +-- +-- +-- +-- +-- +--\n"))
      << "rows that come later say nothing";
  EXPECT_THAT(bare.error, MatchesRegex("veyla: --plots: no window has both .*\nveyla: .*a.mp4: .*; "
                                       "left out\n"));
}

TEST_F(EvaluateTest, RecordedFingersAreMeasuredAsWellAsIsClaimed) {
  if (!std::filesystem::exists(VEYLA_RECORDINGS_FOLDER)) GTEST_SKIP() << "no recordings here";
  const Json list = json("evaluate --every 5 '" VEYLA_RECORDINGS_FOLDER "'");
  const Json all = list.back();
  int sets = 0;
  for (const Json& row : list) {
    if (row["name"] != "all resting" && row["name"] != "all hypoxia") continue;
    ++sets;
    EXPECT_LE(row["meanAbsoluteError"].get<double>(), 1.6) << row;
    EXPECT_LE(row["medianSeconds"].get<double>(), 16.5) << row;
    EXPECT_GE(row["finished"].get<double>(), 0.96 * row["windows"].get<double>()) << row;
    EXPECT_LE(row["percentOver5"].get<double>(), 5) << row;
    EXPECT_LE(row["percentOver10"].get<double>(), 0.5) << row;
  }
  EXPECT_EQ(sets, 2);
  EXPECT_GT(all["percentUnsure"].get<double>(), 1) << all;
  EXPECT_LE(all["percentUnsure"].get<double>(), 5) << all;
  EXPECT_LE(all["percentOver5OfSure"].get<double>(), 3.5) << all;
  EXPECT_LE(all["percentOver10OfSure"].get<double>(), 0.3) << all;
}

}  // namespace
}  // namespace veyla
