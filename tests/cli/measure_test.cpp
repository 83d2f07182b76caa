#include <ctime>

#include "tests/cli/program.h"

namespace veyla {
namespace {

/// The widest that a value may lie off: a bin of the spectrum.
constexpr double bin = 0.88;

class MeasureTest : public Program {
 protected:
  void makeFinger(const std::string& options = {}) const {
    done("synth finger.csv --seconds 40 " + options);
  }
  Json reportOf(const std::string& series, const std::string& options = {}) const {
    return json("measure --no-save " + series + " " + options);
  }
  /// Expects the report to have these parts, and not those.
  void expectTold(const std::string& words, const std::vector<std::string>& told,
                  const std::vector<std::string>& untold = {}) const {
    const std::string text = run("measure " + words).out;
    for (const std::string& part : told) EXPECT_THAT(text, HasSubstr(part));
    for (const std::string& part : untold) EXPECT_THAT(text, Not(HasSubstr(part)));
  }
};

TEST_F(MeasureTest, TheFingertipIsMeasuredAndReportedAlikeAtEveryRun) {
  const Result measured = run("measure --no-save --json");
  EXPECT_EQ(run("measure --no-save --json").out, measured.out);
  EXPECT_EQ(measured.out.find('\n'), measured.out.size() - 1);
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
  EXPECT_EQ(done("measure --no-save"), text);
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(done("measure"), text + "Saved in " + file("home/veyla") + ".\n");
}

TEST_F(MeasureTest, EveryFinishedMeasurementIsKeptWithTheDateAtWhichItEnded) {
  for (const char* value : {"heartrate", "spo2"}) done(std::string("health allow ") + value);
  // A finger that comes after two minutes and a half.
  done("synth finger.csv --seconds 190");
  changed("late.csv", "$1,90,60,30", 0, 150);
  const auto now = [] {
    const std::time_t time = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%FT%T", std::gmtime(&time));
    return std::string(text);
  };
  const auto begin = now();
  Json report;
  for (const char* input : {"late.csv", "finger.csv"}) {
    report = json(std::string("measure --log log ") + input);
  }
  const auto end = now();
  const Json entries = json("history");
  EXPECT_EQ(entries[0]["heartrate"], report["heartrate"]);
  EXPECT_EQ(entries[0]["spo2"], report["spo2"]);
  EXPECT_GT(entries[0]["date"], entries[1]["date"]);

  // The dates of the entries, the health records and the log.
  const std::string all = entries.dump() + done("health export -o -") + contentsOf(file("log"));
  static const std::regex date("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d");
  for (std::sregex_iterator each(all.begin(), all.end(), date), none; each != none; ++each) {
    ASSERT_TRUE(begin <= each->str() && each->str() <= end) << each->str();
  }
}

TEST_F(MeasureTest, WhatEndsEarlyIsToldWithItsReasonAndNotKept) {
  const Json few = json("measure --duration 8", 1);
  EXPECT_EQ(few["outcome"], "endOfInput");
  EXPECT_TRUE(few["heartrate"].is_null());
  expectTold("--duration 8", {"\n--duration 8 ended it: ", "\nNothing saved"});
  expectTold("--start 1:40", {"needs 2 seconds of countdown", "\n--start 100 left"});
  expectTold("--no-save --start 30", {"\n--start 30 left"}, {"Nothing saved"});
  expectTold("--no-save --start 5 --duration 30 --log log", {"\nFinished after"});
  EXPECT_THAT(contentsOf(file("log")), HasSubstr("Z 5.020 Tapped Begin\n"));

  makeFinger("--spo2 85");
  const Json report = json("measure finger.csv --only spo2", 1);
  EXPECT_EQ(report["outcome"], "lowSignal") << report;
  EXPECT_EQ(report["estimates"]["spo2"]["low"], 60);
  expectTold("finger.csv --only spo2",
             {"\nNothing saved: a result with SpO2 takes oxygen values of 93 % or more.\n"});
  done("health allow heartrate");
  expectTold("finger.csv",
             {"\nNo oxygen value: this camera's colours give none", "\nOnly a health record saved",
              "--only heartrate saves the 71 beats per minute"},
             {"START", "remove your finger"});
  // What may not be relied on, nobody is advised to save, and it was final before the second lift.
  std::filesystem::rename(changed("lifted.csv", "$1,3,3,3", 4, 7), file("finger.csv"));
  expectTold(
      {changed("again.csv", "$1,3,3,3", 24, 27)},
      {"Heart rate   unsure: no finger from 4 to 7 s.\n", "\nNo oxygen value: this camera's"},
      {"--only heartrate"});
  EXPECT_EQ(json("history"), Json::array());
}

TEST_F(MeasureTest, TraceTellsEveryEstimateAndTheLogWhatTheApplicationDid) {
  const Json report = json("measure --no-save --trace trace.csv --log log");
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

TEST_F(MeasureTest, SyntheticFingertipsGiveTheirValuesAsVideoAndAsSeries) {
  // Exactly 90 would show every estimate, one each 5th frame, the same phase of its beats.
  struct {
    std::string video, bpm, spo2, size;
  } const fingers[] = {{"15.y4m", "48", "94", "14.9 MB"},
                       {"25.mkv --noise 3", "150", "97", "[34].. KB"}};
  for (const auto& [drawn, bpm, spo2, size] : fingers) {
    const std::string video = drawn.substr(0, 6);
    SCOPED_TRACE(video);
    EXPECT_THAT(done("synth " + drawn + " --bpm " + bpm + " --spo2 " + spo2 + " --fps " +
                     video.substr(0, 2) + " --seconds 24 --size 192x144"),
                MatchesRegex("Saved 24 s of a fingertip, " + size + ", in " + video +
                             "; see veyla measure " + video + "\n"));
    const Json report = reportOf(video);
    EXPECT_NEAR(report["heartrate"].get<double>(), std::stod(bpm), bin);
    // Fast beats lose their ends between frames.
    EXPECT_NEAR(report["spo2"].get<double>(), std::stod(spo2), 1.2);
    // Luma is made of pixels, and left alone in a series that has it already.
    for (const std::string device : {"--device iPhone8,1", "--device iPhone3,1"}) {
      done("series " + video + " -o series.csv " + device);
      EXPECT_EQ(reportOf("series.csv", device), reportOf(video, device));
    }
    const auto piped = run("measure --no-save --json -",
                           [&] { redirect(STDIN_FILENO, file(video).c_str(), O_RDONLY); });
    EXPECT_EQ(Json::parse(piped.out), report) << piped.error;
  }
  std::set<std::string> different;
  for (const char* option : {"", " --seed 2", " --motion 9"}) {
    makeFinger(std::string("--noise 0") + option);
    different.insert(contentsOf(file("finger.csv")));
  }
  EXPECT_EQ(different.size(), 3U);
}

TEST_F(MeasureTest, AModuleIsFoundByALinkWhereverItIsInstalledAndMissedByNothingElse) {
  const auto built = std::filesystem::path(VEYLA_PROGRAM);
  for (const char* folder : {"bin", "lib/veyla"}) std::filesystem::create_directories(file(folder));
  std::filesystem::copy(built, file("bin/veyla"));
  for (const char* module : {"video.so", "pictures.so", "mail.so"}) {
    std::filesystem::copy(built.parent_path() / "modules" / module, file("lib/veyla"));
  }
  std::filesystem::create_symlink("bin/veyla", file("link"));
  executable = file("link");
  done("synth finger.y4m --seconds 2 --size 192x144");
  done("series finger.y4m -o series.csv");
  done("measure --data data --frames pictures");
  done("history mail --data data -o draft.eml");
  std::filesystem::remove_all(file("lib"));
  for (const char* command : {"series finger.y4m -o -", "measure --no-save --frames others",
                              "history mail --data data -o other.eml"}) {
    expectRefused(run(command), 3, "install veyla again");
  }
  EXPECT_THAT(done("history --data data"), HasSubstr("bpm"));
  EXPECT_EQ(done("series series.csv -o -"), contentsOf(file("series.csv")));
}

TEST_F(MeasureTest, SeveralRecordingsGetALineEachInTheirOrderAndAreKeptWhenThatIsAskedFor) {
  makeFinger();
  std::filesystem::create_directory(file("folder"));
  for (const char* name : {"folder/b.csv", "folder/a.csv", "folder/a.reference.csv"}) {
    write(name, contentsOf(file("finger.csv")));
  }
  write("folder/notes.txt", "no recording");
  write("folder/c.csv", "time,R,G,B\n0,180,90,25\n");
  changed("folder/d.csv", "$1,0,0,0");
  std::filesystem::create_directories(file("none/deeper"));
  done("measure folder/a.csv --every 10 --no-save --csv folder/rows.csv");
  std::filesystem::create_directories(file("folder/old.mp4"));
  const Result all = run("measure folder none finger.csv --jobs 2");
  EXPECT_EQ(all.status, 3) << "the worst";
  EXPECT_EQ(all.out,
            "folder/a.csv  71 bpm  97 %   16.3 s\n"
            "folder/b.csv  71 bpm  97 %   16.3 s\n"
            "folder/c.csv  --      --    unfinished: The recording ended before the measurement "
            "began. Record longer.\n"
            "folder/d.csv  --      --    unfinished: No finger from 2 to 40 s: the picture is "
            "black.\n"
            "finger.csv    71 bpm  97 %   16.3 s\n");
  EXPECT_THAT(
      all.error,
      AllOf(StartsWith("veyla: folder: passed over notes.txt, old.mp4/, rows.csv: no video by"),
            HasSubstr("\nveyla: none: passed over deeper/: no"),
            HasSubstr("\nveyla: none: no video and no colour series")));
  EXPECT_EQ(json("history"), Json::array());

  EXPECT_THAT(run("measure folder/a.csv finger.csv --duration 8").out,
              HasSubstr("unfinished: --duration 8 ended it: 45 s are plenty."));

  const auto lines = linesOf(done("measure folder/a.csv finger.csv --save --json"));
  ASSERT_EQ(lines.size(), 2U);
  Json second = Json::parse(lines[1]);
  EXPECT_THAT(lines[1], StartsWith("{\"input\":\"finger.csv\",\"outcome\""));
  second.erase("input");
  EXPECT_EQ(second, reportOf("finger.csv"));
  EXPECT_EQ(json("history").size(), 2U);
  for (const char* name : {"hr", "HeartRate"}) {
    const Json alone = reportOf("finger.csv", std::string("--only ") + name);
    EXPECT_EQ(alone["estimates"]["spo2"]["accepted"], 0) << name;
    EXPECT_EQ(alone["outcome"], "finished") << name;
  }
  const std::string only = "of one measurement alone";
  for (const char* option :
       {"--trace t", "--log l", "--snapshot s.png", "--realtime", "--scale 2"}) {
    expectRefused(run(std::string("measure folder ") + option), 2, only);
  }
}

TEST_F(MeasureTest, ARecordingIsMeasuredAgainFromEverySoManySecondsOnAndTheClearestIsTold) {
  makeFinger();
  changed("lifted.csv", "$1,3,3,3", 4, 7);
  const std::string every = "lifted.csv --every 0:10 ";
  const auto lines = linesOf(done("measure --json --csv w.csv " + every));
  const auto rows = linesOf(contentsOf(file("w.csv")));
  // From the 30th second on too little is left.
  ASSERT_EQ(lines.size(), 3U);
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(rows[0], "input,start,outcome,seconds,heartrate,spo2,clarity,doubts");
  for (std::size_t i = 0; i < 3; ++i) {
    Json line = Json::parse(lines[i]);
    EXPECT_EQ(line["start"], 10 * i);
    EXPECT_THAT(rows[i + 1], StartsWith("lifted.csv," + std::to_string(10 * i) + ",finished,"));
    line.erase("start");
    EXPECT_EQ(line, reportOf("lifted.csv", "--start " + std::to_string(10 * i)));
  }
  EXPECT_THAT(rows[1], EndsWith(",noFinger unclearPulse"));
  done("measure --no-save --csv one.csv lifted.csv");
  EXPECT_EQ(contentsOf(file("one.csv")), rows[0] + "\n" + rows[1] + "\n");
  EXPECT_THAT(done("measure " + every),
              StartsWith("from  0:00.0  72 bpm  97 %   20.3 s  unsure: noFinger, "));
  EXPECT_EQ(json("history"), Json::array());

  // The one from 5 s on is as free of doubts, and less clear.
  const Json best = Json::parse(done("measure --save --best --json lifted.csv --every 5"));
  EXPECT_EQ(best["start"], 10) << best;
  EXPECT_EQ(json("history").size(), 1U);
  EXPECT_EQ(json("history")[0]["heartrate"], best["heartrate"]);
  EXPECT_EQ(linesOf(done("measure finger.csv --best " + every)).size(), 2U);
}

TEST_F(MeasureTest, WhatIsWrongWithAFingerIsToldWithItsSecondsAndWhatIsUnsureWithItsReason) {
  makeFinger();
  write("cut.csv", contentsOf(file("finger.csv")) + "40000,1");
  EXPECT_THAT(run("measure --no-save cut.csv").error, HasSubstr("cut.csv: cut off "));
  const std::string blueless = changed("blueless.csv", "$1,$2,$3,2");
  EXPECT_EQ(reportOf(blueless)["doubts"], Json{"noBlue"});
  expectTold(blueless, {"SpO2         unsure: the camera saw next to no pulse in blue light"});
  const std::string bright = changed("bright.csv", "$1,255,$3,$4");
  EXPECT_THAT(reportOf(bright, "--device iPhone4,1 --only spo2")["doubts"], Contains("noRedPulse"));
  // What the finger explains gets no other advice.
  expectTold(bright, {"\nToo bright from 2 to 40 s: press more"}, {"--only heartrate"});
  expectTold(changed("black.csv", "$1,0,0,0"),
             {"\nNo finger from 2 to 40 s: the picture is black.\n"});

  const std::string lifted = changed("lifted.csv", "$1,3,3,3", 8, 11);
  const Json report = reportOf(lifted);
  EXPECT_NEAR(report["finger"]["noFinger"].get<double>(), 3, 0.5);
  EXPECT_EQ(report["doubts"], Json::parse(R"(["noFinger", "unclearPulse"])")) << "each once";
  expectTold(lifted, {"Heart rate   unsure: no finger from 8 to 11 s.\n"});
  std::filesystem::rename(lifted, file("finger.csv"));
  expectTold(changed("again.csv", "$1,3,3,3", 13, 16),
             {"no finger from 8 to 11 s, from 13 to 16 s.\n"});
}

}  // namespace
}  // namespace veyla
