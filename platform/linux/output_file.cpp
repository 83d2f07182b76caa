#include "platform/linux/output_file.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/linux/file_problem.h"

namespace veyla {

namespace {

/// The names of the files that are pending, where a signal's handler can read them at any moment.
/// Files beyond the table's size stay behind when a signal ends the program.
struct PendingName {
  std::atomic<bool> claimed = false;
  std::atomic<bool> valid = false;
  std::array<char, PATH_MAX> path{};
};
std::array<PendingName, 8> pendingNames;
static_assert(std::atomic<bool>::is_always_lock_free);

void rememberPending(const std::string& path) {
  if (path.size() >= PATH_MAX) return;
  for (PendingName& name : pendingNames) {
    if (name.claimed.exchange(true)) continue;
    std::memcpy(name.path.data(), path.c_str(), path.size() + 1);
    name.valid = true;
    return;
  }
}

void forgetPending(const std::string& path) {
  for (PendingName& name : pendingNames) {
    if (!name.valid || path != name.path.data()) continue;
    name.valid = false;
    name.claimed = false;
  }
}

extern "C" void removePendingFilesAndEnd(int signal) {
  for (const PendingName& name : pendingNames) {
    if (name.valid) ::unlink(name.path.data());
  }
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

constexpr std::array interruptions{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// Holds interruptions back while it lives: a file that one would remove is made and noted as one
/// step.
class InterruptionsHeldBack {
 public:
  InterruptionsHeldBack() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : interruptions) sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, &former_);
  }
  ~InterruptionsHeldBack() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  InterruptionsHeldBack(const InterruptionsHeldBack&) = delete;
  InterruptionsHeldBack& operator=(const InterruptionsHeldBack&) = delete;

 private:
  sigset_t former_{};
};

bool isRegularOrAbsent(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

bool isFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

[[noreturn]] void refuseOutput(const std::string& path, int systemError) {
  throw OutputError(path == "-" ? fileProblem("standard output", systemError, FilePlace::stream)
                                : fileProblem(path, systemError, FilePlace::outputFile));
}

}  // namespace

PendingFile::PendingFile(const std::string& target) : target_(target), place_(target) {
  if (isFolder(target)) refuse(EISDIR);
  if (!isRegularOrAbsent(target)) {
    throw OutputError(target + ": not a regular file; name one that is or a new one");
  }
  std::error_code unresolved;
  const auto resolved = std::filesystem::weakly_canonical(target, unresolved);
  if (!unresolved) place_ = resolved.string();
  if (access(place_.c_str(), F_OK) == 0 && access(place_.c_str(), W_OK) != 0) refuse(errno);

  constexpr int attempts = 100;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    path_ = place_ + ".part" + std::to_string(getpid()) + (attempt ? std::to_string(-attempt) : "");
    const InterruptionsHeldBack heldBack;
    const int file = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) {
      close(file);
      rememberPending(path_);
      return;
    }
    if (errno != EEXIST) break;
  }
  const int reason = errno;
  path_.clear();
  refuse(reason);
}

PendingFile::~PendingFile() {
  if (path_.empty()) return;
  unlink(path_.c_str());
  forgetPending(path_);
}

void PendingFile::commit() {
  if (std::rename(path_.c_str(), place_.c_str()) != 0) refuse(errno);
  forgetPending(path_);
  path_.clear();
}

void removePendingFilesWhenInterrupted() {
  for (const int signal : interruptions) {
    if (::signal(signal, removePendingFilesAndEnd) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

void PendingFile::refuse(int systemError) const { refuseOutput(target_, systemError); }

OutputFile::OutputFile(const std::string& path) : path_(path), file_(stdout) {
  if (path == "-") return;
  std::string opened = path;
  if (isFolder(path) || isRegularOrAbsent(path)) {
    pending_ = std::make_unique<PendingFile>(path);
    opened = pending_->path();
  }
  file_ = std::fopen(opened.c_str(), "wbe");
  requireWritten(file_ != nullptr);
}

OutputFile::~OutputFile() {
  if (file_ && file_ != stdout) std::fclose(file_);
}

void OutputFile::write(std::string_view text) {
  requireWritten(std::fwrite(text.data(), 1, text.size(), file_) == text.size());
}

void OutputFile::commit() {
  if (file_ == stdout) {
    requireWritten(std::fflush(file_) == 0);
    return;
  }
  requireWritten(std::fclose(std::exchange(file_, nullptr)) == 0);
  if (pending_) pending_->commit();
}

void OutputFile::requireWritten(bool written) const {
  if (!written) refuseOutput(path_, errno);
}

void printOut(std::string_view text) {
  OutputFile output("-");
  output.write(text);
  output.commit();
}

}  // namespace veyla
