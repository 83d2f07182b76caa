#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cmath>

#include "platform/linux/sqlite_key_value_store.h"
#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Value::Array flags(std::size_t set = 7) {
  Value::Array labels;
  for (std::size_t i = 0; i < 7; ++i) labels.emplace_back(i == set);
  return labels;
}

Value entry(double hr, double spo2, double seconds, Value::Array labels = flags()) {
  return Value::Dictionary{
      {"hr", hr}, {"spo2", spo2}, {"date", Date{seconds}}, {"labels", std::move(labels)}};
}

class HistoryTest : public Program {
 protected:
  std::string data() const { return file("data"); }

  /// Oldest first.
  void keep(const Value& values) const {
    SqliteKeyValueStore store(data());
    store.setValue("values", values);
    store.synchronize();
    EXPECT_FALSE(store.failure());
  }
  void keepThree() const {
    keep(Value::Array{entry(60.4, 95.5, 1709640000, flags(0)), entry(0, 97.4, 1709650000, flags(3)),
                      entry(static_cast<double>(110.3847F), 0, 1720000000)});
  }
  Value kept() const { return SqliteKeyValueStore(data()).value("values").value_or(Value()); }

  Result history(Arguments arguments) const {
    arguments.insert(arguments.begin(), "history");
    arguments.insert(arguments.end(), {"--data", data()});
    return run(arguments);
  }
  /// What it prints, with plain spaces; it must be done.
  std::string printed(const Arguments& arguments) const {
    const Result result = history(arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    std::string text = result.out;
    for (std::size_t at = 0; (at = text.find("\u202f")) != std::string::npos;) {
      text.replace(at, 3, " ");
    }
    return text;
  }
};

TEST_F(HistoryTest, TheListIsNewestFirstAndAligned) {
  keepThree();
  EXPECT_EQ(printed({}),
            "1  Jul 3, 2024, 9:46 AM   110 bpm   --\n"
            "2  Mar 5, 2024, 2:46 PM        --  97%  Training (Before)\n"
            "3  Mar 5, 2024, 12:00 PM   60 bpm  96%  Resting\n");
  environment["LC_ALL"] = "ja_JP.UTF-8";
  environment["TZ"] = "Asia/Tokyo";
  EXPECT_THAT(printed({}), StartsWith("1  2024/07/03 18:46  110 bpm   --\n"));
  environment["LC_ALL"] = "C";
  EXPECT_THAT(history({}).out, HasSubstr("6:46 PM   110 bpm")) << "plain spaces";

  const auto list = json({"history", "--data", data()});
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0]["number"], 1);
  EXPECT_EQ(list[0]["heartrate"], 110.3847) << "as it was measured, in single precision";
  EXPECT_TRUE(list[0]["spo2"].is_null());
  EXPECT_EQ(list[1]["date"], "2024-03-05T14:46:40.000Z");
  EXPECT_EQ(list[2]["labels"], nlohmann::json({"Resting"}));
}

TEST_F(HistoryTest, AHistoryThatIsNotThereIsEmptyAndIsNotMade) {
  EXPECT_THAT(run({"history"}).out, HasSubstr("No measurements in " + file("home/veyla") + " yet"));
  EXPECT_EQ(json({"history"}), nlohmann::json::array());
  expectRefused(run({"history", "delete", "1"}), 2, {"no entry 1", "is empty"});
  expectRefused(run({"history", "mail", "-o", "-"}), 2, {"nothing to mail, no measurements in"});
  EXPECT_EQ(run({"history", "export", "-o", "-"}).out, "Date,Heart Rate,Saturation");
  for (const char* command : {"history", "health"}) {
    const Result exported = run({command, "export", "-o", file("empty")});
    EXPECT_EQ(exported.status, 0);
    EXPECT_THAT(exported.error, HasSubstr(" yet: veyla "));
    EXPECT_TRUE(std::filesystem::remove(file("empty")));
  }
  EXPECT_THAT(run({"health"}).out, HasSubstr("not decided yet"));
  EXPECT_FALSE(std::filesystem::exists(file("home")));
  // A named folder is one that is known to hold something.
  for (const char* command : {"list", "export", "mail", "delete", "health"}) {
    Arguments arguments{"history", command, "--data", data()};
    if (command == std::string("list")) arguments = {"history", "--data", data()};
    if (command == std::string("health")) arguments = {"health", "--data", data()};
    if (command == std::string("export")) arguments.insert(arguments.end(), {"-o", file("x.csv")});
    if (command == std::string("delete")) arguments.emplace_back("1");
    expectRefused(run(arguments), 3, {"veyla.db: no such file; name the folder"});
  }
  EXPECT_FALSE(std::filesystem::exists(data()));
  EXPECT_FALSE(std::filesystem::exists(file("x.csv")));
}

TEST_F(HistoryTest, LabelsArePutOnAndTakenOff) {
  keepThree();
  EXPECT_EQ(printed({"label", "2", "training (after)"}),
            "2  Mar 5, 2024, 2:46 PM  --  97%  Training (After)\n")
      << "not both, and as it is seen in the list";
  EXPECT_THAT(printed({"label", "2", "Active"}), HasSubstr("Active, Training (After)"));
  EXPECT_THAT(printed({"label", "2", "Active"}), HasSubstr("Active, Training (After)")) << "stays";
  EXPECT_THAT(printed({"label", "2", "Active", "--off"}), Not(HasSubstr("Active")));
  EXPECT_THAT(printed({"label", "3", "none"}), Not(HasSubstr("Resting")));
  const Value expected =
      Value::Array{entry(60.4, 95.5, 1709640000), entry(0, 97.4, 1709650000, flags(4)),
                   entry(static_cast<double>(110.3847F), 0, 1720000000)};
  EXPECT_EQ(kept(), expected);
}

TEST_F(HistoryTest, EntriesAreDeletedByTheirNumbers) {
  keepThree();
  EXPECT_EQ(printed({"delete", "3", "1", "3"}),
            "Deleted:\n"
            "1  Jul 3, 2024, 9:46 AM   110 bpm   --\n"
            "3  Mar 5, 2024, 12:00 PM   60 bpm  96%  Resting\n");
  EXPECT_EQ(kept(), (Value::Array{entry(0, 97.4, 1709650000, flags(3))}));
  printed({"delete", "1"});
  EXPECT_EQ(kept(), Value::Array{});
}

TEST_F(HistoryTest, WrongNumbersAndLabelsChangeNothing) {
  keepThree();
  const Value before = kept();
  expectRefused(history({"delete", "1", "4"}), 2, {"N: there is no entry 4, the history has 3"});
  expectRefused(history({"delete", "0"}), 2, {"N: \"0\" is no whole number from 1"});
  expectRefused(history({"delete", "1.5"}), 2, {"N: \"1.5\""});
  expectRefused(history({"delete", "02"}), 2, {"N: \"02\" is no whole number from 1"});
  expectRefused(history({"label", "0x2", "none"}), 2, {"N: \"0x2\""});
  expectRefused(history({"delete"}), 2, {"N is required; see veyla history delete --help"});
  expectRefused(history({"label", "1", "Sleeping"}), 2,
                {"NAME: \"Sleeping\" is none of Resting, Active", "none"});
  expectRefused(history({"label", "4", "Resting"}), 2, {"no entry 4"});
  expectRefused(history({"label", "1", "none", "--off"}), 2, {"--off"});
  expectRefused(history({"--json", "delete", "1"}), 2, {"--json: only the list is printed so"});
  expectRefused(history({"export"}), 2, {"-o is required"});
  expectRefused(history({"export", "-o", file("no/such.csv")}), 4, {"such.csv", "folder"});
  expectRefused(history({"export", "-o", data()}), 4, {data(), "a folder"});
  EXPECT_EQ(kept(), before);
}

TEST_F(HistoryTest, TheCsvIsWrittenWholeOrNotAtAll) {
  keepThree();
  EXPECT_EQ(printed({"export", "3", "2", "-o", file("out.csv")}), "");
  const std::string csv =
      "Date,Heart Rate,Saturation\n"
      "2024-03-05 14:46:40,0,97\n"
      "2024-03-05 12:00:00,60,96";
  EXPECT_EQ(contentsOf(file("out.csv")), csv);
  const Result refused = run({"history", "export", "--data", data(), "-o", file("out.csv")}, [] {
    const rlimit none{1, 1};
    setrlimit(RLIMIT_FSIZE, &none);
  });
  EXPECT_EQ(refused.status, 4);
  EXPECT_EQ(contentsOf(file("out.csv")), csv);
}

TEST_F(HistoryTest, AMailIsADraftForTheMailProgram) {
  keepThree();
  EXPECT_EQ(printed({"mail", "-o", file("all.eml")}), "");
  EXPECT_THAT(contentsOf(file("all.eml")), HasSubstr("Subject: Veyla data\r\n"));
  EXPECT_THAT(contentsOf(file("all.eml")), HasSubstr("Content-Type: text/csv"));
  const std::string text = printed({"mail", "--text", "2", "-o", "-"});
  EXPECT_THAT(text, Not(HasSubstr("text/csv")));
  EXPECT_THAT(text, HasSubstr("<br>2024-03-05 14:46"));

  const std::string drafts = data() + "/drafts/veyla-data-";
  EXPECT_THAT(printed({"mail"}), StartsWith("There is no mail program to open it in; the draft "
                                            "lies in " +
                                            drafts));
  // A desktop whose mail program notes what it is to open.
  std::filesystem::create_directory(file("bin"));
  write("bin/xdg-mime", "#!/bin/sh\n[ \"$3\" = message/rfc822 ] && echo mail.desktop\n");
  write("bin/xdg-open", "#!/bin/sh\nprintf %s \"$1\" > \"$TMPDIR/opened\"\n");
  for (const char* name : {"bin/xdg-mime", "bin/xdg-open"}) {
    std::filesystem::permissions(file(name), std::filesystem::perms::owner_all);
  }
  environment["PATH"] = file("bin") + ":/usr/bin:/bin";
  environment["DISPLAY"] = ":0";
  EXPECT_THAT(printed({"mail", "1"}),
              StartsWith("Opened in the mail program; the draft lies in " + drafts));
  const std::string opened = contentsOf(file("opened"));
  EXPECT_THAT(opened, StartsWith(drafts));
  EXPECT_THAT(contentsOf(opened), HasSubstr("X-Unsent: 1"));
}

TEST_F(HistoryTest, WhatHoldsSomebodysMeasurementsIsForItsOwnerAlone) {
  ASSERT_EQ(run({"health", "allow", "heartrate", "--data", data()}).status, 0);
  ASSERT_EQ(run({"measure", "--data", data()}).status, 0);
  const std::string drafts = data() + "/drafts";
  for (const mode_t mask : {0022U, 0U}) {
    const auto made = [&](const Arguments& arguments, const std::string& name) {
      EXPECT_EQ(run(arguments, [=] { umask(mask); }).status, 0) << name;
      struct stat status {};
      EXPECT_EQ(stat(name.c_str(), &status), 0) << name;
      std::filesystem::remove(name);
      return status.st_mode & 0777;
    };
    const std::string out = file("out.png");
    EXPECT_EQ(made({"history", "export", "-o", out, "--data", data()}, out), 0600U);
    EXPECT_EQ(made({"history", "mail", "-o", out, "--data", data()}, out), 0600U);
    EXPECT_EQ(made({"health", "export", "-o", out, "--data", data()}, out), 0600U);
    EXPECT_EQ(made({"chart", "-o", out, "--data", data()}, out), 0600U);
    ASSERT_EQ(run({"history", "mail", "--data", data()}, [=] { umask(mask); }).status, 0);
    for (const auto& draft : std::filesystem::directory_iterator(drafts)) {
      EXPECT_EQ(draft.status().permissions(), std::filesystem::perms(0600));
    }
    for (const char* name : {"out.csv", "out.mp4"}) {
      EXPECT_EQ(made({"synth", file(name), "--seconds", "1", "--size", "16x16"}, file(name)),
                0666 & ~mask);
    }
  }
  EXPECT_FALSE(std::filesystem::is_empty(drafts));
}

TEST_F(HistoryTest, ADamagedEntryIsShownAndLeftAloneAndTheOthersWork) {
  const Value damaged = Value::Dictionary{{"hr", "sixty"}, {"spo2", 97.0}};
  keep(Value::Array{entry(60, 97, 1709640000), damaged, entry(70, 98, 1709650000)});
  const auto told = [&](const Result& result) {
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.error, StartsWith("veyla: " + data() +
                                         "/veyla.db: entry 2 of the history is damaged: its "
                                         "\"hr\" is no number; delete it with"));
    return result.out;
  };
  EXPECT_THAT(told(history({})), HasSubstr("2  Damaged entry"));
  EXPECT_THAT(told(history({"--json"})), HasSubstr("\"damaged\": \"its \\\"hr\\\" is no number\""));
  EXPECT_EQ(told(history({"export", "-o", "-"})),
            "Date,Heart Rate,Saturation\n2024-03-05 14:46:40,70,98\n2024-03-05 12:00:00,60,97");
  EXPECT_EQ(told(history({"label", "2", "Resting"})), "");
  printed({"export", "1", "3", "-o", "-"});
  printed({"label", "1", "Resting"});
  EXPECT_EQ(kept().array()->at(1), damaged);
  EXPECT_THAT(printed({"delete", "2"}), HasSubstr("2  Damaged entry"));
  EXPECT_EQ(kept().array()->size(), 2U);

  const Value odd = Value::Dictionary{{"hr", 60.0},
                                      {"spo2", 97.0},
                                      {"date", Value::Dictionary{{"$date", "x"}}},
                                      {"labels", Value::Array(7, false)}};
  keep(Value::Array{Value::Dictionary{{"hr", 60.0},
                                      {"spo2", 97.0},
                                      {"date", Date{1709640000}},
                                      {"labels", Value::Array(7, false)},
                                      {"note", "of another program"}},
                    odd, entry(std::nan(""), 97, 1709650000),
                    Value::Dictionary{{"hr", 60.0},
                                      {"spo2", 97.0},
                                      {"date", Date{1709640000}},
                                      {"labels", Value::Array(7, "x")}}});
  const Result several = history({});
  EXPECT_EQ(several.status, 3);
  EXPECT_THAT(several.out, HasSubstr("3  Damaged entry"));
  EXPECT_THAT(several.error, HasSubstr("entry 1 of the history is damaged (and 2 more): its "
                                       "\"labels\" are not a flag for each label"));
  printed({"label", "4", "Resting"});
  EXPECT_EQ(kept().array()->at(1), odd);
  EXPECT_EQ(kept().array()->at(0)["note"], Value("of another program")) << "is not ours to lose";

  keep("no list");
  expectRefused(history({}), 3, {"veyla.db", "\"values\", is no list", "restore a copy"});
  expectRefused(history({"delete", "1"}), 3, {"is no list"});
  EXPECT_EQ(kept(), Value("no list"));
}

TEST_F(HistoryTest, ProgramsAtTheSameTimeLoseNothing) {
  constexpr std::size_t each = compact ? 4 : 12;
  Value::Array values;
  for (std::size_t i = 0; i < 2 * each; ++i) {
    values.push_back(entry(60 + static_cast<double>(i), 97, 1709640000 + static_cast<double>(i)));
  }
  keep(values);
  const auto quiet = [] { redirect(STDOUT_FILENO, "/dev/null", O_WRONLY); };
  std::vector<pid_t> programs;
  for (std::size_t i = 0; i < each; ++i) {
    // As many go as come.
    programs.push_back(start({"history", "delete", "1", "--data", data()}, quiet));
    programs.push_back(start({"measure", "--only", "heartrate", "--data", data()}, quiet));
  }
  for (const pid_t program : programs) EXPECT_EQ(ended(program).status, 0);
  EXPECT_EQ(kept().array()->size(), 2 * each);
}

TEST_F(HistoryTest, HealthRecordsAreAllowedAndExported) {
  const auto health = [&](Arguments arguments) {
    arguments.insert(arguments.begin(), "health");
    arguments.insert(arguments.end(), {"--data", data()});
    return run(arguments);
  };
  expectRefused(health({"export", "-o", "-"}), 3, {"veyla.db: no such file; name the folder"});
  EXPECT_FALSE(std::filesystem::exists(data()));
  EXPECT_EQ(health({"allow", "heartrate"}).status, 0);
  EXPECT_EQ(health({"deny", "spo2"}).out, "heartrate  allowed\nspo2       denied\n");
  expectRefused(health({"allow", "pulse"}), 2, {"\"pulse\" is none of heartrate, spo2"});

  ASSERT_EQ(run({"measure", "--data", data()}).status, 0);
  const std::string records = data() + "/Observations.ndjson";
  EXPECT_EQ(health({"export", "-o", file("out.ndjson")}).status, 0);
  const std::string whole = contentsOf(records);
  EXPECT_THAT(whole, HasSubstr("8867-4"));
  EXPECT_THAT(whole, Not(HasSubstr("59408-5"))) << "denied";
  EXPECT_EQ(contentsOf(file("out.ndjson")), whole);
  expectRefused(health({"export", "-o", records}), 2, {"is the input itself"});

  writeFile(records, whole + "no record\n" + whole);
  const Result damaged = health({"export", "-o", "-"});
  EXPECT_EQ(damaged.status, 3);
  EXPECT_EQ(damaged.out, whole + whole);
  EXPECT_THAT(damaged.error, HasSubstr("Observations.ndjson: line 2 is no record"));
}

}  // namespace
}  // namespace veyla
