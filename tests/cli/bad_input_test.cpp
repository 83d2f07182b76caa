#include "tests/cli/program.h"

namespace veyla {
namespace {

using BadInputTest = Program;

TEST_F(BadInputTest, ARefusalIsOneLineWithTheWayOutAndTouchesNothing) {
  write("file", "mine");
  struct Case {
    int status;
    const char* words;
    const char* part;
  };
  for (const auto& [status, words, part] : std::vector<Case>{
           {2, "", "no command given; see veyla --help"},
           {2, "foo", "foo: no such command; see veyla --help"},
           {2, "--data x history", "--data: no such option before the command; see"},
           {2, "measure --foo", "--foo: no such option; see veyla measure --help"},
           {2, "series a b -o c", "b: not expected here"},
           {2, "measure ''", "INPUT: its text is empty"},
           {2, "measure --start", "--start: its value is missing"},
           {2, "measure --only spo2 --only spo2", "--only: given more than once"},
           {2, "measure --start nan", "--start: \"nan\" is no number from 0 to 1000000"},
           {2, "measure --start 1:75", "--start: \"1:75\" is no time such as 1:23.5"},
           {2, "measure --best", "--best: of several measurements of a recording; give --every"},
           {2, "measure --json --csv -", "--csv and --json: both would go to standard output"},
           {2, "measure --only foo", "\"foo\" is none of heartrate, spo2"},
           {2, "measure --data X --no-save", "--data excludes --no-save"},
           {2, "measure --json --trace -", "both would go to standard output"},
           {2, "measure --scale 3", "--scale: nothing is drawn"},
           {2, "measure --snapshot -", "--snapshot -: the result goes to standard output"},
           {2, "measure --snapshot a.png --trace a.png", "both would go to a.png"},
           {2, "series x.csv", "-o is required; see veyla series --help"},
           {2, "synth o.csv --seed -1", "--seed: \"-1\" is no whole number from 0"},
           {2, "synth o.csv --size 3", "--size: \"3\" is no size"},
           {2, "synth o.csv --size 16x4321", "--size: height: 4321 is out of range"},
           {2, "synth o.csv --bpm 19.5", "--bpm: 19.5 is out of range; give 20 to 300"},
           {2, "synth o.csv --from file --bpm 60", "--bpm excludes --from"},
           {2, "evaluate . --plots p --only spo2", "--plots: heart rates are"},
           {2, "history delete", "N is required; see veyla history delete --help"},
           {2, "history delete 02", "N: \"02\""},
           {2, "history delete 1", "no entry 1, the history in "},
           {2, "history mail -o -", "nothing to mail, no measurements in"},
           {2, "history label 1 none --off", "--off: \"none\" takes every label off"},
           {2, "history --json delete 1", "--json: only the list is printed so"},
           {2, "chart -o a.txt", "-o: a.txt does not end in .png or .svg"},
           {3, "measure -", "standard input: an empty file"},
           {3, "measure no.mp4 --frames new", "no.mp4: no such file; check the name"},
           {3, "measure '\n\x1b\xC2\x9B\x7F\u00e9.mp4'", "veyla: ????\u00e9.mp4: no such file"},
           {3, "evaluate no", "no: no such folder; check the name"},
           // A named folder is one that is known to hold something.
           {3, "history --data no", "veyla.db: no such file; name the folder"},
           {4, "measure --no-save --frames file", "file: a file stands where a folder"},
           {4, "measure --no-save --frames .",
            ".: holds file, which is no picture of a measurement; name"},
           {4, "measure --no-save --trace no/a", "no/a: its folder does not exist"}}) {
    expectRefused(run(words), status, part);
  }
  EXPECT_EQ(contentsOf(file("file")), "mine");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(BadInputTest, WhatIsKeptIsNeverOverwritten) {
  done("health allow heartrate --data data");
  done("measure --only heartrate --data data");
  done("synth s.csv --seconds 1");
  write("s.reference.csv", "time,heartrate,spo2\n10,72,97\n");
  std::filesystem::create_directory(file("links"));
  std::filesystem::create_symlink("../data/veyla.db", file("links/store"));
  std::filesystem::create_symlink("../data/Observations.ndjson", file("links/records"));
  std::filesystem::copy(file("data"), file("damaged"));
  write("damaged/veyla.db", "no head\n");
  // The user's own folder, whose store lies elsewhere, and whose records have lost theirs.
  std::filesystem::create_directories(file("home/veyla"));
  std::filesystem::copy(file("data"), file("moved"));
  write("moved/store.db", "no head\n");
  std::filesystem::create_symlink(file("moved/store.db"), file("home/veyla/veyla.db"));
  for (const std::string name : {"data/veyla.db", "data/Observations.ndjson", "links/store",
                                 "links/records", "damaged/veyla.db", "damaged/Observations.ndjson",
                                 "moved/store.db", "moved/Observations.ndjson"}) {
    const std::string contents = contentsOf(file(name));
    ASSERT_NE(contents, "");
    for (const char* command :
         {"history export --data data -o ", "history mail --data data -o ", "series s.csv -o ",
          "measure --no-save --trace ", "measure --no-save --csv ", "measure --no-save --log ",
          "evaluate . --windows "}) {
      expectRefused(run(command + name), 4, name + ": holds what Veyla keeps");
    }
    EXPECT_EQ(contentsOf(file(name)), contents);
  }
}

TEST_F(BadInputTest, TheInputIsNeverWrittenOver) {
  done("synth in.csv");
  const std::string contents = contentsOf(file("in.csv"));
  std::filesystem::create_symlink(file("in.csv"), file("link.png"));
  std::filesystem::create_hard_link(file("in.csv"), file("hard.csv"));
  for (const std::string name : {"./in.csv", "link.png", "hard.csv"}) {
    const std::pair<const char*, const char*> commands[] = {
        {"series in.csv ", "-o"},     {"measure in.csv ", "--trace"},
        {"measure in.csv ", "--log"}, {"synth --from in.csv ", ""},
        {"evaluate . ", "--windows"}, {"measure in.csv ", "--snapshot"}};
    for (const auto& [command, option] : commands) {
      expectRefused(run(std::string(command) + option + " " + name), 2,
                    (*option ? option : std::string("OUT")) + ": " + name +
                        " is the input itself; name another file");
    }
  }
  EXPECT_EQ(contentsOf(file("in.csv")), contents);
}

TEST_F(BadInputTest, SettingsThatCannotBeMeasuredWithAreNamed) {
  std::filesystem::copy(VEYLA_SETTINGS_FOLDER, file("settings"));
  write("settings/HeartrateSettings.json", R"({"results": []})");
  expectRefused(run("measure --settings settings"), 3,
                "settings/HeartrateSettings.json: has no entry for the profile \"iphone6s\"");
}

TEST_F(BadInputTest, AnInterruptedCommandLeavesNothingBehind) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const std::string name : {"long.csv", "long.mp4"}) {
      const ScratchFolder said;
      const pid_t child = start("synth --seconds 80000 --fps 240 " + name, [&] {
        redirect(STDERR_FILENO, said.file("error").c_str(), O_WRONLY | O_CREAT);
        setpriority(PRIO_PROCESS, 0, 19);
      });
      while (names().empty() && waitpid(child, nullptr, WNOHANG) == 0) usleep(1000);
      kill(child, signal);
      EXPECT_EQ(ended(child), 128 + signal);
      EXPECT_THAT(names(), IsEmpty());
      EXPECT_EQ(contentsOf(said.file("error")),
                "veyla: stopped while drawing; " + name + " is not written\n");
    }
  }

  for (const char* folder : {"many", "one"}) std::filesystem::create_directory(file(folder));
  for (const char* of : {"finger.csv", "one/long.csv"}) {
    done(std::string("synth --seconds 600 ") + of);
  }
  write("one/long.reference.csv", "time,heartrate,spo2\n0,72,97\n");
  // Never final, however late the signal comes.
  std::string dark = "time,R,G,B\n";
  for (int i = 0; i < 9000; ++i) dark += std::to_string(66 * i) + ",1,1,1\n";
  write("dark.csv", dark);
  for (int i = 100; i < 1000; ++i) {
    std::filesystem::create_hard_link(file("finger.csv"),
                                      file("many/" + std::to_string(i) + ".csv"));
  }
  const auto before = names();
  int signal = SIGTERM;
  for (const auto& [words, awaited, farewell] : std::vector<std::array<const char*, 3>>{
           {"measure --no-save --realtime", hidden, "while measuring the built-in fingertip"},
           {"measure dark.csv --no-save --realtime --trace trace.csv --frames kept/frames",
            "Analyzing", "while measuring dark.csv; the pictures so far are in kept/frames"},
           {"measure many --csv rows.csv", "many/100.csv ",
            "after \\d+ of 900 recordings; nothing is saved; rows.csv is not written"},
           {"measure many --save --data kept", "many/100.csv ",
            "after \\d+ of 900 recordings; those that finished are saved"},
           {"measure finger.csv --every 0.1 --csv rows.csv", "Read 12 s\rRead 13 s",
            "after \\d+ of .*; nothing is saved; rows.csv is not written"},
           {"measure finger.csv --every 0.1 --csv rows.csv", "Measuring",
            "after \\d+ of \\d+ measurements, before their lines; nothing is saved; rows.csv is "
            "not written"},
           {"series finger.csv -o -", "time,R,G,B,hr",
            "while reading finger.csv; the series breaks off where it stands"},
           {"evaluate one --every 0.1 --plots new/plots --windows rows.csv", "Measuring",
            "while measuring the folder; nothing is printed and no file is written"},
           {"evaluate one --every 0.1", "Read 2 s\rRead 3 s", "while measuring the folder; .*"}}) {
    signal = signal == SIGTERM ? SIGINT : SIGTERM;
    const Result stopped = onTerminal(words, 80, "", signal, awaited);
    EXPECT_EQ(stopped.status, 128 + signal) << words;
    const std::string last = linesOf(stopped.out).back();
    EXPECT_TRUE(
        std::regex_search(last, std::regex("veyla: stopped " + std::string(farewell) + "\r$")))
        << last;
    EXPECT_EQ(countOf(shown, stopped.out), countOf(hidden, stopped.out)) << "the cursor comes back";
    std::filesystem::remove_all(file("kept"));
    EXPECT_EQ(names(), before) << words;
  }
}

TEST_F(BadInputTest, OutputThatCannotBeWrittenIsToldAndCostsNoMeasurement) {
  const auto measure = [&](const std::string& more, const std::function<void()>& prepare = {}) {
    return run("measure --only heartrate --data data " + more, prepare);
  };
  expectRefused(measure("--trace trace", onFullDisk), 4, "standard output: the disk is full");
  EXPECT_THAT(contentsOf(file("trace")), HasSubstr("heartrate,accepted"));
  expectRefused(measure("--log log", [] { close(STDOUT_FILENO); }), 4, "standard output: closed");
  EXPECT_THAT(contentsOf(file("log")), Not(HasSubstr("Heart rate "))) << "the result is no log";
  for (const char* option : {"--trace", "--log"}) {
    const Result full = measure(option + std::string(" /dev/full"));
    EXPECT_EQ(full.status, 4);
    EXPECT_THAT(full.error, HasSubstr("/dev/full"));
    EXPECT_THAT(full.out, HasSubstr("Saved in data"));
  }
  EXPECT_EQ(json("history --data data").size(), 4U);
  done("synth t.csv --seconds 50");
  for (const char* command : {"series t.csv -o -", "--version", "series --help"}) {
    expectRefused(run(command, onFullDisk), 4, "standard output: the disk");
  }
  // As services are started: what nobody reads ends no program there.
  const auto unread = [] {
    signal(SIGPIPE, SIG_IGN);
    int ends[2];
    if (pipe(ends) != 0) _exit(127);
    close(ends[0]);
    dup2(ends[1], STDOUT_FILENO);
  };
  expectRefused(run("series t.csv -o -", unread), 4,
                "standard output: nobody reads the pipe any more; keep");
}

}  // namespace
}  // namespace veyla
