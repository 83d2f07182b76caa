#pragma once

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include "apps/cli/complain.h"
#include "apps/cli/terminal.h"
#include "platform/linux/output_file.h"

namespace veyla {

/// A sentence on standard output, in lines of the terminal's width. Throws `OutputError`.
inline void tell(const std::string& sentence) {
  printOut(wrapped(sentence + "\n", terminalBehind(STDOUT_FILENO)));
}

/// A name in a command that a shell may be given.
inline std::string shellWord(const std::string& name) {
  const auto isPlain = [](char c) {
    return (c & 0x80) != 0 || std::isalnum(c) != 0 ||
           std::string_view("._-/:@%+=,").find(c) != std::string_view::npos;
  };
  if (!name.empty() && std::all_of(name.begin(), name.end(), isPlain)) return name;
  std::string word = "'";
  for (const char c : printable(name)) word += c == '\'' ? "'\\''" : std::string(1, c);
  return word + "'";
}

}  // namespace veyla
