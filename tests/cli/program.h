#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <iomanip>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "platform/linux/sqlite_key_value_store.h"
#include "tests/linux/scratch.h"

/// Runs the program itself, as a shell would, and keeps what it says.
namespace veyla {

using namespace testing;
using Json = nlohmann::json;

struct Result {
  /// As a shell tells it: 128 more than a signal that ended the program.
  int status = -1;
  std::string out;
  std::string error;
};

inline std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

inline std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

/// An entry of the history with the label of this number alone.
inline Value entry(double hr, double spo2, double seconds, std::size_t label = 7) {
  Value::Array labels;
  for (std::size_t i = 0; i < 7; ++i) labels.emplace_back(i == label);
  return Value::Dictionary{{"hr", hr}, {"spo2", spo2}, {"date", Date{seconds}}, {"labels", labels}};
}

/// The most columns that a line takes: sequences of a terminal take none, a character one.
inline auto widestLine(const std::string& text) {
  static const std::regex sequence("\x1b\\[[0-9;?]*[A-Za-z]|\r");
  std::ptrdiff_t widest = 0;
  for (const std::string& line : linesOf(std::regex_replace(text, sequence, ""))) {
    widest = std::max(
        widest, std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; }));
  }
  return widest;
}

inline bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

class Program : public testing::Test, protected ScratchFolder {
 protected:
  /// The history, oldest first.
  void keep(const Value& values) const {
    SqliteKeyValueStore store(file("data"));
    store.setValue("values", values);
    store.synchronize();
    EXPECT_FALSE(store.failure());
  }
  Value kept() const { return SqliteKeyValueStore(file("data")).value("values").value_or(Value()); }

  /// Makes a program of this name and script that is found before the system's own.
  void provide(const std::string& name, const std::string& script) {
    std::filesystem::create_directories(file("bin"));
    write("bin/" + name, "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(file("bin/" + name), std::filesystem::perms::owner_all);
    environment["PATH"] = file("bin") + ":/usr/bin:/bin";
  }

  /// Writes `name` like the series of finger.csv but for some seconds, where each row is as
  /// `pattern` makes it of its time, red, green and blue ($1 to $4), or missing for an empty one.
  std::string changed(const std::string& name, const char* pattern, double from = 0,
                      double to = 1000) const {
    static const std::regex row("(.*),(.*),(.*),(.*)");
    std::string text;
    for (std::string line : linesOf(contentsOf(file("finger.csv")))) {
      const double second = line[0] == 't' ? -1 : std::stod(line) / 1000;
      if (second >= from && second < to) line = std::regex_replace(line, row, pattern);
      if (!line.empty()) text += line + '\n';
    }
    return write(name, text);
  }

  /// Runs the program in the scratch folder with these words, which may stand in single quotes.
  /// `prepare` runs in its process, just before it.
  Result run(const std::string& words, const std::function<void()>& prepare = {}) const {
    const ScratchFolder said;
    const pid_t child = start(words, [&] {
      redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
      redirect(STDOUT_FILENO, said.file("out").c_str(), O_WRONLY | O_CREAT);
      redirect(STDERR_FILENO, said.file("error").c_str(), O_WRONLY | O_CREAT);
      if (prepare) prepare();
    });
    const int status = ended(child);
    return {status, contentsOf(said.file("out")), contentsOf(said.file("error"))};
  }

  /// Runs it to its end without a complaint, and returns what it printed.
  std::string done(const std::string& words) const {
    const Result result = run(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    return result.out;
  }

  pid_t start(const std::string& words, const std::function<void()>& prepare) const {
    const pid_t child = fork();
    if (child == 0) {
      prepare();
      execute(words);
    }
    return child;
  }

  static int ended(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  }

  static void redirect(int stream, const char* path, int flags) {
    const int opened = open(path, flags, 0600);
    dup2(opened, stream);
    if (opened != stream) close(opened);
  }

  // For `prepare`.
  static void onFullDisk() { redirect(STDOUT_FILENO, "/dev/full", O_WRONLY); }
  static void withSmallFiles() {
    const rlimit limit{1024, 1024};
    setrlimit(RLIMIT_FSIZE, &limit);
  }

  /// Runs the program on a terminal where `typed` is typed, and sends it `signal` as soon as it has
  /// shown `awaited`. Everything shown is in `out`.
  Result onTerminal(const std::string& words, int columns = 80, const std::string& typed = {},
                    int signal = 0, const char* awaited = hidden) const {
    winsize size{24, static_cast<unsigned short>(columns), 0, 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) execute(words);
    EXPECT_EQ(::write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    std::string output;
    char block[4096];
    for (ssize_t n = 0; (n = read(terminal, block, sizeof block)) > 0;) {
      output.append(block, static_cast<std::size_t>(n));
      if (signal != 0 && output.find(awaited) != std::string::npos) {
        kill(child, std::exchange(signal, 0));
      }
    }
    close(terminal);
    return {ended(child), output, ""};
  }

  Json json(const std::string& words, int status = 0) const {
    const Result result = run(words + " --json");
    EXPECT_EQ(result.status, status) << result.error;
    return Json::parse(result.out, nullptr, false);
  }

  /// Expects nothing on standard output, and on standard error one line with `part`.
  static void expectRefused(const Result& result, int status, const std::string& part) {
    EXPECT_EQ(result.status, status) << result.error;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.error, AllOf(StartsWith("veyla: "), HasSubstr(part)));
    EXPECT_EQ(linesOf(result.error).size(), 1U) << result.error;
  }

  /// What hides the terminal's cursor and brings it back.
  static constexpr const char* hidden = "\x1b[?25l";
  static constexpr const char* shown = "\x1b[?25h";

  std::string executable = VEYLA_PROGRAM;
  std::map<std::string, std::string> environment{
      {"HOME", path()},   {"XDG_DATA_HOME", path() / "home"},
      {"TZ", "UTC"},      {"LC_ALL", "C.UTF-8"},
      {"TERM", "xterm"},  {"PATH", "/usr/bin:/bin"},
      {"TMPDIR", path()}, {"ASAN_OPTIONS", "detect_leaks=0"}};

 private:
  [[noreturn]] void execute(const std::string& words) const {
    // What runs in the background may have been told to ignore them.
    for (const int each : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) std::signal(each, SIG_DFL);
    clearenv();
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    std::vector<std::string> arguments{executable};
    std::istringstream line(words);
    for (std::string word; line >> std::quoted(word, '\'');) arguments.push_back(word);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    if (chdir(path().c_str()) == 0) execv(executable.c_str(), pointers.data());
    _exit(127);
  }
};

}  // namespace veyla
