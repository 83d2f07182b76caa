#pragma once

#include <array>
#include <charconv>
#include <string>

namespace veyla {

/// Appends the shortest decimal that reads back as the same number, without an exponent.
template <class Number>
void appendDecimal(std::string& text, Number number) {
  std::array<char, 64> digits;
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
  text.append(digits.data(), end);
}

}  // namespace veyla
