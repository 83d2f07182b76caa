#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

namespace veyla {

/// A folder for one test, gone after it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "veyla.XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::filesystem::path& file, const std::string& contents) {
  std::ofstream(file, std::ios::binary) << contents;
}

/// Runs `work` in a process of its own, so that its limits and mounts are its own, and returns what
/// it returned; "died" when it did.
inline std::string inChild(const std::function<std::string()>& work) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string result = work();
    const bool told =
        write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
    _exit(told ? 0 : 1);
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

/// Puts an empty disk of `options` at `folder`, seen by this process alone; false where the system
/// does not allow that.
inline bool mountDisk(const std::filesystem::path& folder, const char* options) {
  if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  return mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

inline bool makeReadOnly(const std::filesystem::path& disk) {
  return mount("tmpfs", disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

inline constexpr const char* noMounts = "this system lets no test mount a disk";

}  // namespace veyla
