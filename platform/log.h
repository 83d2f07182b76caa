#pragma once

#include <string_view>

namespace veyla {

/// The diagnostic log: one line an event.
class Log {
 public:
  virtual ~Log() = default;

  /// Whether lines go anywhere; a caller need not format a line that nobody reads.
  virtual bool enabled() const = 0;
  virtual void line(std::string_view text) = 0;
};

/// Formats one line as `printf` does and writes it to the installed platform's log.
[[gnu::format(printf, 1, 2)]] void logLine(const char* format, ...);

}  // namespace veyla
