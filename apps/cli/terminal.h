#pragma once

#include <cstddef>
#include <string>

namespace veyla {

/// What the program may do on a stream: none of it when the stream is no terminal.
struct Terminal {
  bool interactive = false;
  bool color = false;
  bool unicode = false;
  std::size_t columns = 80;
  std::size_t rows = 24;
};

/// The terminal behind a file descriptor, by its kind, its size and the environment (TERM,
/// NO_COLOR, COLUMNS, the locale).
Terminal terminalBehind(int fileDescriptor);

/// The text with its lines broken behind so many columns, between words,
/// and what is left of each indented.
std::string brokenAt(std::size_t columns, const std::string& text, std::size_t indent);

/// Broken where the terminal ends; as it is for a stream that is none.
std::string wrapped(const std::string& text, const Terminal& terminal, std::size_t indent = 0);

/// Hides the cursor while it lives; also brings it back when the program is interrupted.
class HiddenCursor {
 public:
  HiddenCursor();
  ~HiddenCursor();
  HiddenCursor(const HiddenCursor&) = delete;
  HiddenCursor& operator=(const HiddenCursor&) = delete;
};

}  // namespace veyla
