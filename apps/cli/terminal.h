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
/// NO_COLOR, the locale).
Terminal terminalBehind(int fileDescriptor);

/// The text with its lines broken between words where the terminal ends, and what is left of each
/// indented by so many columns; as it is for a stream that is none.
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
