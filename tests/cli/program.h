#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>

#include <csignal>
#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

#include "tests/linux/scratch.h"

/// Runs the program itself, as a shell would, and keeps what it says.
namespace veyla {

struct Result {
  int status = -1;
  int signal = 0;
  std::string out;
  std::string error;
};

class Program : public testing::Test {
 private:
  ScratchFolder scratch_;

 protected:
  using Arguments = std::vector<std::string>;

  std::filesystem::path folder() const { return scratch_.path(); }
  std::string file(const std::string& name) const { return (folder() / name).string(); }
  std::string write(const std::string& name, const std::string& contents) const {
    writeFile(file(name), contents);
    return file(name);
  }

  /// Runs the program in the scratch folder. `prepare` runs in its process, just before it.
  Result run(const Arguments& arguments, const std::function<void()>& prepare = {}) const {
    const pid_t child = start(arguments, [&] {
      redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
      redirect(STDOUT_FILENO, file("stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC);
      redirect(STDERR_FILENO, file("stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC);
      if (prepare) prepare();
    });
    Result result = ended(child);
    result.out = contentsOf(file("stdout"));
    result.error = contentsOf(file("stderr"));
    return result;
  }

  pid_t start(const Arguments& arguments, const std::function<void()>& prepare) const {
    const pid_t child = fork();
    if (child == 0) {
      prepare();
      execute(arguments);
    }
    return child;
  }

  static Result ended(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    Result result;
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
  }

  static void redirect(int stream, const char* path, int flags) {
    const int opened = open(path, flags, 0600);
    dup2(opened, stream);
    if (opened != stream) close(opened);
  }

  /// Runs the program on a terminal where `typed` is typed, and after `killAfter` bytes of output
  /// sends it `signal`. Everything shown is in `out`.
  Result onTerminal(const Arguments& arguments, std::size_t columns = 80,
                    const std::string& typed = {}, int signal = 0,
                    std::size_t killAfter = 2000) const {
    winsize size{.ws_row = 24,
                 .ws_col = static_cast<unsigned short>(columns),
                 .ws_xpixel = 0,
                 .ws_ypixel = 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) execute(arguments);
    EXPECT_EQ(::write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    std::string shown;
    char block[4096];
    for (ssize_t n = 0; (n = read(terminal, block, sizeof block)) > 0;) {
      shown.append(block, static_cast<std::size_t>(n));
      if (signal != 0 && shown.size() > killAfter) kill(child, std::exchange(signal, 0));
    }
    close(terminal);
    Result result = ended(child);
    result.out = shown;
    return result;
  }

  nlohmann::json json(Arguments arguments, int status = 0) const {
    arguments.emplace_back("--json");
    const Result result = run(arguments);
    EXPECT_EQ(result.status, status) << result.error;
    return nlohmann::json::parse(result.out, nullptr, false);
  }

  /// Expects nothing on standard output, and on standard error one line with all of `parts`.
  void expectRefused(const Result& result, int status,
                     const std::vector<std::string>& parts) const {
    EXPECT_EQ(result.status, status) << result.error;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
    EXPECT_TRUE(result.error.starts_with("veyla: ")) << result.error;
    for (const std::string& part : parts) {
      EXPECT_NE(result.error.find(part), std::string::npos) << part << " in " << result.error;
    }
  }

  std::map<std::string, std::string> environment{
      {"HOME", folder()},   {"XDG_DATA_HOME", folder() / "home"},
      {"TZ", "UTC"},        {"LC_ALL", "C.UTF-8"},
      {"TERM", "xterm"},    {"PATH", "/usr/bin:/bin"},
      {"TMPDIR", folder()}, {"ASAN_OPTIONS", "detect_leaks=0"}};

 private:
  [[noreturn]] void execute(const Arguments& arguments) const {
    std::vector<std::string> words{VEYLA_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings;
    for (const auto& [name, value] : environment) settings.push_back(name + "=" + value);
    const auto pointers = [](std::vector<std::string>& texts) {
      std::vector<char*> list;
      for (std::string& text : texts) list.push_back(text.data());
      list.push_back(nullptr);
      return list;
    };
    if (chdir(folder().c_str()) == 0) {
      execve(VEYLA_PROGRAM, pointers(words).data(), pointers(settings).data());
    }
    _exit(127);
  }
};

/// So that the sanitizers' build, an order of magnitude slower, stays quick.
#ifdef VEYLA_SANITIZED
inline constexpr bool compact = true;
#else
inline constexpr bool compact = false;
#endif

}  // namespace veyla
