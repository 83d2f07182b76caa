#include "platform/linux/output_file.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/data_folder.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/store_error.h"

namespace veyla {

namespace {

/// Between the target's name and the number of the process that writes it.
constexpr const char* partSuffix = ".part";

/// The names of the files and folders that are pending, where a signal's handler can read them at
/// any moment. Files beyond the table's size stay behind when a signal ends the program.
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

/// The line for an interrupt, where a signal's handler can read it at any moment: one of two, so
/// that the next one is written beside it.
struct Farewell {
  std::array<char, 2 * PATH_MAX> text{};
  std::size_t size = 0;
};
std::array<Farewell, 2> farewells;
std::atomic<const Farewell*> farewell = nullptr;
std::mutex farewellMutex;

extern "C" void removePendingFilesAndEnd(int signal) {
  for (const PendingName& name : pendingNames) {
    if (name.valid) ::unlink(name.path.data());
  }
  for (const PendingName& name : pendingNames) {
    if (name.valid) ::rmdir(name.path.data());
  }
  if (const Farewell* last = farewell) {
    [[maybe_unused]] const ssize_t told = ::write(STDERR_FILENO, last->text.data(), last->size);
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

/// Gives `to` the access list of `from`, or its lack of one; false when it cannot.
bool copyAccessList(const char* from, const char* to) {
  constexpr const char* list = "system.posix_acl_access";
  std::vector<char> value(XATTR_SIZE_MAX);
  const ssize_t size = getxattr(from, list, value.data(), value.size());
  if (size >= 0) return setxattr(to, list, value.data(), static_cast<std::size_t>(size), 0) == 0;
  // The folder may have given it one.
  return removexattr(to, list) == 0 || errno == ENODATA || errno == ENOTSUP;
}

/// Makes the new file at `to` accessible to those to whom the one at `from` is.
void copyAccess(const char* from, const char* to) {
  struct stat former {};
  if (stat(from, &former) != 0) return;
  constexpr uid_t sameOwner = static_cast<uid_t>(-1);
  constexpr gid_t sameGroup = static_cast<gid_t>(-1);
  mode_t mode = former.st_mode & 0777U;
  if (chown(to, sameOwner, former.st_gid) != 0 || !copyAccessList(from, to)) {
    mode = (mode & 0707U) | (mode & 0007U) << 3;
  }
  // What the system does not allow leaves the file to its owner alone, which harms nobody.
  [[maybe_unused]] const bool allowed =
      chmod(to, mode) == 0 && chown(to, former.st_uid, sameGroup) == 0;
}

/// Removes what programs that were killed have left beside this place.
void removeDeadParts(const std::string& place) {
  namespace fs = std::filesystem;
  const fs::path file(place);
  const std::string start = file.filename().string() + partSuffix;
  std::error_code error;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(start)) continue;
    const std::string digits =
        name.substr(start.size(), name.find('-', start.size()) - start.size());
    const long writer = std::strtol(digits.c_str(), nullptr, 10);
    const bool isDead = writer > 0 && std::to_string(writer) == digits &&
                        kill(static_cast<pid_t>(writer), 0) != 0 && errno == ESRCH;
    if (isDead) fs::remove(entry.path(), error);
  }
}

/// On the disk, whatever happens to the machine. What cannot be synchronized, such as a folder on
/// some file systems, is left to the system.
bool synchronized(const std::string& path, int flags) {
  const int file = open(path.c_str(), flags | O_CLOEXEC);
  if (file < 0) return false;
  const bool done = fsync(file) == 0 || errno == EINVAL || errno == EROFS;
  const int error = errno;
  close(file);
  errno = error;
  return done;
}

/// How long a pipe may have nobody who reads it.
constexpr std::chrono::milliseconds patience{5000};

/// The data folders that outputs are kept from; several measurements may name one at a time.
struct KeptFolders {
  std::mutex mutex;
  std::set<std::filesystem::path> folders;
};
KeptFolders keptFolders;

/// What the names in a data folder lead to.
bool isKeptIn(const std::filesystem::path& folder, const std::filesystem::path& file) {
  std::error_code error;
  for (const char* name : {"veyla.db", "Observations.ndjson", "Observations.ndjson.damaged"}) {
    const std::string kept = std::filesystem::weakly_canonical(folder / name, error).string();
    if (file == kept) return std::filesystem::exists(file, error);
    for (const char* ending : {"-journal", "-wal", "-shm"}) {
      if (file == kept + ending) return true;
    }
  }
  return false;
}

[[noreturn]] void refuseOutput(const std::string& path, int systemError) {
  throw OutputError(path == "-" ? fileProblem("standard output", systemError, FilePlace::stream)
                                : fileProblem(path, systemError, FilePlace::outputFile));
}

}  // namespace

void keepOutputsFrom(const std::filesystem::path& dataFolder) {
  const std::lock_guard lock(keptFolders.mutex);
  keptFolders.folders.insert(dataFolder);
}

int openInPlace(const std::string& path, int flags) {
  const auto end = std::chrono::steady_clock::now() + patience;
  int file = -1;
  do {
    file = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file >= 0 || errno != ENXIO) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  } while (std::chrono::steady_clock::now() < end);
  if (file >= 0) fcntl(file, F_SETFL, fcntl(file, F_GETFL) & ~O_NONBLOCK);
  return file;
}

std::string nobodyReads(const std::string& path) {
  return path + ": nobody reads this pipe; start what does first";
}

void requireNoKeptData(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  // Where links lead, also to a file that is not there yet.
  fs::path file = fs::weakly_canonical(path, error);
  if (error) file = path;
  constexpr std::string_view storeHead = "SQLite format 3";
  std::array<char, storeHead.size()> head{};
  if (isRegularOrAbsent(file)) std::ifstream(file, std::ios::binary).read(head.data(), head.size());

  constexpr const char* store = "veyla.db";
  const std::string name = file.filename().string();
  // The store and its journals by their names, since a damaged one has no head to go by.
  const bool isStore = std::string_view(head.data(), head.size()) == storeHead ||
                       (name.starts_with(store) && fs::exists(file, error));
  // By the name alone as well: the store that they belong to may lie elsewhere for a while.
  const bool isRecords = name.starts_with("Observations.ndjson");
  const bool areRecords = isRecords && fs::exists(file, error);
  // What takes a journal's name beside the store is taken for one, and deleted, when that is
  // opened.
  const bool isBeside =
      isRecords || name == "veyla.db-journal" || name == "veyla.db-wal" || name == "veyla.db-shm";
  std::set<fs::path> folders;
  {
    const std::lock_guard lock(keptFolders.mutex);
    folders = keptFolders.folders;
  }
  try {
    folders.insert(defaultDataFolder());
  } catch (const StoreError&) {
    // Whoever has no home has no folder there.
  }
  const bool isLedTo = std::any_of(folders.begin(), folders.end(),
                                   [&](const fs::path& each) { return isKeptIn(each, file); });
  if (isStore || areRecords || isLedTo ||
      (isBeside && fs::exists(file.parent_path() / store, error))) {
    throw OutputError(path + ": holds what Veyla keeps, which would be lost; name another file");
  }
}

PendingFile::PendingFile(const std::string& target, Readers readers)
    : target_(target), place_(target) {
  requireNoKeptData(target);
  if (isFolder(target)) refuse(EISDIR);
  if (!isRegularOrAbsent(target)) {
    throw OutputError(target + ": not a regular file; name one that is or a new one");
  }
  std::error_code unresolved;
  const auto resolved = std::filesystem::weakly_canonical(target, unresolved);
  if (!unresolved) place_ = resolved.string();
  struct stat place {};
  if (std::filesystem::is_symlink(target, unresolved) && stat(place_.c_str(), &place) == 0 &&
      place.st_uid != geteuid()) {
    throw OutputError(target + ": a link to another user's file; name that file itself");
  }
  removeDeadParts(place_);
  replaces_ = access(place_.c_str(), F_OK) == 0;
  if (replaces_ && access(place_.c_str(), W_OK) != 0) refuse(errno);

  // Until it is whole nobody reads it to whom the former file is closed.
  const mode_t mode = replaces_ || readers == Readers::ownerAlone ? 0600 : 0666;
  constexpr int attempts = 100;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    path_ =
        place_ + partSuffix + std::to_string(getpid()) + (attempt ? std::to_string(-attempt) : "");
    const InterruptionsHeldBack heldBack;
    const int file = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
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
  if (replaces_) copyAccess(place_.c_str(), path_.c_str());
  if (!synchronized(path_, O_WRONLY)) refuse(errno);
  if (std::rename(path_.c_str(), place_.c_str()) != 0) refuse(errno);
  forgetPending(path_);
  path_.clear();
  const auto folder = std::filesystem::path(place_).parent_path();
  synchronized(folder.empty() ? "." : folder.string(), O_RDONLY);
}

PendingFolder::PendingFolder(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code unknown;
  fs::path folder = fs::absolute(path, unknown).lexically_normal();
  if (!folder.has_filename()) folder = folder.parent_path();
  std::vector<std::string> missing;
  for (; folder.has_relative_path() && !fs::exists(fs::symlink_status(folder, unknown));
       folder = folder.parent_path()) {
    missing.push_back(folder.string());
  }
  if (missing.empty() && !isFolder(path)) refuseOutput(path, ENOTDIR);
  std::reverse(missing.begin(), missing.end());
  const InterruptionsHeldBack heldBack;
  for (const std::string& each : missing) {
    if (mkdir(each.c_str(), 0777) != 0) {
      const int reason = errno;
      remove();
      refuseOutput(path, reason);
    }
    made_.push_back(each);
  }
  // An interrupt removes them in this order.
  for (auto each = made_.rbegin(); each != made_.rend(); ++each) rememberPending(*each);
}

void PendingFolder::remove() const {
  for (auto each = made_.rbegin(); each != made_.rend(); ++each) {
    rmdir(each->c_str());
    forgetPending(*each);
  }
}

void removePendingFilesWhenInterrupted() {
  for (const int signal : interruptions) {
    if (::signal(signal, removePendingFilesAndEnd) == SIG_IGN) ::signal(signal, SIG_IGN);
  }
}

void tellWhenInterrupted(const std::string& line) {
  // On a terminal a bar may stand there, and what was typed.
  std::string text = isatty(STDERR_FILENO) == 1 ? "\r\x1b[K" : "";
  text += line + "\n";
  const std::lock_guard lock(farewellMutex);
  Farewell& next = farewells[farewell == farewells.data() ? 1 : 0];
  next.size = std::min(text.size(), next.text.size());
  std::memcpy(next.text.data(), text.data(), next.size);
  farewell = &next;
}

void PendingFile::refuse(int systemError) const { refuseOutput(target_, systemError); }

OutputFile::OutputFile(const std::string& path, Readers readers) : path_(path), file_(stdout) {
  if (path == "-") return;
  if (isFolder(path) || isRegularOrAbsent(path)) {
    pending_ = std::make_unique<PendingFile>(path, readers);
    file_ = std::fopen(pending_->path().c_str(), "wbe");
  } else {
    const int opened = openInPlace(path, O_WRONLY | O_TRUNC);
    if (opened < 0 && errno == ENXIO) throw OutputError(nobodyReads(path));
    file_ = opened < 0 ? nullptr : fdopen(opened, "wb");
  }
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
