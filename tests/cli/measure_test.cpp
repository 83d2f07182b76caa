#include <gmock/gmock.h>

#include <sstream>

#include "history/history_entry.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Json = nlohmann::json;

/// The widest that a value may lie off: a bin of the spectrum.
constexpr double bin = 0.88;

std::vector<std::string> keysOf(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object.items()) keys.push_back(key);
  return keys;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The stored history, read as the application reads it; "values" as it stands in the store.
std::vector<HistoryEntry> historyIn(const std::filesystem::path& folder) {
  SqliteKeyValueStore store(folder);
  const auto stored = store.value("values");
  EXPECT_EQ(store.failure(), std::nullopt);
  std::vector<HistoryEntry> entries;
  if (!stored) return entries;
  for (const Value& entry : *stored->array()) entries.push_back(historyEntryOf(entry));
  return entries;
}

using MeasureTest = Program;

TEST_F(MeasureTest, TheFingertipIsMeasuredAndReportedAlikeAtEveryRun) {
  const Json report = json({"measure", "--no-save"});
  EXPECT_EQ(report, json({"measure", "--no-save"}));
  EXPECT_THAT(keysOf(report),
              UnorderedElementsAre("outcome", "heartrate", "spo2", "clarity", "doubts", "finger",
                                   "seconds", "frames", "framedrops", "estimates", "device"));
  EXPECT_EQ(report["outcome"], "finished");
  EXPECT_NEAR(report["heartrate"].get<double>(), 72, bin);
  EXPECT_GE(report["spo2"].get<double>(), 93);
  EXPECT_LE(report["spo2"].get<double>(), 100);
  EXPECT_GT(report["seconds"].get<double>(), 10);
  EXPECT_TRUE(report["frames"].is_number_integer());
  EXPECT_EQ(report["framedrops"], 0);
  EXPECT_EQ(report["device"], "iphone6s");
  for (const char* value : {"heartrate", "spo2"}) {
    EXPECT_THAT(keysOf(report["estimates"][value]),
                UnorderedElementsAre("accepted", "rejected", "low", "none"));
  }
  EXPECT_FALSE(std::filesystem::exists(file("home")));

  const Result text = run({"measure", "--no-save"});
  EXPECT_EQ(text.error, "");
  const auto lines = linesOf(text.out);
  ASSERT_EQ(lines.size(), 3U) << text.out;
  EXPECT_EQ(lines[0], "Heart rate   71 beats per minute");
  EXPECT_THAT(lines[2], HasSubstr("Finished after "));
  EXPECT_EQ(text.out.find('\x1b'), std::string::npos);
}

TEST_F(MeasureTest, OneValueAndAnotherPhoneCanBeAskedFor) {
  const Json heartrate = json({"measure", "--no-save", "--only", "heartrate"});
  EXPECT_NEAR(heartrate["heartrate"].get<double>(), 72, bin);
  EXPECT_TRUE(heartrate["spo2"].is_null());
  const Json spo2 = json({"measure", "--no-save", "--only", "spo2"});
  EXPECT_TRUE(spo2["heartrate"].is_null());
  EXPECT_TRUE(spo2["spo2"].is_number());
  EXPECT_EQ(json({"measure", "--no-save", "--device", "iPhone3,1"})["device"], "iphone4");
  EXPECT_EQ(run({"measure", "--no-save", "--device", "Unheard,1"}).status, 0);
}

/// The date at the front of `text`, in UTC to the second.
double dateIn(const std::string& text) {
  std::tm date{};
  EXPECT_TRUE(strptime(text.c_str(), text[10] == 'T' ? "%Y-%m-%dT%T" : "%Y-%m-%d %T", &date));
  return static_cast<double>(timegm(&date));
}

TEST_F(MeasureTest, EveryFinishedMeasurementIsKeptWithTheDateAtWhichItEnded) {
  for (const char* value : {"heartrate", "spo2"}) {
    ASSERT_EQ(run({"health", "allow", value}).status, 0);
  }
  // A finger that comes after two minutes and a half.
  ASSERT_EQ(run({"synth", file("finger.csv"), "--seconds", "40"}).status, 0);
  std::string late = "time,R,G,B\n";
  for (int time = 0; time < 150000; time += 50) late += std::to_string(time) + ",90,60,30\n";
  const auto finger = linesOf(contentsOf(file("finger.csv")));
  for (std::size_t i = 1; i < finger.size(); ++i) {
    const std::size_t comma = finger[i].find(',');
    late += std::to_string(150000 + std::stod(finger[i])) + finger[i].substr(comma) + '\n';
  }
  write("late.csv", late);

  const auto now = [] { return static_cast<double>(time(nullptr)); };
  std::vector<std::pair<double, double>> spans;
  std::vector<Json> reports;
  for (const char* input : {"finger.csv", "late.csv", "finger.csv", "finger.csv"}) {
    const double begin = now();
    reports.push_back(json({"measure", file(input), "--log", file("log")}));
    spans.emplace_back(begin, now());
  }

  EXPECT_GT(reports[1]["seconds"], 160);
  const auto entries = historyIn(folder() / "home" / "veyla");
  const auto rows = linesOf(run({"history", "export", "-o", "-"}).out);
  const auto records = linesOf(run({"health", "export", "-o", "-"}).out);
  ASSERT_EQ(entries.size(), spans.size());
  ASSERT_EQ(rows.size(), 1 + spans.size());
  ASSERT_EQ(records.size(), 2 * spans.size());
  for (std::size_t i = 0; i < spans.size(); ++i) {
    SCOPED_TRACE(i);
    const auto expectWithin = [&](double date) {
      EXPECT_GE(date, spans[i].first);
      EXPECT_LE(date, spans[i].second);
    };
    expectWithin(dateIn(rows[rows.size() - 1 - i]));
    for (const std::size_t record : {2 * i, 2 * i + 1}) {
      expectWithin(dateIn(Json::parse(records[record])["effectiveDateTime"]));
    }
    EXPECT_TRUE(i == 0 || entries[i - 1].date < entries[i].date);
    EXPECT_NEAR(entries[i].hr, reports[i]["heartrate"].get<double>(), 1e-4);
    EXPECT_NEAR(entries[i].spo2, reports[i]["spo2"].get<double>(), 1e-4);
    EXPECT_FALSE(entries[i].damaged);
  }
  for (const std::string& line : linesOf(contentsOf(file("log")))) {
    ASSERT_GE(dateIn(line), spans.front().first);
    ASSERT_LE(dateIn(line), spans.back().second);
  }
}

TEST_F(MeasureTest, WhatEndsEarlyIsToldAndNotKept) {
  const Json few = json({"measure", "--duration", "8"}, 1);
  EXPECT_EQ(few["outcome"], "endOfInput");
  EXPECT_TRUE(few["heartrate"].is_null());
  EXPECT_THAT(run({"measure", "--duration", "8"}).out, HasSubstr("\n--duration 8 ended it: "));
  EXPECT_THAT(run({"measure", "--start", "100"}).out,
              AllOf(HasSubstr("needs 2 seconds of countdown"), HasSubstr("\n--start 100 left")));
  EXPECT_EQ(json({"measure", "--no-save", "--start", "5", "--duration", "30"})["outcome"],
            "finished");

  ASSERT_EQ(run({"synth", file("low.csv"), "--spo2", "85", "--seconds", "60"}).status, 0);
  const Json low = json({"measure", file("low.csv"), "--only", "spo2"}, 1);
  EXPECT_EQ(low["outcome"], "lowSignal") << low;
  EXPECT_EQ(low["estimates"]["spo2"]["low"], 60);
  const Result plain = run({"measure", file("low.csv")});
  EXPECT_EQ(plain.status, 1);
  EXPECT_THAT(plain.out, AllOf(HasSubstr("\nNo oxygen value: this camera's colours give none"),
                               HasSubstr("\nNothing saved"),
                               HasSubstr("--only heartrate saves the "
                                         "71 beats per minute"),
                               Not(HasSubstr("START")), Not(HasSubstr("remove your finger"))));
  EXPECT_THAT(historyIn(folder() / "home" / "veyla"), IsEmpty());

  // Away from 4 to 7 s; what may not be relied on, nobody is advised to save.
  auto rows = linesOf(contentsOf(file("low.csv")));
  std::string lifted;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i > 120 && i <= 210) rows[i].replace(rows[i].find(','), std::string::npos, ",3,3,3");
    lifted += rows[i] + '\n';
  }
  EXPECT_THAT(run({"measure", write("lifted.csv", lifted)}).out,
              AllOf(HasSubstr("Heart rate   unsure: no finger"), HasSubstr("\nNothing saved: "),
                    HasSubstr("\nNo oxygen value: this camera's colours give none"),
                    Not(HasSubstr("--only heartrate"))));
}

TEST_F(MeasureTest, TraceAndLogTellEveryEstimate) {
  const Json report =
      json({"measure", "--no-save", "--trace", file("trace.csv"), "--log", file("log")});
  const auto rows = linesOf(contentsOf(file("trace.csv")));
  ASSERT_GT(rows.size(), 1U);
  std::map<std::string, std::map<std::string, int>> counts;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    EXPECT_EQ(std::count(rows[i].begin(), rows[i].end(), ','),
              std::count(rows[0].begin(), rows[0].end(), ','));
    std::istringstream row(rows[i]);
    std::string seconds, frame, value, verdict;
    std::getline(
        std::getline(std::getline(std::getline(row, seconds, ','), frame, ','), value, ','),
        verdict, ',');
    ++counts[value][verdict];
  }
  for (const char* value : {"heartrate", "spo2"}) {
    for (const auto& [verdict, count] : report["estimates"][value].items()) {
      EXPECT_EQ(counts[value][verdict], count.get<int>()) << value << ' ' << verdict;
    }
  }
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
  std::vector<Case> cases{{48, "15", ".y4m"}, {150, "60", ".mkv"}};
  if (!compact) {
    cases.insert(cases.end(), {{60, "24", ".mkv"},
                               {75, "25", ".y4m"},
                               {84, "30", ".mkv"},
                               {112, "60", ".y4m"},
                               {120, "15", ".mkv"},
                               {160, "30", ".y4m"},
                               {48, "60", ".mkv"},
                               {160, "24", ".y4m"}});
  }
  for (const auto& [bpm, fps, ending] : cases) {
    SCOPED_TRACE(std::to_string(bpm) + " at " + fps);
    const std::string video = file(std::to_string(bpm) + "-" + fps + ending);
    ASSERT_EQ(run({"synth", video, "--bpm", std::to_string(bpm), "--fps", fps, "--seconds", "40",
                   "--size", "192x144"})
                  .status,
              0);
    const Json measured = json({"measure", "--no-save", video});
    EXPECT_EQ(measured["outcome"], "finished") << measured;
    if (measured["heartrate"].is_number()) {
      // 60 and 120 beats meet the estimates in the same three phases, and may be taken for their
      // neighbours.
      EXPECT_NEAR(measured["heartrate"].get<double>(), bpm, bpm % 60 == 0 ? 2 * bin : bin);
    }
    // Luma is made of pixels, and left alone in a series that has it already.
    for (const char* device : {"iPhone8,1", "iPhone3,1"}) {
      const std::string colours = file("series.csv");
      ASSERT_EQ(run({"series", video, "-o", colours, "--device", device}).status, 0);
      EXPECT_EQ(run({"measure", "--no-save", "--json", colours, "--device", device}).out,
                run({"measure", "--no-save", "--json", video, "--device", device}).out);
    }
    std::filesystem::remove(video);
  }
}

TEST_F(MeasureTest, AStallIsFilledOrTakesAsMuchLongerAndLeavesTheValues) {
  ASSERT_EQ(run({"synth", file("finger.csv"), "--seconds", "40"}).status, 0);
  const auto rows = linesOf(contentsOf(file("finger.csv")));
  const Json whole = json({"measure", "--no-save", file("finger.csv")});
  struct Case {
    double stall;
    int drops;
  };
  for (const auto& [stall, drops] : std::vector<Case>{{0.2, 0}, {1, 10}, {3, 40}}) {
    SCOPED_TRACE(stall);
    std::string stalled = rows[0] + '\n';
    for (std::size_t i = 1; i < rows.size(); ++i) {
      const double seconds = std::stod(rows[i]) / 1000;
      if (seconds <= 8 || seconds > 8 + stall - 0.001) stalled += rows[i] + '\n';
    }
    const Json report = json({"measure", "--no-save", write("stalled.csv", stalled)});
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
  ASSERT_EQ(run({"synth", file("finger.csv"), "--seconds", "40"}).status, 0);
  const auto rows = linesOf(contentsOf(file("finger.csv")));
  /// The finger with other colours, as `change` makes them of a row's number and fields.
  using Fields = std::array<std::string, 4>;
  const auto measured = [&](const std::function<void(std::size_t row, Fields&)>& change,
                            const Arguments& options = {}) {
    std::string series = rows[0] + '\n';
    for (std::size_t i = 1; i < rows.size(); ++i) {
      Fields fields;
      std::istringstream row(rows[i]);
      for (std::string& field : fields) std::getline(row, field, ',');
      change(i - 1, fields);
      series += fields[0] + ',' + fields[1] + ',' + fields[2] + ',' + fields[3] + '\n';
    }
    write("changed.csv", series);
    Arguments arguments{"measure", "--no-save", file("changed.csv")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Result text = run(arguments);
    return std::pair(json(
                         [&] {
                           arguments.push_back("--json");
                           return arguments;
                         }(),
                         text.status),
                     text.out);
  };
  const auto [good, goodText] = measured([](std::size_t, Fields&) {});
  EXPECT_EQ(good["doubts"], Json::array());
  EXPECT_GT(good["clarity"], 0.8);
  EXPECT_THAT(goodText, Not(HasSubstr("unsure")));

  const auto [dark, darkText] = measured([](std::size_t, Fields& of) { of[3] = "2"; });
  EXPECT_GT(dark["spo2"].get<double>(), 99);
  EXPECT_EQ(dark["doubts"], Json{"noBlue"});
  EXPECT_THAT(darkText, HasSubstr("SpO2         unsure: the camera saw next to no blue"));

  const auto [constant, constantText] = measured([](std::size_t, Fields& of) { of[1] = "255"; },
                                                 {"--device", "iPhone4,1", "--only", "spo2"});
  EXPECT_THAT(constant["doubts"], testing::Contains("noRedPulse"));

  // 30 rows a second: away from 8 to 11 s.
  const auto [lifted, liftedText] = measured([](std::size_t row, Fields& of) {
    if (row >= 240 && row < 330) of[1] = of[2] = of[3] = "3";
  });
  EXPECT_NEAR(lifted["finger"]["noFinger"].get<double>(), 3, 0.5);
  EXPECT_THAT(liftedText, HasSubstr("Heart rate   unsure: no finger from 8 to 11 s.\n"));
  const auto [black, blackText] =
      measured([](std::size_t, Fields& of) { of[1] = of[2] = of[3] = "0"; });
  EXPECT_TRUE(black["heartrate"].is_null());
  EXPECT_THAT(blackText, HasSubstr("\nNo finger from 2 to 40 s: the picture is black.\n"));
  // What the finger explains gets no other advice.
  const auto [bright, brightText] = measured([](std::size_t, Fields& of) { of[1] = "255"; });
  EXPECT_THAT(brightText, AllOf(HasSubstr("\nToo bright from 2 to 40 s: expose less"),
                                Not(HasSubstr("--only heartrate"))));
}

TEST_F(MeasureTest, KilledInTheMiddleTheStoreHoldsWholeEntries) {
  const Arguments save{"measure", "--only", "heartrate", "--data", file("data")};
  ASSERT_EQ(run(save).status, 0);
  int finished = 1;
  for (int milliseconds = 0; milliseconds < 120; milliseconds += compact ? 40 : 8) {
    const pid_t child = start(save, [&] {
      redirect(STDOUT_FILENO, "/dev/null", O_WRONLY);
      redirect(STDERR_FILENO, "/dev/null", O_WRONLY);
    });
    usleep(static_cast<useconds_t>(milliseconds * 1000));
    kill(child, SIGKILL);
    finished += ended(child).status == 0 ? 1 : 0;
    const auto entries = historyIn(file("data"));
    EXPECT_GE(static_cast<int>(entries.size()), finished);
    for (const HistoryEntry& entry : entries) EXPECT_NEAR(entry.hr, 72, bin);
  }
  EXPECT_EQ(run(save).status, 0);
}

}  // namespace
}  // namespace veyla
