#include <algorithm>
#include <array>
#include <ctime>
#include <iomanip>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Json = nlohmann::json;

/// The widest that a value may lie off: a bin of the spectrum.
constexpr double bin = 0.88;

class MeasureTest : public Program {
 protected:
  /// Milliseconds, red, green and blue; 30 rows are a second.
  using Row = std::array<double, 4>;
  using Rows = std::vector<Row>;

  /// 40 seconds of a finger.
  Rows finger(const char* spo2 = "97") const {
    done({"synth", "finger.csv", "--seconds", "40", "--spo2", spo2});
    auto lines = linesOf(contentsOf(file("finger.csv")));
    Rows rows;
    for (std::size_t i = 1; i < lines.size(); ++i) {
      std::replace(lines[i].begin(), lines[i].end(), ',', ' ');
      std::istringstream fields(lines[i]);
      for (double& field : rows.emplace_back()) fields >> field;
    }
    return rows;
  }
  static Rows coloured(Rows rows, double from, double to, double colour) {
    for (Row& row : rows) {
      if (row[0] >= 1000 * from && row[0] < 1000 * to) row = {row[0], colour, colour, colour};
    }
    return rows;
  }
  /// Writes them as a series.
  std::string series(const Rows& rows) const {
    std::ostringstream text;
    text << "time,R,G,B\n" << std::setprecision(12);
    for (const auto& [time, red, green, blue] : rows) {
      text << time << ',' << red << ',' << green << ',' << blue << '\n';
    }
    return write("series.csv", text.str());
  }
  Json reportOf(const Rows& rows, Arguments options = {}, int status = 0) const {
    options.insert(options.begin(), {"measure", "--no-save", series(rows)});
    return json(options, status);
  }
  std::string textOf(const Rows& rows) const { return run({"measure", series(rows)}).out; }
};

TEST_F(MeasureTest, TheFingertipIsMeasuredAndReportedAlikeAtEveryRun) {
  const Result measured = run({"measure", "--no-save", "--json"});
  EXPECT_EQ(run({"measure", "--no-save", "--json"}).out, measured.out);
  EXPECT_EQ(linesOf(measured.out).size(), 1U);
  EXPECT_EQ(measured.out.back(), '\n');
  Json report = Json::parse(measured.out);
  EXPECT_NEAR(report["heartrate"].get<double>(), 72, bin);
  EXPECT_NEAR(report["spo2"].get<double>(), 97, 0.5);
  EXPECT_GT(report["clarity"].get<double>(), 0.8);
  for (const char* each : {"heartrate", "spo2", "clarity"}) report.erase(each);
  EXPECT_EQ(report, Json::parse(R"({"outcome": "finished", "doubts": [], "seconds": 16.267,
      "finger": {"noFinger": 0.0, "tooBright": 0.0, "moving": 0.0, "weak": 0.0, "good": 16.3},
      "estimates": {"heartrate": {"accepted": 10, "rejected": 8, "low": 0, "none": 0},
                    "spo2": {"accepted": 20, "rejected": 0, "low": 0, "none": 0}},
      "frames": 275, "framedrops": 0, "device": "iphone6s"})"));
  const std::string text =
      "Heart rate   71 beats per minute\nSpO2         97 %\n"
      "Finished after 16.3 s of the recording.\n";
  EXPECT_EQ(done({"measure", "--no-save"}), text);
  EXPECT_THAT(namesIn(), IsEmpty());
  EXPECT_EQ(done({"measure"}), text + "Saved in " + file("home/veyla") + ".\n");
}

TEST_F(MeasureTest, OneValueAndAnotherPhoneCanBeAskedFor) {
  const Json heartrate = json({"measure", "--no-save", "--only", "heartrate"});
  EXPECT_NEAR(heartrate["heartrate"].get<double>(), 72, bin);
  EXPECT_TRUE(heartrate["spo2"].is_null());
  const Json spo2 = json({"measure", "--no-save", "--only", "spo2"});
  EXPECT_TRUE(spo2["heartrate"].is_null());
  EXPECT_TRUE(spo2["spo2"].is_number());
  EXPECT_EQ(json({"measure", "--no-save", "--device", "iPhone3,1"})["device"], "iphone4");
}

TEST_F(MeasureTest, EveryFinishedMeasurementIsKeptWithTheDateAtWhichItEnded) {
  for (const char* value : {"heartrate", "spo2"}) done({"health", "allow", value});
  // A finger that comes after two minutes and a half.
  Rows late = finger();
  for (Row& row : late) row[0] += 150000;
  for (int time = 149950; time >= 0; time -= 50)
    late.insert(late.begin(), {time + 0.0, 90, 60, 30});
  series(late);

  // In the form that a date begins with everywhere.
  const auto now = [] {
    const std::time_t seconds = std::time(nullptr);
    std::ostringstream text;
    text << std::put_time(std::gmtime(&seconds), "%FT%T");
    return text.str();
  };
  const std::string begin = now();
  std::vector<Json> reports;
  for (const char* input : {"finger.csv", "series.csv", "finger.csv", "finger.csv"}) {
    reports.push_back(json({"measure", input, "--log", "log"}));
  }
  const std::string end = now();
  EXPECT_GT(reports[1]["seconds"], 160);

  auto dates = linesOf(contentsOf(file("log")));
  for (const std::string& record : linesOf(done({"health", "export", "-o", "-"}))) {
    dates.push_back(Json::parse(record)["effectiveDateTime"]);
  }
  Json entries = json({"history"});
  std::reverse(entries.begin(), entries.end());
  ASSERT_EQ(entries.size(), reports.size());
  std::string before;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i]["heartrate"], reports[i]["heartrate"]);
    EXPECT_EQ(entries[i]["spo2"], reports[i]["spo2"]);
    EXPECT_GT(entries[i]["date"], std::exchange(before, dates.emplace_back(entries[i]["date"])));
  }
  EXPECT_GT(dates.size(), 3 * reports.size());
  for (const std::string& date : dates) {
    ASSERT_GE(date.substr(0, begin.size()), begin);
    ASSERT_LE(date.substr(0, end.size()), end);
  }
}

TEST_F(MeasureTest, WhatEndsEarlyIsToldWithItsReasonAndNotKept) {
  const Json few = json({"measure", "--duration", "8"}, 1);
  EXPECT_EQ(few["outcome"], "endOfInput");
  EXPECT_TRUE(few["heartrate"].is_null());
  EXPECT_THAT(run({"measure", "--duration", "8"}).out,
              AllOf(HasSubstr("\n--duration 8 ended it: "), HasSubstr("\nNothing saved")));
  EXPECT_THAT(run({"measure", "--start", "100"}).out,
              AllOf(HasSubstr("needs 2 seconds of countdown"), HasSubstr("\n--start 100 left")));
  EXPECT_THAT(run({"measure", "--no-save", "--start", "30"}).out,
              AllOf(HasSubstr("\n--start 30 left"), Not(HasSubstr("Nothing saved"))));
  EXPECT_EQ(json({"measure", "--no-save", "--start", "5", "--duration", "30"})["outcome"],
            "finished");

  const Rows low = finger("85");
  const Json report = reportOf(low, {"--only", "spo2"}, 1);
  EXPECT_EQ(report["outcome"], "lowSignal") << report;
  EXPECT_EQ(report["estimates"]["spo2"]["low"], 60);
  EXPECT_THAT(run({"measure", "series.csv", "--only", "spo2"}).out,
              HasSubstr("\nNothing saved: a result takes oxygen values of 93 % or more.\n"));
  EXPECT_THAT(textOf(low), AllOf(HasSubstr("\nNo oxygen value: this camera's colours give none"),
                                 HasSubstr("\nNothing saved"),
                                 HasSubstr("--only heartrate saves the 71 beats per minute"),
                                 Not(HasSubstr("START")), Not(HasSubstr("remove your finger"))));
  // What may not be relied on, nobody is advised to save.
  EXPECT_THAT(textOf(coloured(low, 4, 7, 3)),
              AllOf(HasSubstr("Heart rate   unsure: no finger"), HasSubstr("\nNothing saved: "),
                    HasSubstr("\nNo oxygen value: this camera's colours give none"),
                    Not(HasSubstr("--only heartrate"))));
  EXPECT_EQ(json({"history"}), Json::array());
}

TEST_F(MeasureTest, TraceTellsEveryEstimateAndTheLogWhatTheApplicationDid) {
  const Json report = json({"measure", "--no-save", "--trace", "trace.csv", "--log", "log"});
  const std::string trace = contentsOf(file("trace.csv"));
  for (const char* value : {"heartrate", "spo2"}) {
    for (const auto& [verdict, count] : report["estimates"][value].items()) {
      EXPECT_EQ(countOf(std::string(",") + value + "," + verdict + ",", trace), count);
    }
  }
  const auto rows = linesOf(trace);
  EXPECT_EQ(rows.front(),
            "seconds,frame,value,verdict,estimate,index,diffPercent,min,max,ACred,DCred,ACgreen,"
            "DCgreen,ACblue,DCblue,oldSpo2");
  EXPECT_THAT(rows, Contains(testing::StartsWith("16.267,275,spo2,accepted,96.602")));
  double least = 0;
  double most = 0;
  double alternating = 0;
  double steady = 0;
  for (const std::string& row : rows) {
    std::sscanf(row.c_str(), "%*f,%*d,heartrate,%*[a-z],%*f,%*d,%*f,%lf,%lf,", &least, &most);
    std::sscanf(row.c_str(), "%*f,%*d,spo2,%*[a-z],%*f,,,,,%lf,%lf,", &alternating, &steady);
  }
  EXPECT_LT(least, most);
  EXPECT_NEAR(alternating, 2, 1);
  EXPECT_NEAR(steady, 180, 5);
  const std::string log = contentsOf(file("log"));
  for (const char* line : {"Z 0.020 Tapped Begin\n", " Done HR\n", " Done Both\n"}) {
    EXPECT_THAT(log, HasSubstr(line));
  }
}

TEST_F(MeasureTest, SyntheticFingertipsGiveTheirHeartRateAsVideoAndAsSeries) {
  struct Case {
    int bpm;
    const char* fps;
    const char* ending;
  };
  // Exactly 90 would show every estimate, one each 5th frame, the same phase of its beats.
  for (const auto& [bpm, fps, ending] :
       std::vector<Case>{{48, "15", ".y4m"}, {75, "25", ".mkv"}, {150, "60", ".mkv"}}) {
    const std::string video = std::to_string(bpm) + "-" + fps + ending;
    SCOPED_TRACE(video);
    done({"synth", video, "--bpm", std::to_string(bpm), "--fps", fps, "--seconds", "40", "--size",
          "192x144"});
    EXPECT_NEAR(json({"measure", "--no-save", video})["heartrate"].get<double>(), bpm, bin);
    // Luma is made of pixels, and left alone in a series that has it already.
    for (const char* device : {"iPhone8,1", "iPhone3,1"}) {
      done({"series", video, "-o", "series.csv", "--device", device});
      EXPECT_EQ(json({"measure", "--no-save", "series.csv", "--device", device}),
                json({"measure", "--no-save", video, "--device", device}));
    }
  }
  const auto bytesOf = [&](const Arguments& options) {
    Arguments arguments{"synth", "other.csv", "--seconds", "20"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    done(arguments);
    return contentsOf(file("other.csv"));
  };
  // With less noise than the seed could hide in.
  std::set<std::string> different{bytesOf({"--noise", "0"}),
                                  bytesOf({"--noise", "0", "--seed", "2"}),
                                  bytesOf({"--noise", "0", "--motion", "9"})};
  EXPECT_EQ(different.size(), 3U);
}

TEST_F(MeasureTest, AStallIsFilledOrTakesAsMuchLongerAndLeavesTheValues) {
  const Rows rows = finger();
  const Json whole = reportOf(rows);
  struct Case {
    double stall;
    int drops;
  };
  for (const auto& [stall, drops] : std::vector<Case>{{0.2, 0}, {1, 10}, {3, 40}}) {
    SCOPED_TRACE(stall);
    Rows stalled = rows;
    std::erase_if(stalled, [stall = stall](const Row& row) {
      return row[0] > 8000 && row[0] < 8000 + 1000 * stall;
    });
    const Json report = reportOf(stalled);
    EXPECT_EQ(report["framedrops"], drops);
    EXPECT_EQ(report["frames"], whole["frames"]);
    EXPECT_NEAR(report["seconds"].get<double>(), whole["seconds"].get<double>() + drops / 15.0,
                0.001);
    // The 8 seconds of an estimate hold the leap of the phase while it lasts.
    EXPECT_NEAR(report["heartrate"].get<double>(), 72, 2);
    EXPECT_NEAR(report["spo2"].get<double>(), whole["spo2"].get<double>(), 0.2);
  }
}

TEST_F(MeasureTest, WhatIsWrongWithAFingerIsToldWithItsSecondsAndWhatIsUnsureWithItsReason) {
  const Rows good = finger();
  const auto with = [&](std::size_t channel, double value) {
    Rows rows = good;
    for (Row& row : rows) row[channel] = value;
    return rows;
  };
  const Rows blueless = with(3, 2);
  EXPECT_EQ(reportOf(blueless)["doubts"], Json{"noBlue"});
  EXPECT_THAT(textOf(blueless), HasSubstr("SpO2         unsure: the camera saw next to no blue"));
  EXPECT_THAT(reportOf(with(1, 255), {"--device", "iPhone4,1", "--only", "spo2"})["doubts"],
              Contains("noRedPulse"));

  const Rows lifted = coloured(good, 8, 11, 3);
  const Json report = reportOf(lifted);
  EXPECT_NEAR(report["finger"]["noFinger"].get<double>(), 3, 0.5);
  EXPECT_EQ(report["doubts"], Json::parse(R"(["noFinger", "unclearPulse"])")) << "each once";
  EXPECT_THAT(textOf(lifted), HasSubstr("Heart rate   unsure: no finger from 8 to 11 s.\n"));
  EXPECT_THAT(textOf(coloured(lifted, 13, 16, 3)), HasSubstr("no finger from 8 to 16 s.\n"))
      << "one stretch";
  EXPECT_THAT(textOf(coloured(good, 0, 41, 0)),
              HasSubstr("\nNo finger from 2 to 40 s: the picture is black.\n"));
  // What the finger explains gets no other advice.
  EXPECT_THAT(textOf(with(1, 255)), AllOf(HasSubstr("\nToo bright from 2 to 40 s: expose less"),
                                          Not(HasSubstr("--only heartrate"))));
}

}  // namespace
}  // namespace veyla
