#pragma once

#include <string>

namespace veyla {

/// Throws `InputError` unless `path` names a regular file that holds something and may be read.
void requireInputFile(const std::string& path);

}  // namespace veyla
