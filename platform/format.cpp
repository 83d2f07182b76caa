#include "platform/format.h"

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
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text;
  if (length > 0) {
    // The terminating zero goes into the place that a string keeps for it.
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return text;
}

}  // namespace veyla
