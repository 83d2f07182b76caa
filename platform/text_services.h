#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"

namespace veyla {

/// A moment as the device's time zone tells it, in the Gregorian calendar of every locale.
struct LocalTime {
  std::int32_t year = 1970;
  /// 1 to 12.
  std::int32_t month = 1;
  /// 1 to 31.
  std::int32_t day = 1;
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;

  bool operator==(const LocalTime&) const = default;
};

/// Dates as texts, in the device's locale and time zone.
class DateFormatting {
 public:
  virtual ~DateFormatting() = default;

  /// For texts that programs read; seconds are rounded down.
  virtual LocalTime localTime(Date date) const = 0;
  /// The localized date in medium style and time in short style, such as "Mar 5, 2024, 2:07 PM".
  virtual std::string mediumDateShortTime(Date date) const = 0;
  /// Reads such a text back, the later moment in an hour that comes twice; nothing when it is in
  /// another form.
  virtual std::optional<Date> parseMediumDateShortTime(std::string_view text) const = 0;

  /// The date in a pattern of Unicode's date fields, such as "dd/MM" or "dd MMM"; digits, names and
  /// calendar are the locale's.
  virtual std::string formatted(Date date, std::string_view pattern) const = 0;
  /// Reads such a text back. A field that the pattern lacks is its smallest, and a time that a
  /// change of the clocks leaves out is the moment of the change. Nothing when the text is in
  /// another form.
  virtual std::optional<Date> parse(std::string_view text, std::string_view pattern) const = 0;
};

/// Numbers as texts, in the device's locale.
class NumberFormatting {
 public:
  virtual ~NumberFormatting() = default;

  /// In decimal style with at most so many fraction digits, such as "97.3" or "1,250". A tie goes
  /// to the even digit: 97.25 is "97.2".
  virtual std::string decimal(double value, int maximumFractionDigits) const = 0;
};

/// Regardless of case, ASCII's letters stand for themselves alone: the long s is no s, the Kelvin
/// sign no k. "^" and "$" are the text's own ends, never those of a line.
class RegularExpressions {
 public:
  virtual ~RegularExpressions() = default;

  /// Whether the whole of `text` matches `pattern` regardless of case; false for a pattern that
  /// cannot be compiled.
  virtual bool matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const = 0;

  /// Whether `pattern` is found, regardless of case, in the first `length` UTF-16 code units of
  /// `text`, whose ends then are the text's for "^" and "$"; false for a pattern that cannot be
  /// compiled.
  virtual bool findsIgnoringCase(std::string_view pattern, std::string_view text,
                                 std::size_t length) const = 0;
};

/// Texts as a reader sees them.
class Characters {
 public:
  virtual ~Characters() = default;

  /// How many user-perceived characters (extended grapheme clusters) the text has.
  virtual std::size_t count(std::string_view text) const = 0;
  /// The same in every locale.
  virtual std::string lowerCased(std::string_view text) const = 0;
};

class UuidGenerator {
 public:
  virtual ~UuidGenerator() = default;

  /// A new random UUID, such as "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB", in upper case.
  virtual std::string randomUuid() = 0;
};

}  // namespace veyla
