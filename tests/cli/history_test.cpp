#include <sys/stat.h>

#include "tests/cli/program.h"

namespace veyla {
namespace {

class HistoryTest : public Program {
 protected:
  // Dates with plain spaces.
  HistoryTest() { environment["LC_ALL"] = "C"; }
  void keepThree() const {
    keep(Value::Array{entry(60.4, 95.5, 1709640000, 0), entry(0, 97.4, 1709650000, 3),
                      entry(static_cast<double>(110.3847F), 0, 1720000000)});
  }
  static std::string onData(const std::string& words) {
    return "history " + words + " --data data";
  }
  Result history(const std::string& words) const { return run(onData(words)); }
  /// What it prints; it must be done.
  std::string printed(const std::string& words) const { return done(onData(words)); }
};

TEST_F(HistoryTest, TheListIsNewestFirstAndAligned) {
  keepThree();
  EXPECT_EQ(printed(""),
            "1  Jul 3, 2024, 9:46 AM   110 bpm   --\n"
            "2  Mar 5, 2024, 2:46 PM        --  97%  Training (Before)\n"
            "3  Mar 5, 2024, 12:00 PM   60 bpm  96%  Resting\n");
  environment["LC_ALL"] = "ja_JP.UTF-8";
  environment["TZ"] = "Asia/Tokyo";
  EXPECT_THAT(printed(""), StartsWith("1  2024/07/03 18:46  110 bpm   --\n"));
  // As it was measured, in single precision.
  EXPECT_EQ(json("history --data data"), Json::parse(R"x([
      {"number": 1, "date": "2024-07-03T09:46:40.000Z", "heartrate": 110.3847, "spo2": null,
       "labels": []},
      {"number": 2, "date": "2024-03-05T14:46:40.000Z", "heartrate": null, "spo2": 97.4,
       "labels": ["Training (Before)"]},
      {"number": 3, "date": "2024-03-05T12:00:00.000Z", "heartrate": 60.4, "spo2": 95.5,
       "labels": ["Resting"]}])x"));
}

TEST_F(HistoryTest, AHistoryThatIsNotThereIsEmptyAndIsNotMade) {
  EXPECT_EQ(done("history"),
            "No measurements in " + file("home/veyla") + " yet: veyla measure saves them there.\n");
  EXPECT_EQ(json("history"), Json::array());
  EXPECT_EQ(done("chart --period all"),
            "All\n\nNot enough heartrate data\n\nNot enough SpO2 data\n");
  for (const auto& [command, empty] :
       {std::pair{"history", "Date,Heart Rate,Saturation\n"}, {"health", ""}}) {
    const Result exported = run(command + std::string(" export -o -"));
    EXPECT_EQ(exported.status, 0);
    EXPECT_THAT(exported.error, HasSubstr(" yet: veyla "));
    EXPECT_EQ(exported.out, empty);
  }
  environment["XDG_DATA_HOME"] = "not/absolute";
  EXPECT_THAT(done("history"), HasSubstr(" in " + file(".local/share/veyla") + " yet"));
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(HistoryTest, EntriesAreLabelledAndDeletedByTheirNumbers) {
  keepThree();
  const Value before = kept();
  expectRefused(history("delete 1 4"), 2, "N: there is no entry 4, the history has 3");
  expectRefused(history("label 4 Resting"), 2, "no entry 4");
  EXPECT_EQ(kept(), before);
  const std::pair<std::string, const char*> labels[] = {{"'training (after)'", "Training (After)"},
                                                        {"Active", "Active, Training (After)"},
                                                        {"Active", "Active, Training (After)"},
                                                        {"Active --off", "Training (After)"}};
  for (const auto& [words, label] : labels) {
    EXPECT_EQ(printed("label 2 " + words),
              std::string("2  Mar 5, 2024, 2:46 PM  --  97%  ") + label + "\n");
  }
  printed("label 3 none");
  EXPECT_EQ(printed("delete 3 1 3"),
            "Deleted:\n"
            "1  Jul 3, 2024, 9:46 AM   110 bpm   --\n"
            "3  Mar 5, 2024, 12:00 PM   60 bpm  96%\n");
  EXPECT_EQ(kept(), Value::Array{entry(0, 97.4, 1709650000, 4)});
}

TEST_F(HistoryTest, ABackupBringsTheHistoryToAnotherFolder) {
  keepThree();
  printed("backup -o backup.json");
  write("cut.json", contentsOf(file("backup.json")).substr(0, 200));
  expectRefused(run("history restore cut.json --data other"), 3, "cut.json: no backup");
  EXPECT_FALSE(std::filesystem::exists(file("other")));
  EXPECT_EQ(done("history restore backup.json --data other"),
            "Restored 3 measurements; 0 were there already.\n");
  EXPECT_EQ(done("history backup -o - --data other"), contentsOf(file("backup.json")));
  const auto piped = run("history restore - --data third",
                         [&] { redirect(STDIN_FILENO, file("backup.json").c_str(), O_RDONLY); });
  EXPECT_EQ(piped.out, "Restored 3 measurements; 0 were there already.\n");
  for (const char* kept : {"", "-journal", "-wal", "-shm"}) {
    expectRefused(history(std::string("backup -o data/veyla.db") + kept), 4, "what Veyla keeps");
    EXPECT_EQ(std::filesystem::exists(file(std::string("data/veyla.db") + kept)), *kept == 0);
  }
}

TEST_F(HistoryTest, TheCsvHoldsTheEntriesThatAreNamed) {
  keepThree();
  EXPECT_EQ(printed("export 3 2 -o out.csv"), "");
  EXPECT_EQ(contentsOf(file("out.csv")),
            "Date,Heart Rate,Saturation\n2024-03-05 14:46:40,0,97\n2024-03-05 12:00:00,60,96");
  expectRefused(history("export -o data"), 4, "data: a folder; name a file in it");
}

TEST_F(HistoryTest, AMailIsADraftForTheMailProgram) {
  keepThree();
  EXPECT_EQ(printed("mail -o all.eml"), "");
  EXPECT_THAT(contentsOf(file("all.eml")),
              AllOf(HasSubstr("Subject: Veyla data\r\n"), HasSubstr("Content-Type: text/csv")));
  EXPECT_THAT(printed("mail --text 2 -o -"),
              AllOf(Not(HasSubstr("text/csv")), HasSubstr("<br>2024-03-05 14:46")));

  const std::string drafts = "data/drafts/veyla-data-";
  for (int again = 0; again < 3; ++again) {
    EXPECT_THAT(printed("mail"), StartsWith("There is no mail program to open it in; the draft "
                                            "lies in " +
                                            drafts));
  }
  EXPECT_EQ(names("data/drafts").size(), 3U) << "also within a second";
  // A desktop whose mail program notes what it is to open.
  provide("xdg-mime", "[ \"$3\" = message/rfc822 ] && echo mail.desktop");
  provide("xdg-open", "printf %s \"$1\" > opened");
  environment["DISPLAY"] = ":0";
  EXPECT_THAT(printed("mail 1"),
              StartsWith("Opened in the mail program; the draft lies in " + drafts));
  EXPECT_THAT(contentsOf(path() / contentsOf(file("opened"))), HasSubstr("X-Unsent: 1"));
}

TEST_F(HistoryTest, WhatHoldsSomebodysMeasurementsIsForItsOwnerAlone) {
  umask(0);
  done("health allow heartrate --data data");
  done("measure --data data");
  printed("mail");
  for (const std::string output : {"history export -o a", "history mail -o b", "health export -o c",
                                   "chart -o d.png", "history backup -o e"}) {
    done(output + " --data data");
  }
  for (const std::string name : {"out.csv", "out.mp4"}) {
    done("synth --seconds 1 --size 16x16 " + name);
  }
  for (const auto& each : std::filesystem::recursive_directory_iterator(path())) {
    const bool isFinger = each.path().stem() == "out";
    const auto permissions = static_cast<int>(each.status().permissions());
    EXPECT_EQ(permissions, each.is_directory() ? 0700 : isFinger ? 0666 : 0600) << each;
  }
}

TEST_F(HistoryTest, ADamagedEntryIsShownAndLeftAloneAndTheOthersWork) {
  const Value damaged = Value::Dictionary{{"hr", "sixty"}, {"spo2", 97.0}};
  Value noted = entry(60, 97, 1709640000);
  keep(Value::Array{noted, damaged, entry(70, 98, 1720000000)});
  const auto told = [&](const std::string& words) {
    const Result result = history(words);
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.error, StartsWith("veyla: data/veyla.db: entry 2 of the history is damaged: "
                                         "its \"hr\" is no number; delete it with"));
    return result.out;
  };
  environment["LC_ALL"] = "C.UTF-8";
  environment["LANG"] = "C";
  EXPECT_EQ(told(""),
            "1  Jul 3, 2024, 9:46\u202fAM   70 bpm  98%\n"
            "2  Damaged entry              --   --\n"
            "3  Mar 5, 2024, 12:00\u202fPM  60 bpm  97%\n");
  EXPECT_THAT(told("--json"), HasSubstr("\"damaged\": \"its \\\"hr\\\" is no number\""));
  EXPECT_EQ(told("export -o -"),
            "Date,Heart Rate,Saturation\n2024-07-03 09:46:40,70,98\n2024-03-05 12:00:00,60,97\n");
  printed("label 1 Resting");
  EXPECT_EQ(kept().array()->at(1), damaged);
  EXPECT_THAT(printed("delete 2"), HasSubstr("2  Damaged entry"));
  EXPECT_EQ(kept().array()->size(), 2U);
}

TEST_F(HistoryTest, ProgramsAtTheSameTimeLoseNothing) {
  constexpr std::size_t each = 6;
  keep(Value::Array(2 * each, entry(60, 97, 1709640000)));
  const auto quiet = [] { redirect(STDOUT_FILENO, "/dev/null", O_WRONLY); };
  std::vector<pid_t> programs;
  for (std::size_t i = 0; i < each; ++i) {
    // As many go as come.
    programs.push_back(start(onData("delete 1"), quiet));
    programs.push_back(start("measure --only heartrate --data data", quiet));
  }
  for (const pid_t program : programs) EXPECT_EQ(ended(program), 0);
  EXPECT_EQ(kept().array()->size(), 2 * each);
}

TEST_F(HistoryTest, HealthRecordsAreAllowedAndExported) {
  const auto health = [&](const std::string& words) {
    return run("health " + words + " --data data");
  };
  EXPECT_EQ(health("allow heartrate").status, 0);
  EXPECT_EQ(health("deny spo2").out, "heartrate  allowed\nspo2       denied\n");
  done("measure --data data");
  const std::string whole = contentsOf(file("data/Observations.ndjson"));
  EXPECT_THAT(whole, AllOf(HasSubstr("8867-4"), Not(HasSubstr("59408-5"))));
  expectRefused(health("export -o data/Observations.ndjson"), 2, "is the input itself");
  EXPECT_EQ(health("export -o -").out, whole);
  write("data/Observations.ndjson", whole + "no record\n" + whole);
  const Result damaged = health("export -o -");
  EXPECT_EQ(damaged.status, 3);
  EXPECT_EQ(damaged.out, whole + whole);
  EXPECT_THAT(damaged.error, HasSubstr("Observations.ndjson: line 2 is no record"));
}

}  // namespace
}  // namespace veyla
