#include "platform/format.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace veyla {

std::string formatText(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = formatArguments(format, arguments);
  va_end(arguments);
  return text;
}

std::string formatArguments(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  // Most texts are short: those are formatted once.
  std::array<char, 128> buffer;
  const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  std::string text;
  if (length > 0) {
    const auto size = static_cast<std::size_t>(length);
    if (size < buffer.size()) {
      text.assign(buffer.data(), size);
    } else {
      // The terminating zero goes into the place that a string keeps for it.
      text.resize(size);
      std::vsnprintf(text.data(), size + 1, format, again);
    }
  }
  va_end(again);
  return text;
}

std::string roundedText(double value) {
  constexpr double largestShort = 1e6;
  if (std::signbit(value) || !(value < largestShort)) return formatText("%.0f", value);
  return std::to_string(static_cast<int>(std::nearbyint(value)));
}

std::string paddedText(int value, std::size_t digits) {
  std::string text = std::to_string(value);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

}  // namespace veyla
