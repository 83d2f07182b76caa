#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>

namespace veyla {

/// Formats as `printf` does.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);
[[gnu::format(printf, 1, 0)]] std::string formatArguments(const char* format,
                                                          std::va_list arguments);

/// As `%.0f`, which takes ten times as long for what is counted in lists.
std::string roundedText(double value);
/// As `%0*d`, of 0 or more.
std::string paddedText(int value, std::size_t digits);

}  // namespace veyla
