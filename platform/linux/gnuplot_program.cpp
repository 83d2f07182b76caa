#include "platform/linux/gnuplot_program.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/output_file.h"

namespace veyla {

namespace {

[[noreturn]] void refuse(const std::string& reason, const std::string& wayOut) {
  throw OutputError("gnuplot: " + reason + "; " + wayOut);
}

/// A file in memory: no pipe that fills up while the other end waits, and nothing to clean up.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name) : descriptor_(memfd_create(name, MFD_CLOEXEC)) {
    if (descriptor_ < 0) refuse(std::strerror(errno), "check the machine's limits");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int descriptor() const { return descriptor_; }

  void write(const std::string& text) const {
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t more = ::write(descriptor_, text.data() + written, text.size() - written);
      if (more < 0) refuse(std::strerror(errno), "check the machine's limits");
      written += static_cast<std::size_t>(more);
    }
    lseek(descriptor_, 0, SEEK_SET);
  }

  std::string contents() const {
    lseek(descriptor_, 0, SEEK_SET);
    std::string text;
    std::array<char, 65536> block;
    for (ssize_t size = 0; (size = ::read(descriptor_, block.data(), block.size())) > 0;) {
      text.append(block.data(), static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int descriptor_;
};

/// The last line that says something: gnuplot tells the place first and the reason last.
std::string lastLineOf(std::string text) {
  constexpr const char* blanks = " \t\r\n";
  text.erase(text.find_last_not_of(blanks) + 1);
  const std::size_t start = text.find_last_of('\n');
  return start == std::string::npos ? text : text.substr(start + 1);
}

}  // namespace

std::string runGnuplot(const std::string& script) {
  const MemoryFile input("script");
  const MemoryFile output("drawing");
  const MemoryFile complaints("complaints");
  input.write(script);

  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  posix_spawn_file_actions_adddup2(&streams, input.descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&streams, output.descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&streams, complaints.descriptor(), STDERR_FILENO);
  std::string name = "gnuplot";
  // The user's own settings of gnuplot are not for these drawings.
  std::string withoutSettings = "-d";
  const std::array<char*, 3> arguments{name.data(), withoutSettings.data(), nullptr};
  pid_t child = 0;
  const int error =
      posix_spawnp(&child, name.c_str(), &streams, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&streams);
  if (error == ENOENT) refuse("not found", "install it: apt-get install gnuplot-nox");
  if (error != 0) refuse(std::strerror(error), "install it again: apt-get install gnuplot-nox");

  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    const std::string reason = lastLineOf(complaints.contents());
    refuse(reason.empty() ? "it broke off" : reason,
           "check it with gnuplot --version, which must be 5.4 or newer");
  }
  return output.contents();
}

}  // namespace veyla
