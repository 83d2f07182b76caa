#pragma once

#include <sys/stat.h>

#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

/// Throws `UsageError` when `output`, which the option `name` gave, is the file of `input` under
/// whatever name: the recording would be lost.
inline void requireApart(const char* name, const std::string& output, const std::string& input) {
  struct stat written {};
  struct stat read {};
  if (stat(output.c_str(), &written) != 0 || stat(input.c_str(), &read) != 0) return;
  if (!S_ISREG(read.st_mode)) return;
  if (written.st_dev == read.st_dev && written.st_ino == read.st_ino) {
    throw UsageError(std::string(name) + ": " + output + " is the input itself; name another file");
  }
}

}  // namespace veyla
