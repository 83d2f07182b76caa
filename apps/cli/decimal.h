#pragma once

#include <array>
#include <charconv>
#include <string>

namespace veyla {

/// Appends the shortest decimal that reads back as the same number; without an exponent, unless
/// that takes dozens of digits.
template <class Number>
void appendDecimal(std::string& text, Number number) {
  std::array<char, 64> digits;
  char* const last = digits.data() + digits.size();
  auto written = std::to_chars(digits.data(), last, number, std::chars_format::fixed);
  if (written.ec != std::errc()) written = std::to_chars(digits.data(), last, number);
  text.append(digits.data(), written.ptr);
}

}  // namespace veyla
