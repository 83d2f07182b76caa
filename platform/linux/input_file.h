#pragma once

#include <string>

namespace veyla {

/// Throws `InputError` unless `path` names a regular file that holds something and may be read.
void requireInputFile(const std::string& path);

/// All that is in a file. Throws `InputError` where it breaks off; one that is not there is empty.
std::string readInputFile(const std::string& path);

/// Why a file that is there cannot be read, for the system's error number `error`, and the way out.
std::string readProblem(int error);

}  // namespace veyla
