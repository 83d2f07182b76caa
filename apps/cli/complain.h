#pragma once

#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <string>

#include "apps/cli/terminal.h"
#include "platform/linux/output_file.h"

namespace veyla {

/// As it is safe and one line on a terminal, whatever a file's name holds: a `?` for every control
/// character, those that UTF-8 spells in two bytes included.
inline std::string printable(const std::string& text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool twoBytes = byte == 0xC2 && next >= 0x80 && next < 0xA0;
    if (twoBytes) ++i;
    shown += twoBytes || byte < 0x20 || byte == 0x7F ? '?' : text[i];
  }
  return shown;
}

/// One line on standard error, under the program's name; on a terminal broken between words.
inline void complain(const std::string& line) {
  constexpr std::size_t indent = 4;
  std::cerr << wrapped("veyla: " + printable(line), terminalBehind(STDERR_FILENO), indent)
            << std::endl;
}

/// What is told so when a signal stops the program from now on: what that was doing and what of it
/// is kept.
inline void complainWhenStopped(const std::string& line) {
  tellWhenInterrupted("veyla: stopped " + printable(line));
}

}  // namespace veyla
