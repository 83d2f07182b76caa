#pragma once

#include <cstdarg>
#include <string>

namespace veyla {

/// Formats as `printf` does.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);
[[gnu::format(printf, 1, 0)]] std::string formatArguments(const char* format,
                                                          std::va_list arguments);

}  // namespace veyla
