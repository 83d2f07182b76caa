#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace veyla {

/// How many columns a line in UTF-8 takes on a terminal: wide East Asian characters take two,
/// accents and marks of the writing direction none.
std::size_t columnsOf(std::string_view text);

/// The text with ordinary spaces in place of those that ASCII lacks, for terminals that know no
/// others.
std::string withAsciiSpaces(std::string_view text);

}  // namespace veyla
