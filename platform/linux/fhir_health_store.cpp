#include "platform/linux/fhir_health_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/linux/data_folder.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/store_error.h"
#include "platform/portable/fhir_observation.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

/// A file descriptor that closes itself; closing gives a lock on it back.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

void check(bool done, const std::filesystem::path& file) {
  if (!done) throw StoreError(dataProblem(file, errno));
}

/// A pipe or a device in the records' place is refused, and another program waited for.
void checkAndLock(const Descriptor& records, int lock, const std::filesystem::path& file,
                  std::chrono::milliseconds patience = patienceWithWriters) {
  struct stat found {};
  check(records.number() >= 0 && fstat(records.number(), &found) == 0, file);
  if (!S_ISREG(found.st_mode)) throw StoreError(notRegular(file));
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(records.number(), lock | LOCK_NB) != 0) {
    check(errno == EWOULDBLOCK, file);
    if (std::chrono::steady_clock::now() >= end) {
      throw StoreError(file.string() +
                       ": locked by another program; end that program or try again later");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void writeWhole(int descriptor, std::string_view text, const std::filesystem::path& file) {
  const ssize_t written = write(descriptor, text.data(), text.size());
  // A short write tells no reason; what stops a file in the middle is want of room.
  if (written >= 0) errno = ENOSPC;
  check(written == static_cast<ssize_t>(text.size()), file);
  check(fsync(descriptor) == 0, file);
}

/// A new file's name must last as well.
void synchronizeFolder(const std::filesystem::path& file) {
  const Descriptor folder(open(file.parent_path().c_str(), O_RDONLY | O_CLOEXEC));
  check(folder.number() >= 0 && fsync(folder.number()) == 0, file);
}

/// What follows the last line end.
std::string unendedLine(int descriptor, const std::filesystem::path& file) {
  off_t lineStart = lseek(descriptor, 0, SEEK_END);
  check(lineStart >= 0, file);
  std::string line;
  constexpr off_t block = 4096;
  while (lineStart > 0) {
    const off_t start = std::max<off_t>(0, lineStart - block);
    std::string piece(static_cast<std::size_t>(lineStart - start), '\0');
    check(
        pread(descriptor, piece.data(), piece.size(), start) == static_cast<ssize_t>(piece.size()),
        file);
    const std::size_t newline = piece.rfind('\n');
    if (newline != std::string::npos) return line.insert(0, piece, newline + 1);
    line.insert(0, piece);
    lineStart = start;
  }
  return line;
}

/// Whole lines: a record without its end gets it, and what is no record goes to a file beside this
/// one, since it may be most of one. In a file of another place, which a link leads to, it stays.
/// Returns what was done, as one line.
std::optional<std::string> mendEnd(int descriptor, const std::filesystem::path& file) {
  const std::string line = unendedLine(descriptor, file);
  if (line.empty()) return std::nullopt;
  const auto json = NlohmannJsonParser().parse(line);
  if ((json && json->dictionary()) || std::filesystem::is_symlink(file)) {
    writeWhole(descriptor, "\n", file);
    return file.string() +
           ": its last line had no end and has been given it; nothing is left to do";
  }
  const std::filesystem::path aside = file.string() + FhirHealthStore::asideSuffix;
  // A link would lead into another file, and a pipe would be waited for.
  constexpr int ownFile = O_CREAT | O_NOFOLLOW | O_NONBLOCK;
  const Descriptor kept(open(aside.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | ownFile, 0600));
  struct stat found {};
  const bool isOpen = kept.number() >= 0 && fstat(kept.number(), &found) == 0;
  const bool isForeign = isOpen ? !S_ISREG(found.st_mode) : errno == ELOOP || errno == ENXIO;
  if (isForeign) throw StoreError(notRegular(aside));
  check(isOpen, aside);
  writeWhole(kept.number(), line + "\n", aside);
  synchronizeFolder(aside);
  const off_t size = lseek(descriptor, 0, SEEK_END);
  check(ftruncate(descriptor, size - static_cast<off_t>(line.size())) == 0, file);
  check(fsync(descriptor) == 0, file);
  return file.string() + ": its last line is no record and has been moved to " + aside.string() +
         "; look there for what can be saved of it";
}

}  // namespace

FhirHealthStore::FhirHealthStore(const std::filesystem::path& folder, KeyValueStore& permissions,
                                 UuidGenerator& uuids, Ask ask)
    : HealthRecords(permissions, uuids), file_(folder / fileName), ask_(std::move(ask)) {
  makeDataFolder(folder);
  const Descriptor file(open(file_.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NONBLOCK));
  if (file.number() < 0 && errno == ENOENT) return;
  checkAndLock(file, LOCK_EX, file_);
  repair_ = mendEnd(file.number(), file_);
}

HealthSharing FhirHealthStore::authorizationStatus(HealthSampleType type) const {
  HealthSharing& known = determined_.try_emplace(type, HealthSharing::notDetermined).first->second;
  const HealthSharing status = HealthRecords::authorizationStatus(type);
  if (status != HealthSharing::notDetermined) known = status;
  return known;
}

void FhirHealthStore::requestAuthorization(const std::vector<HealthSampleType>& types,
                                           std::function<void(bool success)> completion) {
  bool determined = true;
  for (const HealthSampleType type : types) {
    if (authorizationStatus(type) != HealthSharing::notDetermined) continue;
    const auto answer = ask_ ? ask_(type) : std::nullopt;
    if (answer) {
      allow(type, *answer);
    } else {
      determined = false;
    }
  }
  if (completion) completion(determined);
}

std::optional<std::string> FhirHealthStore::contentsIn(const std::filesystem::path& folder,
                                                       std::chrono::milliseconds patience) {
  const std::filesystem::path path = folder / fileName;
  const auto check = [&](bool done) {
    if (!done) throw StoreError(fileProblem(path.string(), errno, FilePlace::dataToRead));
  };
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.number() < 0 && errno == ENOENT) return std::nullopt;
  check(file.number() >= 0);
  checkAndLock(file, LOCK_SH, path, patience);
  std::string text;
  std::array<char, 65536> block;
  ssize_t n = 0;
  while ((n = read(file.number(), block.data(), block.size())) > 0) {
    text.append(block.data(), static_cast<std::size_t>(n));
  }
  check(n == 0);
  return text;
}

void FhirHealthStore::keep(const std::string& line, Completion completion) {
  bool saved = false;
  try {
    append(line);
    saved = hasSaved_ = true;
  } catch (const StoreError& error) {
    if (!failure_) failure_ = error.what();
  }
  if (completion) completion(saved);
}

void FhirHealthStore::tellRefusal(const std::string& reason) {
  if (!failure_) failure_ = file_.string() + ": " + reason;
}

void FhirHealthStore::append(const std::string& line) {
  const Descriptor file(
      open(file_.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
  checkAndLock(file, LOCK_EX, file_);
  // Another program may have been cut off since this one opened the file.
  if (auto mended = mendEnd(file.number(), file_)) repair_ = std::move(mended);
  const off_t size = lseek(file.number(), 0, SEEK_END);
  check(size >= 0, file_);

  const ssize_t written = write(file.number(), line.data(), line.size());
  // A short write tells no reason; what stops a file in the middle is want of room.
  int error = written < 0 ? errno : ENOSPC;
  if (written == static_cast<ssize_t>(line.size())) {
    if (fsync(file.number()) == 0) {
      // A new file's name must last as well.
      const Descriptor folder(open(file_.parent_path().c_str(), O_RDONLY | O_CLOEXEC));
      if (size > 0 || (folder.number() >= 0 && fsync(folder.number()) == 0)) return;
    }
    error = errno;
  }
  if (ftruncate(file.number(), size) != 0) error = errno;
  throw StoreError(dataProblem(file_, error));
}

}  // namespace veyla
