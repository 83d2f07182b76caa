#pragma once

#include <compare>
#include <cstdint>

namespace veyla {

/// An absolute point in time, in seconds since 1970-01-01 00:00 UTC.
struct Date {
  double secondsSince1970 = 0;

  auto operator<=>(const Date&) const = default;
};

inline constexpr std::int32_t secondsPerDay = 24 * 60 * 60;

}  // namespace veyla
