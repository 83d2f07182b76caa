#include <sqlite3.h>

#include "apps/cli/complain.h"
#include "tests/cli/program.h"

namespace veyla {
namespace {

class BadInputTest : public Program {
 protected:
  void expectUnreadable(const std::string& path, const std::vector<std::string>& parts) const {
    SCOPED_TRACE(path);
    std::vector<std::string> all{printable(std::filesystem::path(path).filename())};
    all.insert(all.end(), parts.begin(), parts.end());
    expectRefused(run({"measure", path}), 3, all);
    EXPECT_FALSE(std::filesystem::exists(file("home"))) << "a store was made for nothing";
  }

  std::string ffmpeg(const std::string& arguments, const std::string& name) const {
    const std::string command = "ffmpeg -nostdin -v error -y " + arguments + " " + file(name);
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return file(name);
  }

  std::size_t entriesIn(const std::string& data) const {
    const Result shown = run({"measure", "--data", data, "--only", "heartrate", "--json"});
    EXPECT_EQ(shown.status, 0) << shown.error;
    const std::string store = contentsOf(data + "/veyla.db");
    std::size_t count = 0;
    for (std::size_t at = 0; (at = store.find("\"labels\"", at)) != std::string::npos; ++at)
      ++count;
    return count;
  }
};

TEST_F(BadInputTest, WrongUsageIsOneLineWithTheWayOut) {
  const std::vector<std::pair<Arguments, std::vector<std::string>>> cases{
      {{}, {"no command given; see veyla --help"}},
      {{"foo"}, {"foo: no such command; see veyla --help"}},
      {{"measure", "--foo"}, {"--foo: no such option; see veyla measure --help"}},
      {{"measure", "a", "b"}, {"b: not expected here"}},
      {{"measure", ""}, {"INPUT: its text is empty"}},
      {{"measure", "--", "f.csv", "--no-save", "x"}, {"--no-save: not expected here; see"}},
      {{"--data", "x", "history"}, {"--data: no such option before the command; see"}},
      {{"history", "foo", "bar"}, {"foo: no such command; see veyla history --help"}},
      {{"measure", "--start"}, {"--start: its value is missing"}},
      {{"measure", "--only", "spo2", "--only", "spo2"}, {"--only: given more than once"}},
      {{"measure", "--start", "-1"}, {"--start: \"-1\" is no number from 0 to 1000000"}},
      {{"measure", "--start", "nan"}, {"--start: \"nan\""}},
      {{"measure", "--duration", "0"}, {"--duration: \"0\""}},
      {{"measure", "--only", "foo"}, {"\"foo\" is none of heartrate, spo2"}},
      {{"measure", "--data", "X", "--no-save"}, {"--data excludes --no-save"}},
      {{"series", "x.csv"}, {"-o is required; see veyla series --help"}},
      {{"synth", "o.csv", "--bpm", "10"}, {"--bpm: 10 is out of range; give 20 to 300"}},
      {{"synth", "o.csv", "--bpm", "abc"}, {"--bpm: \"abc\" is no number"}},
      {{"synth", "o.csv", "--fps", "nan"}, {"--fps: not a finite number; give 1 to 240"}},
      {{"synth", "o.csv", "--seconds", "1e300"}, {"--seconds: 1e+300 is out of range; give 0.001"}},
      {{"synth", "o.csv", "--size", "8x480"}, {"--size: width: 8 is out of range; give 16 to"}},
      {{"synth", "o.csv", "--from", ""}, {"--from: its text is empty"}},
      {{"synth", "o.csv", "--seed", "-1"}, {"--seed: \"-1\" is no whole number from 0"}},
      {{"synth", "o.csv", "--size", "3"}, {"--size: \"3\" is no size"}},
      {{"evaluate", ".", "--window", "1"}, {"--window: \"1\" is no number from 3"}}};
  for (const auto& [arguments, parts] : cases) expectRefused(run(arguments), 2, parts);
  expectRefused(run({"synth", "out.unknownending"}), 4, {"out.unknownending", "use .mp4"});
  EXPECT_FALSE(std::filesystem::exists(file("o.csv")));
  EXPECT_EQ(run({"measure", "--help"}).status, 0);
}

TEST_F(BadInputTest, WhatIsNoVideoIsRefused) {
  expectUnreadable(file("absent.mp4"), {"no such file"});
  expectUnreadable("-", {"standard input is not read"});
  expectUnreadable(file("line\nfeed\x1b[31m\xC2\x9B\x7F\u00e9.mp4"),
                   {"line?feed?[31m??\u00e9.mp4: no"});
  expectUnreadable(folder(), {"a folder"});
  expectUnreadable(write("empty.mp4", ""), {"an empty file"});
  expectUnreadable(write("text.mp4", "This is a letter and not a film.\n"), {"not a video"});
  expectUnreadable(ffmpeg("-f lavfi -i sine=d=1", "sound.mkv"), {"without a video track"});
  const std::string scene = "-f lavfi -i testsrc=s=64x48:d=1 ";
  for (const char* name : {"still.png", "still.jpg", "still.gif"}) {
    const std::string picture = ffmpeg(scene + "-frames:v 1", name);
    expectUnreadable(picture, {"a picture and no video; film the fingertip"});
    expectRefused(run({"series", picture, "-o", "-"}), 3, {name, "a picture and no video"});
  }
  for (const char* name : {"moving.gif", "moving.mjpeg", "moving.avi"}) {
    EXPECT_EQ(run({"series", ffmpeg(scene, name), "-o", "-"}).status, 0) << name;
  }
}

TEST_F(BadInputTest, AVideoThatBreaksOffIsUsedAsFarAsItGoes) {
  ASSERT_EQ(run({"synth", file("whole.mkv"), "--size", "192x144", "--seconds", "30"}).status, 0);
  const std::string whole = contentsOf(file("whole.mkv"));
  write("cut.mkv", whole.substr(0, whole.size() / 3));
  const Result cut = run({"measure", file("cut.mkv")});
  EXPECT_EQ(cut.status, 1);
  EXPECT_NE(cut.error.find("cut.mkv: cut off after "), std::string::npos) << cut.error;
  EXPECT_NE(cut.out.find("The recording ended after "), std::string::npos) << cut.out;
}

TEST_F(BadInputTest, ASeriesIsKnownByItsFirstLineHoweverItsLinesEnd) {
  std::string rows = "\xEF\xBB\xBFtime,R,G,B\r\n";
  for (int i = 0; i < (compact ? 100000 : 1000000); ++i) {
    rows += std::to_string(33 * i) + ",180,90,30\r\n";
  }
  EXPECT_EQ(
      json({"measure", "--no-save", write("many.csv", rows), "--duration", "30"}, 1)["outcome"],
      "endOfInput");
  expectUnreadable(write("word.csv", "time,R,G,B\n0,180,90,30\n33,word,90,30\n"),
                   {"line 3", "column R", "\"word\" is not a number"});
}

TEST_F(BadInputTest, NothingThatIsKeptIsOverwritten) {
  const std::string data = file("data");
  ASSERT_EQ(run({"health", "allow", "heartrate", "--data", data}).status, 0);
  ASSERT_EQ(run({"measure", "--only", "heartrate", "--data", data}).status, 0);
  ASSERT_EQ(run({"synth", file("s.csv"), "--seconds", "63"}).status, 0);
  write("s.reference.csv", "time,heartrate,spo2\n10,72,97\n");
  const std::string store = file("data/veyla.db");
  const std::string records = file("data/Observations.ndjson");
  const std::string keptStore = contentsOf(store);
  const std::string keptRecords = contentsOf(records);
  ASSERT_FALSE(keptRecords.empty());
  for (const std::string& kept : {store, records}) {
    for (const Arguments& command : {Arguments{"history", "export", "--data", data, "-o", kept},
                                     Arguments{"history", "mail", "--data", data, "-o", kept},
                                     Arguments{"series", file("s.csv"), "-o", kept},
                                     Arguments{"measure", "--no-save", "--trace", kept},
                                     Arguments{"measure", "--no-save", "--log", kept},
                                     Arguments{"evaluate", folder(), "--windows", kept}}) {
      expectRefused(run(command), 4, {kept, "holds what Veyla keeps"});
    }
  }
  expectRefused(run({"health", "export", "--data", data, "-o", store}), 4,
                {"holds what Veyla keeps"});
  EXPECT_EQ(contentsOf(store), keptStore);
  EXPECT_EQ(contentsOf(records), keptRecords);
  for (const char* input : {"s.csv", "s.reference.csv"}) {
    expectRefused(run({"evaluate", folder(), "--windows", file(input)}), 2, {"--windows: ", input});
  }
}

TEST_F(BadInputTest, SettingsThatCannotBeMeasuredWithAreNamed) {
  const std::string original = VEYLA_SETTINGS_FOLDER;
  const auto refused = [&](const std::string& name, const auto& change,
                           const std::vector<std::string>& parts) {
    std::filesystem::create_directory(file("settings"));
    for (const char* each : {"HeartrateSettings", "Spo2Settings", "CameraSettings"}) {
      auto settings = nlohmann::json::parse(contentsOf(original + "/" + each + ".json"));
      if (each == name) change(settings);
      write("settings/" + std::string(each) + ".json", settings.dump());
    }
    if (parts.front() == "no JSON") write("settings/" + name + ".json", "{\"results\": [");
    if (parts.front() == "missing") std::filesystem::remove(file("settings/" + name + ".json"));
    std::vector<std::string> all{name};
    all.insert(all.end(), parts.begin(), parts.end());
    expectRefused(run({"measure", "--no-save", "--settings", file("settings")}), 3, all);
  };
  const auto everyEntry = [](const char* key, nlohmann::json value) {
    return [=](auto& settings) {
      for (auto& entry : settings["results"]) {
        if (entry["iPhoneModel"] == "iphone6s") entry[key] = value;
      }
    };
  };
  const auto nothing = [](auto&) {};
  refused("Spo2Settings", nothing, {"no JSON"});
  refused("CameraSettings", nothing, {"missing"});
  refused("HeartrateSettings", [](auto& settings) { settings = {{"other", 1}}; }, {"\"results\""});
  refused("HeartrateSettings", everyEntry("iPhoneModel", "other"),
          {"no entry for the profile \"iphone6s\"", "nothing can be measured"});
  refused("HeartrateSettings", everyEntry("rawDataSize", 2000), {"\"rawDataSize\"", "3 to 1024"});
  refused("Spo2Settings", everyEntry("skipFramesBetweenMeasurements", 0),
          {"\"skipFramesBetweenMeasurements\""});
  refused("Spo2Settings", everyEntry("grids", {1, 17}), {"\"grids\"", "1 to 16"});
}

TEST_F(BadInputTest, AStoreThatCannotBeUsedIsLeftAsItIs) {
  const std::string data = file("data");
  const Arguments save{"measure", "--only", "heartrate", "--data", data};
  ASSERT_EQ(entriesIn(data), 1U);
  const std::string store = contentsOf(data + "/veyla.db");

  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((data + "/veyla.db").c_str(), &other), SQLITE_OK);
  sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
  expectRefused(run(save), 4, {"veyla.db: locked by another program"});
  sqlite3_close(other);

  const auto small = [] {
    const rlimit limit{1024, 1024};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  const Result full = run(save, small);
  EXPECT_EQ(full.status, 4);
  EXPECT_NE(full.error.find("veyla.db: "), std::string::npos) << full.error;
  EXPECT_EQ(entriesIn(data), 2U) << "an entry was lost or half-written";

  std::string damaged = store;
  damaged.replace(100, 3000, 3000, '\xA5');
  for (const std::string& contents : {damaged, std::string(8192, 'x')}) {
    write("data/veyla.db", contents);
    expectRefused(run(save), 4, {"veyla.db: ", "move"});
    EXPECT_EQ(contentsOf(data + "/veyla.db"), contents);
  }
  write("inTheWay", "");
  expectRefused(run({"measure", "--data", file("inTheWay")}), 4, {"inTheWay", "a file stands"});
}

TEST_F(BadInputTest, TheInputIsNeverWrittenOver) {
  const std::string input = file("in.csv");
  ASSERT_EQ(run({"synth", input}).status, 0);
  const std::string contents = contentsOf(input);
  std::filesystem::create_symlink(input, file("symbolic.csv"));
  std::filesystem::create_hard_link(input, file("hard.csv"));
  for (const std::string name : {"in.csv", "./in.csv", "symbolic.csv", "hard.csv"}) {
    const std::string told = ": " + name + " is the input itself; name another file";
    expectRefused(run({"series", input, "-o", name}), 2, {"-o" + told});
    expectRefused(run({"measure", input, "--trace", name}), 2, {"--trace" + told});
    expectRefused(run({"measure", input, "--log", name}), 2, {"--log" + told});
    expectRefused(run({"synth", "--from", input, name}), 2, {"OUT" + told});
  }
  EXPECT_EQ(contentsOf(input), contents);
  EXPECT_EQ(run({"series", input, "-o", file("out.csv")}).status, 0);
}

TEST_F(BadInputTest, AnInterruptedCommandLeavesNothingBehind) {
  const auto pending = [&] {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      count += entry.path().string().find(".part") != std::string::npos ? 1U : 0U;
    }
    return count;
  };
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    for (const std::string name : {"long.csv", "long.mp4"}) {
      const pid_t child = start({"synth", name, "--seconds", "80000"}, [] {});
      for (int wait = 0; wait < 1000 && pending() == 0; ++wait) usleep(10'000);
      EXPECT_EQ(pending(), 1U);
      kill(child, signal);
      EXPECT_EQ(ended(child).signal, signal);
      EXPECT_EQ(pending(), 0U) << name;
    }
  }
  const Result live =
      onTerminal({"measure", "--no-save", "--realtime", "--trace", "trace.csv"}, 80, "", SIGTERM);
  EXPECT_EQ(live.signal, SIGTERM);
  EXPECT_NE(live.out.find("\x1b[?25h"), std::string::npos);
  EXPECT_EQ(pending(), 0U) << "beside the live view";
}

TEST_F(BadInputTest, OutputThatCannotBeWrittenIsToldAndCostsNoMeasurement) {
  const auto onFullDisk = [] { redirect(STDOUT_FILENO, "/dev/full", O_WRONLY); };
  const auto closed = [] { close(STDOUT_FILENO); };
  const std::string data = file("data");
  const Arguments measure{"measure", "--only", "heartrate", "--data", data};
  const auto with = [&](const std::string& option, const std::string& value) {
    Arguments arguments = measure;
    arguments.insert(arguments.end(), {option, value});
    return arguments;
  };
  expectRefused(run(measure, onFullDisk), 4, {"standard output: the disk is full"});
  expectRefused(run(with("--log", file("log")), closed), 4, {"standard output: closed"});
  EXPECT_EQ(contentsOf(file("log")).find("Heart rate "), std::string::npos)
      << "the result went into the log";
  for (const char* option : {"--trace", "--log"}) {
    const Result full = run(with(option, "/dev/full"));
    EXPECT_EQ(full.status, 4);
    EXPECT_NE(full.error.find("/dev/full"), std::string::npos) << full.error;
  }
  EXPECT_EQ(entriesIn(data), 5U);
  expectRefused(run(with("--trace", file("absent/trace"))), 4, {"absent/trace", "folder"});

  ASSERT_EQ(run({"synth", file("t.csv"), "--seconds", "50"}).status, 0);
  write("t.reference.csv", "time,heartrate,spo2\n0,72,\n50,72,\n");
  expectRefused(run({"evaluate", folder()}, onFullDisk), 4, {"standard output: the disk is full"});
  expectRefused(run({"series", file("t.csv"), "-o", "-"}, onFullDisk), 4, {"standard output"});

  const auto small = [] {
    const rlimit limit{1024, 1024};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  for (const std::string name : {"large.csv", "large.mkv"}) {
    expectRefused(run({"synth", name, "--seconds", "5"}, small), 4,
                  {name + ": larger than the system allows; choose"});
    EXPECT_FALSE(std::filesystem::exists(file(name)));
  }
  // As services are started: what nobody reads ends no program there.
  const auto unread = [] {
    signal(SIGPIPE, SIG_IGN);
    int ends[2];
    if (pipe(ends) != 0) _exit(127);
    close(ends[0]);
    dup2(ends[1], STDOUT_FILENO);
  };
  expectRefused(run({"series", file("t.csv"), "-o", "-"}, unread), 4,
                {"standard output: nobody reads the pipe any more; keep"});
  const Result log = run(with("--log", "absent/log"));
  EXPECT_NE(log.error.find("its folder does not exist; make it first"), std::string::npos)
      << log.error;
  expectRefused(run(with("--log", "t.csv/log")), 4, {"a file stands where a folder must be"});
}

}  // namespace
}  // namespace veyla
