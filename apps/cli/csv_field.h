#pragma once

#include <string>

namespace veyla {

/// A text as one field, between quotes where it needs them.
inline std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string field = "\"";
  for (const char c : text) field += c == '"' ? std::string("\"\"") : std::string(1, c);
  return field + "\"";
}

}  // namespace veyla
