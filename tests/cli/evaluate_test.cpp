#include <gmock/gmock.h>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using Json = nlohmann::json;

class EvaluateTest : public Program {
 protected:
  static Json rowOf(const Json& list, const std::string& name) {
    for (const Json& row : list) {
      if (row["name"] == name) return row;
    }
    ADD_FAILURE() << "no row " << name;
    return {};
  }
};

TEST_F(EvaluateTest, ErrorsAreThoseAgainstTheReference) {
  for (const char* bpm : {"60", "80"}) {
    ASSERT_EQ(
        run({"synth", file("made-" + std::string(bpm) + ".csv"), "--bpm", bpm, "--seconds", "63"})
            .status,
        0);
  }
  // Of the windows from 0 and from 20 s, the reference knows the first one's rate alone.
  write("made-60.reference.csv", "time,heartrate,spo2\n10,64,97\n60,80,\n");
  std::string rising = "time,heartrate,spo2\r\n";
  for (int second = 0; second < 64; ++second) rising += std::to_string(second) + ",100,\r\n";
  write("made-80.reference.csv", rising);
  const Json list = json({"evaluate", folder()});
  ASSERT_TRUE(list.is_array());
  const Json sixty = rowOf(list, "made-60");
  EXPECT_EQ(sixty["kind"], "recording");
  EXPECT_EQ(sixty["windows"], 2);
  EXPECT_EQ(sixty["finished"], 2);
  EXPECT_NEAR(sixty["meanAbsoluteError"].get<double>(), 4, 0.88);
  EXPECT_EQ(sixty["percentOver5"], 0);
  const Json eighty = rowOf(list, "made-80");
  EXPECT_NEAR(eighty["meanAbsoluteError"].get<double>(), 20, 0.88);
  EXPECT_NEAR(eighty["meanAbsolutePercentageError"].get<double>(), 20, 0.88);
  EXPECT_EQ(eighty["percentOver5"], 100);
  EXPECT_EQ(rowOf(list, "all made")["windows"], 4);
  EXPECT_EQ(rowOf(list, "all made")["kind"], "set");
  EXPECT_EQ(json({"evaluate", folder(), "--jobs", "1"}), list);
}

TEST_F(EvaluateTest, BothMeansTheLagAndEveryWindowAreTold) {
  // A row per second at 60, then two a second at 66.
  ASSERT_EQ(run({"synth", file("a.csv"), "--bpm", "60", "--seconds", "63"}).status, 0);
  std::string rows = "time,heartrate,spo2\n";
  for (int half = 0; half < 126; ++half) {
    const bool quick = half >= 20;
    if (!quick && half % 2 == 1) continue;
    rows += std::to_string(half / 2.0) + (quick ? ",66,\n" : ",60,\n");
  }
  write("a.reference.csv", rows);
  const Json row =
      rowOf(json({"evaluate", folder(), "--every", "60", "--windows", file("w.csv")}), "a");
  ASSERT_EQ(row["windows"], 1);
  const std::string windows = contentsOf(file("w.csv"));
  EXPECT_EQ(windows.substr(0, windows.find('\n')),
            "recording,start,outcome,seconds,heartrate,referenceHeartrate,referencePerTime,spo2,"
            "referenceSpo2,clarity,unsure");
  double seconds = 0;
  double heartrate = 0;
  double reference = 0;
  double perTime = 0;
  ASSERT_EQ(std::sscanf(windows.c_str() + windows.find('\n') + 1, "a,0,finished,%lf,%lf,%lf,%lf,,",
                        &seconds, &heartrate, &reference, &perTime),
            4);
  // From 2 s to the finish there are 8 rows of 60 and two rows of 66 a second after them.
  const double quick = std::floor((2 + seconds - 10) * 2) + 1;
  EXPECT_NEAR(reference, (8 * 60 + quick * 66) / (8 + quick), 0.001);
  EXPECT_NEAR(perTime, (8 * 60 + quick * 66 / 2) / (8 + quick / 2), 0.5);
  EXPECT_LT(perTime, reference - 0.5);
  EXPECT_NEAR(row["meanAbsoluteError"].get<double>(), std::abs(heartrate - reference), 0.001);
  EXPECT_NEAR(row["meanAbsoluteErrorPerTime"].get<double>(), std::abs(heartrate - perTime), 0.001);
  EXPECT_NEAR(row["bias"].get<double>(), heartrate - reference, 0.001);
  // No later row is nearer to what was measured.
  EXPECT_EQ(row["lagSeconds"], 0);
  expectRefused(run({"evaluate", folder(), "--windows", file("absent/w.csv")}), 4,
                {"absent/w.csv"});
}

TEST_F(EvaluateTest, WhatIsMissingOrBrokenIsNamed) {
  expectRefused(run({"evaluate", file("absent")}), 3, {"absent: no such folder; check the name"});
  expectRefused(run({"evaluate", write("file", "")}), 3, {"file: a file; name the folder"});
  expectRefused(run({"evaluate", folder()}), 3, {"holds no NAME.reference.csv"});
  write("a.reference.csv", "time,heartrate,spo2\n0,72,97\n");
  expectRefused(run({"evaluate", folder()}), 3, {"a.reference.csv", "no recording a.*"});
  ASSERT_EQ(run({"synth", file("a.csv"), "--seconds", "5"}).status, 0);
  expectRefused(run({"evaluate", folder()}), 3, {"no recording is as long as a window of 42 s"});
  for (const char* row : {"x,72,97", "1,abc,97", "1,nan,97", "1,0,97", "5,72,97\n4,72,97"}) {
    write("a.reference.csv", std::string("time,heartrate,spo2\n0,72,97\n") + row + "\n");
    expectRefused(run({"evaluate", folder()}), 3, {"a.reference.csv: line "});
  }
  write("a.reference.csv", "time,heartrate,spo2\n");
  expectRefused(run({"evaluate", folder()}), 3, {"a.reference.csv: holds no value"});
  expectRefused(run({"evaluate", folder(), "--plots", file("p"), "--only", "spo2"}), 2,
                {"--plots: heart rates are plotted"});
  write("a.mp4", "");
  expectRefused(run({"evaluate", folder()}), 3, {"a.csv", "a.mp4", "leave one"});
}

TEST_F(EvaluateTest, ABrokenRecordingIsToldAndTheOthersAreMeasured) {
  for (const char* name : {"a", "b"}) {
    write(std::string(name) + ".reference.csv", "time,heartrate,spo2\n0,72,97\n");
    write(std::string(name) + ".mp4", "no video");
  }
  expectRefused(run({"evaluate", folder()}), 3, {"a.mp4", "(1 more are as bad)"});
  std::filesystem::remove(file("b.mp4"));
  ASSERT_EQ(run({"synth", file("b.csv"), "--seconds", "45"}).status, 0);
  const Result result = run({"evaluate", folder()});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.error, testing::MatchesRegex("veyla: .*a.mp4: .*; left out\n"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\nb +1 +1 "));
  // A reference that says nothing of the window leaves nothing to plot, and the rest as it is.
  write("b.reference.csv", "time,heartrate,spo2\n25,72,97\n");
  const Result bare = run({"evaluate", folder(), "--plots", file("plots")});
  EXPECT_EQ(bare.status, 3);
  EXPECT_THAT(bare.out, testing::ContainsRegex("\nb +1 +1 .* -- +-- +-- +-- +-- +-- +-- +-- +--\n"))
      << "rows that come later say nothing";
  EXPECT_THAT(bare.error, testing::HasSubstr("--plots: no window has both"));
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
