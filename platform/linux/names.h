#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace veyla {

/// The text with the capitals A to Z made small, as names of columns and labels are compared.
inline std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

/// The ending of a file's name in lower case, such as ".csv"; empty without one.
inline std::string endingOf(const std::filesystem::path& path) {
  return lowerCase(path.extension().string());
}

}  // namespace veyla
