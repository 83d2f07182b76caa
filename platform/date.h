#pragma once

#include <compare>
#include <cstdint>

namespace veyla {

/// An absolute point in time, in seconds since 1970-01-01 00:00 UTC.
struct Date {
  double secondsSince1970 = 0;

  auto operator<=>(const Date&) const = default;
};

/// Whether it lies in the years 1 to 9999 (UTC), beyond which no calendar names a date.
constexpr bool isInCalendar(Date date) {
  constexpr double yearOne = -62135596800;
  constexpr double yearTenThousand = 253402300800;
  return date.secondsSince1970 >= yearOne && date.secondsSince1970 < yearTenThousand;
}

inline constexpr std::int32_t secondsPerDay = 24 * 60 * 60;

}  // namespace veyla
