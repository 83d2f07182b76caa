#include "platform/linux/desktop.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace veyla {

namespace {

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

bool hasDesktop() { return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"); }

/// Runs a program found on the path, without a shell, and waits for its end. Whether it succeeded;
/// what it prints goes to `output`, which may be null.
bool runProgram(const std::vector<std::string>& words, std::string* output = nullptr) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  if (output) {
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }

  std::vector<std::string> copies = words;
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int refused =
      posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (refused == 0 && output) {
    char block[256];
    for (ssize_t n = 0; (n = read(ends[0], block, sizeof block)) > 0;) {
      output->append(block, static_cast<std::size_t>(n));
    }
  }
  close(ends[0]);
  int status = 0;
  return refused == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

}  // namespace

bool desktopHasMailProgram() {
  std::string program;
  return hasDesktop() && runProgram({"xdg-mime", "query", "default", "message/rfc822"}, &program) &&
         program.find(".desktop") != std::string::npos;
}

bool openMailInDesktop(const std::string& file) { return runProgram({"xdg-open", file}); }

bool openAddressInDesktop(const std::string& address) {
  return hasDesktop() && runProgram({"xdg-open", address});
}

}  // namespace veyla
