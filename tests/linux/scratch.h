#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>

#include "platform/linux/temporary_folder.h"

namespace veyla {

inline std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::filesystem::path& file, const std::string& contents) {
  std::ofstream(file, std::ios::binary) << contents;
}

/// A folder for one test.
class ScratchFolder : public TemporaryFolder {
 public:
  std::string file(const std::string& name) const { return (path() / name).string(); }

  std::string write(const std::string& name, const std::string& contents) const {
    writeFile(file(name), contents);
    return file(name);
  }

  /// What lies in a folder of it.
  std::set<std::string> names(const std::string& folder = ".") const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file(folder))) {
      names.insert(entry.path().filename());
    }
    return names;
  }

  /// Makes the file `name` with the ffmpeg program.
  std::string ffmpeg(const std::string& arguments, const std::string& name) const {
    const std::string command =
        "ffmpeg -nostdin -v error -y " + arguments + " '" + file(name) + "' >&2";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return file(name);
  }
};

/// Runs `work` in a process of its own, so that its limits and mounts are its own, and returns what
/// it returned; "died" when it did, or when an expectation failed there.
inline std::string inChild(const std::function<std::string()>& work) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string result = work();
    const bool told =
        write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
    _exit(told && !testing::Test::HasFailure() ? 0 : 1);
  }
  close(ends[1]);
  std::string result;
  char block[4096];
  for (ssize_t n = 0; (n = read(ends[0], block, sizeof block)) > 0;) {
    result.append(block, static_cast<std::size_t>(n));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? result : "died";
}

/// The same on a disk on which no file may grow beyond `bytes`.
inline std::string onSmallDisk(rlim_t bytes, const std::function<std::string()>& work) {
  return inChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
    return work();
  });
}

/// Puts an empty disk of `options` at `folder`, seen by this process alone; false where the system
/// does not allow that, as most do to root alone.
inline bool mountDisk(const std::filesystem::path& folder, const char* options) {
  if (unshare(CLONE_NEWNS) != 0) return false;
  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  return mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

inline bool makeReadOnly(const std::filesystem::path& disk) {
  return mount("tmpfs", disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

inline constexpr const char* noMounts = "this system lets no test mount a disk";

}  // namespace veyla
