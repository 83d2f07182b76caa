#pragma once

#include <cmath>
#include <cstdlib>
#include <optional>
#include <regex>
#include <string>

#include "platform/format.h"

namespace veyla {

/// A time of a recording as players show it, "1:23.5" or "1:02:03", in seconds; nothing for any
/// other text.
inline std::optional<double> secondsOfTime(const std::string& text) {
  // Only now: to make one takes longer than to measure.
  static const std::regex form(R"((?:(\d{1,4}):([0-5]\d)|(\d{1,6})):([0-5]\d(?:\.\d+)?))");
  std::smatch parts;
  if (!std::regex_match(text, parts, form)) return std::nullopt;
  const auto number = [&](std::size_t part) { return std::strtod(parts.str(part).c_str(), {}); };
  return 3600 * number(1) + 60 * (number(2) + number(3)) + number(4);
}

/// The other way around, to a tenth of a second: "1:23.5".
inline std::string timeOf(double seconds) {
  const long tenths = std::lround(seconds * 10);
  return formatText("%ld:%02ld.%ld", tenths / 600, tenths / 10 % 60, tenths % 10);
}

}  // namespace veyla
