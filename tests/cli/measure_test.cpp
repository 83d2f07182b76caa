#include <ctime>

#include "tests/cli/program.h"

namespace veyla {
namespace {

/// The widest that a value may lie off: a bin of the spectrum.
constexpr double bin = 0.88;

class MeasureTest : public Program {
 protected:
  void makeFinger(const Arguments& options = {}) const {
    done(joined({"synth", "finger.csv", "--seconds", "40"}, options));
  }
  Json reportOf(const std::string& series, const Arguments& options = {}) const {
    return json(joined({"measure", "--no-save", series}, options));
  }
  std::string textOf(const std::string& series) const { return run({"measure", series}).out; }
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
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(done({"measure"}), text + "Saved in " + file("home/veyla") + ".\n");
}

TEST_F(MeasureTest, OneValueAndAnotherPhoneCanBeAskedFor) {
  EXPECT_TRUE(json({"measure", "--no-save", "--only", "heartrate"})["spo2"].is_null());
  EXPECT_TRUE(json({"measure", "--no-save", "--only", "spo2"})["heartrate"].is_null());
  EXPECT_EQ(json({"measure", "--no-save", "--device", "iPhone3,1"})["device"], "iphone4");
}

TEST_F(MeasureTest, EveryFinishedMeasurementIsKeptWithTheDateAtWhichItEnded) {
  for (const char* value : {"heartrate", "spo2"}) done({"health", "allow", value});
  // A finger that comes after two minutes and a half.
  done({"synth", "finger.csv", "--seconds", "190"});
  changed("late.csv", "$1,90,60,30", 0, 150);

  // In the form that a date begins with everywhere.
  const auto now = [] {
    const std::time_t seconds = std::time(nullptr);
    std::ostringstream text;
    text << std::put_time(std::gmtime(&seconds), "%FT%T");
    return text.str();
  };
  const std::string begin = now();
  std::vector<Json> reports;
  for (const char* input : {"finger.csv", "late.csv", "finger.csv", "finger.csv"}) {
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

  makeFinger({"--spo2", "85"});
  const Json report = json({"measure", "finger.csv", "--only", "spo2"}, 1);
  EXPECT_EQ(report["outcome"], "lowSignal") << report;
  EXPECT_EQ(report["estimates"]["spo2"]["low"], 60);
  EXPECT_THAT(run({"measure", "finger.csv", "--only", "spo2"}).out,
              HasSubstr("\nNothing saved: a result takes oxygen values of 93 % or more.\n"));
  done({"health", "allow", "heartrate"});
  EXPECT_THAT(textOf("finger.csv"),
              AllOf(HasSubstr("\nNo oxygen value: this camera's colours give none"),
                    HasSubstr("\nOnly a health record saved"),
                    HasSubstr("--only heartrate saves the 71 beats per minute"),
                    Not(HasSubstr("START")), Not(HasSubstr("remove your finger"))));
  // What may not be relied on, nobody is advised to save, and it was final before the second lift.
  std::filesystem::rename(changed("lifted.csv", "$1,3,3,3", 4, 7), file("finger.csv"));
  EXPECT_THAT(textOf(changed("again.csv", "$1,3,3,3", 24, 27)),
              AllOf(HasSubstr("Heart rate   unsure: no finger from 4 to 7 s.\n"),
                    HasSubstr(" saved: a result takes oxygen values"),
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
  EXPECT_THAT(rows, Contains(MatchesRegex("13.600,235,heartrate,accepted,71.19.*,81,53.98.*,0,18311"
                                          "7.*,,,,,,,")));
  EXPECT_THAT(rows.back(),
              MatchesRegex("16.267,275,spo2,accepted,96.60.*,,,,,2.32.*,179.99.*,11.86.*"
                           ",90.17.*,9.63.*,25.15.*,96.63.*"));
  const std::string log = contentsOf(file("log"));
  for (const char* line : {"Z 0.020 Tapped Begin\n", " Done HR\n", " Done Both\n"}) {
    EXPECT_THAT(log, HasSubstr(line));
  }
}

TEST_F(MeasureTest, SyntheticFingertipsGiveTheirHeartRateAsVideoAndAsSeries) {
  // Exactly 90 would show every estimate, one each 5th frame, the same phase of its beats.
  for (const auto& [bpm, video] :
       std::map<int, std::string>{{48, "15.y4m"}, {75, "25.mkv"}, {150, "60.mkv"}}) {
    SCOPED_TRACE(video);
    done({"synth", video, "--bpm", std::to_string(bpm), "--fps", video.substr(0, 2), "--seconds",
          "40", "--size", "192x144"});
    EXPECT_NEAR(json({"measure", "--no-save", video})["heartrate"].get<double>(), bpm, bin);
    // Luma is made of pixels, and left alone in a series that has it already.
    for (const char* device : {"iPhone8,1", "iPhone3,1"}) {
      done({"series", video, "-o", "series.csv", "--device", device});
      EXPECT_EQ(json({"measure", "--no-save", "series.csv", "--device", device}),
                json({"measure", "--no-save", video, "--device", device}));
    }
  }
  std::set<std::string> fingers;
  for (const Arguments& option : {Arguments{}, {"--seed", "2"}, {"--motion", "9"}}) {
    makeFinger(joined({"--noise", "0"}, option));
    fingers.insert(contentsOf(file("finger.csv")));
  }
  EXPECT_EQ(fingers.size(), 3U);
}

TEST_F(MeasureTest, AStallIsFilledOrTakesAsMuchLongerAndLeavesTheValues) {
  makeFinger();
  const Json whole = reportOf("finger.csv");
  for (const auto& [stall, drops] : std::map<double, int>{{0.2, 0}, {1, 10}, {3, 40}}) {
    SCOPED_TRACE(stall);
    const Json report = reportOf(changed("stalled.csv", "", 8.001, 8 + stall));
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
  makeFinger();
  const std::string blueless = changed("blueless.csv", "$1,$2,$3,2");
  EXPECT_EQ(reportOf(blueless)["doubts"], Json{"noBlue"});
  EXPECT_THAT(textOf(blueless),
              HasSubstr("SpO2         unsure: the camera saw next to no pulse in blue light"));
  const std::string bright = changed("bright.csv", "$1,255,$3,$4");
  EXPECT_THAT(reportOf(bright, {"--device", "iPhone4,1", "--only", "spo2"})["doubts"],
              Contains("noRedPulse"));
  // What the finger explains gets no other advice.
  EXPECT_THAT(textOf(bright), AllOf(HasSubstr("\nToo bright from 2 to 40 s: press more"),
                                    Not(HasSubstr("--only heartrate"))));
  EXPECT_THAT(textOf(changed("black.csv", "$1,0,0,0")),
              HasSubstr("\nNo finger from 2 to 40 s: the picture is black.\n"));

  const std::string lifted = changed("lifted.csv", "$1,3,3,3", 8, 11);
  const Json report = reportOf(lifted);
  EXPECT_NEAR(report["finger"]["noFinger"].get<double>(), 3, 0.5);
  EXPECT_EQ(report["doubts"], Json::parse(R"(["noFinger", "unclearPulse"])")) << "each once";
  EXPECT_THAT(textOf(lifted), HasSubstr("Heart rate   unsure: no finger from 8 to 11 s.\n"));
  std::filesystem::rename(lifted, file("finger.csv"));
  EXPECT_THAT(textOf(changed("again.csv", "$1,3,3,3", 13, 16)),
              HasSubstr("no finger from 8 to 11 s, from 13 to 16 s.\n"));
}

}  // namespace
}  // namespace veyla
