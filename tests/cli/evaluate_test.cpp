#include <cmath>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using Json = nlohmann::json;

constexpr const char* head = "time,heartrate,spo2\n";

class EvaluateTest : public Program {
 protected:
  static Json rowOf(const Json& list, const std::string& name) {
    for (const Json& row : list) {
      if (row["name"] == name) return row;
    }
    ADD_FAILURE() << "no row " << name;
    return {};
  }
  /// A finger of 63 seconds that is away between two of them.
  void record(const std::string& name, const char* bpm, int from = 0, int to = 0) const {
    done({"synth", name, "--bpm", bpm, "--seconds", "63"});
    const auto rows = linesOf(contentsOf(file(name)));
    std::string text;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const double second = i == 0 ? -1 : std::stod(rows[i]) / 1000;
      const bool isAway = second >= from && second < to;
      text += (isAway ? rows[i].substr(0, rows[i].find(',')) + ",3,3,3" : rows[i]) + '\n';
    }
    write(name, text);
  }
};

TEST_F(EvaluateTest, ErrorsAreThoseAgainstTheReference) {
  // Windows begin at 0 and at 20 s. The rates are bins of the spectrum: 60.645 and 79.980.
  record("made-60.csv", "60", 26, 29);
  record("made-80.csv", "80", 20, 63);
  write("made-60.reference.csv", std::string(head) + "10,64,97\n30,50,\n70,1,1\n");
  write("made-80.reference.csv", "time,heartrate,spo2\r\n10,100,90\r\n");
  std::string table;
  const std::string printed =
      done({"evaluate", ".", "--only", "both", "--windows", "w.csv", "--plots", "plots"});
  std::unique_copy(printed.begin(), printed.end(), std::back_inserter(table),
                   [](char a, char b) { return a == ' ' && b == ' '; });
  EXPECT_EQ(table,
            "recording windows finished time 90th MAE median MAPE >5 >10 unsure MAE* >5* >10* bias "
            "per time lag MAE SpO2 RMSE\n"
            "made-60 2 2 17.9 s 19.3 s 7.00 7.00 13.3% 50.0% 50.0% 50.0% 3.36 0.0% 0.0% 3.64 7.00 "
            "0 s 7.00 0.2\n"
            "made-80 2 1 16.3 s 16.3 s 20.02 20.02 20.0% 100.0% 100.0% 0.0% 20.02 100.0% 100.0% "
            "-20.02 20.02 0 s 20.02 6.9\n"
            "all made 4 3 16.3 s 18.9 s 11.34 10.64 15.5% 66.7% 66.7% 33.3% 11.69 50.0% 50.0% "
            "-4.24 11.34 16 s 10.64 4.9\n"
            "all 4 3 16.3 s 18.9 s 11.34 10.64 15.5% 66.7% 66.7% 33.3% 11.69 50.0% 50.0% "
            "-4.24 11.34 16 s 10.64 4.9\n");
  EXPECT_EQ(contentsOf(file("w.csv")),
            "recording,start,outcome,seconds,heartrate,referenceHeartrate,referencePerTime,spo2,"
            "referenceSpo2,clarity,unsure\n"
            "made-60,0,finished,16.267,60.645,64.000,64.000,96.780,97.000,0.991,0\n"
            "made-60,20,finished,19.600,60.645,50.000,50.000,96.926,,0.005,1\n"
            "made-80,0,finished,16.267,79.980,100.000,100.000,96.919,90.000,0.982,0\n"
            "made-80,20,endOfInput,39.933,,,,,,,\n");
  EXPECT_EQ(namesIn("plots"), (std::set<std::string>{"bland-altman.png", "error-over-rate.png"}));
  EXPECT_NE(contentsOf(file("plots/bland-altman.png")),
            contentsOf(file("plots/error-over-rate.png")));

  const Json list = json({"evaluate", "."});
  EXPECT_EQ(list[0], Json::parse(R"({"name": "made-60", "kind": "recording", "windows": 2,
      "finished": 2, "percentUnfinished": 0.0, "medianSeconds": 16.1, "percentUnsure": 50.0,
      "ninetiethPercentileSeconds": 18.9, "meanAbsoluteError": 7.0, "medianAbsoluteError": 7.0,
      "meanAbsolutePercentageError": 13.26599, "percentOver5": 50.0, "percentOver10": 50.0,
      "meanAbsoluteErrorOfSure": 3.355469, "percentOver5OfSure": 0.0, "percentOver10OfSure": 0.0,
      "bias": 3.644531, "meanAbsoluteErrorPerTime": 7.0, "lagSeconds": 0.0,
      "meanAbsoluteErrorAtLag": 7.0, "spo2RootMeanSquareError": null})"));
  EXPECT_EQ(list[1]["percentUnfinished"], 50);
  EXPECT_EQ(list[2]["kind"], "set");
  EXPECT_EQ(json({"evaluate", ".", "--jobs", "1"}), list);
}

TEST_F(EvaluateTest, BothMeansAndTheLagAreTold) {
  // A row per second at 60, then two a second at 66.
  done({"synth", "a.csv", "--bpm", "60", "--seconds", "63"});
  std::string rows = head;
  for (int half = 0; half < 126; ++half) {
    const bool quick = half >= 20;
    if (!quick && half % 2 == 1) continue;
    rows += std::to_string(half / 2.0) + (quick ? ",66,\n" : ",60,\n");
  }
  write("a.reference.csv", rows);
  const Json row = rowOf(json({"evaluate", ".", "--every", "60", "--windows", "w.csv"}), "a");
  ASSERT_EQ(row["windows"], 1);
  double seconds = 0;
  double heartrate = 0;
  double reference = 0;
  double perTime = 0;
  ASSERT_EQ(
      std::sscanf(linesOf(contentsOf(file("w.csv"))).back().c_str(),
                  "a,0,finished,%lf,%lf,%lf,%lf,,", &seconds, &heartrate, &reference, &perTime),
      4);
  // From 2 s to the finish there are 8 rows of 60 and two rows of 66 a second after them.
  const double quick = std::floor((2 + seconds - 10) * 2) + 1;
  EXPECT_NEAR(reference, (8 * 60 + quick * 66) / (8 + quick), 0.001);
  EXPECT_NEAR(perTime, (8 * 60 + quick * 66 / 2) / (8 + quick / 2), 0.5);
  EXPECT_LT(perTime, reference - 0.5);
  EXPECT_NEAR(row["meanAbsoluteErrorPerTime"].get<double>(), std::abs(heartrate - perTime), 0.001);
  EXPECT_NEAR(row["bias"].get<double>(), heartrate - reference, 0.001);
  // No later row is nearer to what was measured.
  EXPECT_EQ(row["lagSeconds"], 0);
}

TEST_F(EvaluateTest, WhatIsMissingOrBrokenIsNamed) {
  const auto refused = [&](const char* part) { expectRefused(run({"evaluate", "."}), 3, part); };
  expectRefused(run({"evaluate", "absent"}), 3, "absent: no such folder; check the name");
  expectRefused(run({"evaluate", write("file", "")}), 3, "file: a file; name the folder");
  refused("holds no NAME.reference.csv");
  write("a.reference.csv", std::string(head) + "0,72,97\n");
  refused("a.reference.csv: there is no recording a.* beside it");
  expectRefused(run({"evaluate", ".", "--windows", "absent/w.csv"}), 4, "absent/w.csv");
  done({"synth", "a.csv", "--seconds", "5"});
  refused("no recording is as long as a window of 42 s");
  for (const char* row : {"x,72,97", "1,abc,97", "1,nan,97", "1,0,97", "5,72,97\n4,72,97"}) {
    write("a.reference.csv", std::string(head) + "0,72,97\n" + row + "\n");
    refused("a.reference.csv: line ");
  }
  write("a.reference.csv", head);
  refused("a.reference.csv: holds no value");
  write("a.mp4", "");
  refused(" lie beside it; leave one there");
}

TEST_F(EvaluateTest, ABrokenRecordingIsToldAndTheOthersAreMeasured) {
  for (const std::string name : {"a", "b"}) {
    write(name + ".reference.csv", std::string(head) + "25,72,97\n");
    write(name + ".mp4", "no video");
  }
  expectRefused(run({"evaluate", "."}), 3, "(1 more are as bad)");
  std::filesystem::remove(file("b.mp4"));
  done({"synth", "b.csv", "--seconds", "45"});
  // A reference that says nothing of the window leaves nothing to plot, and the rest as it is.
  const Result bare = run({"evaluate", ".", "--plots", "plots"});
  EXPECT_EQ(bare.status, 3);
  EXPECT_THAT(bare.out, ContainsRegex("\nb +1 +1 .* -- +-- +-- +-- +-- +-- +-- +-- +--\n"))
      << "rows that come later say nothing";
  EXPECT_THAT(bare.error,
              testing::MatchesRegex("veyla: --plots: no window has both .*\nveyla: .*a.mp4: .*; "
                                    "left out\n"));
}

TEST_F(EvaluateTest, RecordedFingersAreMeasuredAsWellAsIsClaimed) {
  if (!std::filesystem::exists(VEYLA_RECORDINGS_FOLDER)) GTEST_SKIP() << "no recordings here";
  const Json list = json({"evaluate", VEYLA_RECORDINGS_FOLDER, "--every", "5"});
  for (const char* set : {"all resting", "all hypoxia"}) {
    const Json row = rowOf(list, set);
    EXPECT_LE(row["meanAbsoluteError"].get<double>(), 1.6) << row;
    EXPECT_LE(row["medianSeconds"].get<double>(), 16.5) << row;
    EXPECT_GE(row["finished"].get<double>(), 0.96 * row["windows"].get<double>()) << row;
    EXPECT_LE(row["percentOver5"].get<double>(), 5) << row;
    EXPECT_LE(row["percentOver10"].get<double>(), 0.5) << row;
  }
  const Json all = rowOf(list, "all");
  EXPECT_GT(all["percentUnsure"].get<double>(), 1) << all;
  EXPECT_LE(all["percentUnsure"].get<double>(), 5) << all;
  EXPECT_LE(all["percentOver5OfSure"].get<double>(), 3.5) << all;
  EXPECT_LE(all["percentOver10OfSure"].get<double>(), 0.3) << all;
}

}  // namespace
}  // namespace veyla
