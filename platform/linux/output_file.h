#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace veyla {

/// A file that cannot be written: one line that names the file, the reason and the way out.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// From now on no output may take the place of what this data folder holds; of the user's own one
/// none may in any case.
void keepOutputsFrom(const std::filesystem::path& dataFolder);

/// Throws `OutputError` when `path` leads to a file that holds what the program keeps, intact or
/// damaged: an SQLite store, its journals, the health records beside one, or what these names lead
/// to in a data folder that is kept from outputs. Nothing that is written elsewhere may take its
/// place.
void requireNoKeptData(const std::string& path);

/// A file descriptor for writing what comes in place, from `flags` of `open`; less than 0 where
/// that fails, with ENXIO for a pipe that nobody reads for 5 seconds, which to open takes for ever.
int openInPlace(const std::string& path, int flags);

/// The line for a pipe that nobody reads.
std::string nobodyReads(const std::string& path);

/// Who may read a file that is new: whom the umask lets, or nobody but its owner, as is right for
/// what was measured of somebody over days.
enum class Readers { asUmaskSays, ownerAlone };

/// A name beside a target under which a file is written until it is whole, so that the target is
/// either what it was or complete, also after a power cut. What was not committed is removed with
/// the object, and what a killed program has left beside the target with the next one made.
///
/// A target that is there already keeps its permissions, and its owner and group where the system
/// allows that; where its group cannot be kept, another group gets no more than everybody.
class PendingFile {
 public:
  /// Makes an empty file beside `target`, which must be a regular file or not exist yet, and no
  /// link to another user's. Throws `OutputError`.
  explicit PendingFile(const std::string& target, Readers readers = Readers::asUmaskSays);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  const std::string& path() const { return path_; }
  /// Puts the file in the target's place. Throws `OutputError`.
  void commit();

  /// Throws `OutputError` for the target with a reason in the system's words.
  [[noreturn]] void refuse(int systemError) const;

 private:
  std::string target_;
  /// Where the target's name leads, through symbolic links.
  std::string place_;
  /// Whether a file was there.
  bool replaces_ = false;
  std::string path_;
};

/// A folder that is made where it is absent, with those that it lies in. What was made is removed
/// with the object, and by an interrupt, unless something lies in it by then.
class PendingFolder {
 public:
  /// Throws `OutputError`.
  explicit PendingFolder(const std::string& path);
  ~PendingFolder() { remove(); }
  PendingFolder(const PendingFolder&) = delete;
  PendingFolder& operator=(const PendingFolder&) = delete;

 private:
  void remove() const;

  /// From the outermost on.
  std::vector<std::string> made_;
};

/// From now on an interrupt, a hang-up or a termination removes what is pending and tells what was
/// stopped, before it ends the program as it would have. Signals that whoever started the program
/// ignores stay ignored.
void removePendingFilesWhenInterrupted();

/// What it tells on standard error from now on: what was stopped and what of it is kept.
void tellWhenInterrupted(const std::string& line);

/// A text file that appears when it is whole. "-" is standard output; that, devices and pipes are
/// written as the text comes. A pipe that nobody reads is refused after 5 seconds.
class OutputFile {
 public:
  /// Throws `OutputError`, as the others do.
  explicit OutputFile(const std::string& path, Readers readers = Readers::asUmaskSays);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(std::string_view text);
  void commit();

 private:
  void requireWritten(bool written) const;

  std::string path_;
  std::unique_ptr<PendingFile> pending_;
  std::FILE* file_;
};

/// All of the text to standard output, at once. Throws `OutputError`.
void printOut(std::string_view text);

}  // namespace veyla
