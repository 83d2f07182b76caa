#pragma once

#include <string>

namespace veyla {

/// What a file that cannot be used is for, which decides the way out.
enum class FilePlace {
  /// Part of the data folder, which the program keeps.
  dataFolder,
  /// The same where it is only to be read.
  dataToRead,
  /// Named by the user for one result.
  outputFile,
  /// Standard output or standard error.
  stream,
};

/// The one line for a pipe, a device or a socket where the program keeps a file.
std::string notRegular(const std::string& path);

/// The one line for a system call on `path` that failed with the error number `error`: the file,
/// the reason and the way out.
std::string fileProblem(const std::string& path, int error, FilePlace place);

}  // namespace veyla
