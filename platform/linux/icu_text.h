#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text_services.h"

namespace veyla {

/// Dates, numbers, regular expressions and characters by ICU. For one thread.
class IcuText : public DateFormatting,
                public NumberFormatting,
                public RegularExpressions,
                public Characters {
 public:
  /// In the locale of LC_ALL, LC_TIME or LANG, the first that is set, and in the time zone of TZ,
  /// else of the machine. "C" and "POSIX" are American English.
  IcuText();
  /// `locale` as in "de_DE", `timeZone` as in "Europe/Berlin". Throws `std::invalid_argument` for a
  /// time zone that is not known; a locale that is not known is the root locale.
  IcuText(const std::string& locale, const std::string& timeZone);
  ~IcuText() override;

  LocalTime localTime(Date date) const override;
  /// With the spaces of the locale, among them narrow and unbreakable ones.
  std::string mediumDateShortTime(Date date) const override;
  /// The whole text must be such a date; any space may stand for any other.
  std::optional<Date> parseMediumDateShortTime(std::string_view text) const override;

  std::string formatted(Date date, std::string_view pattern) const override;
  std::optional<Date> parse(std::string_view text, std::string_view pattern) const override;
  /// Day and month in ASCII's digits, in the order of the locale: "11/14".
  std::string dayInDigits(Date date) const;

  std::string decimal(double value, int maximumFractionDigits) const override;

  /// Also false when the search takes too much time or memory: a pattern meets hostile texts.
  bool matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const override;
  bool findsIgnoringCase(std::string_view pattern, std::string_view text,
                         std::size_t length) const override;

  std::size_t count(std::string_view text) const override;
  std::string lowerCased(std::string_view text) const override;

 private:
  struct Formats;
  std::unique_ptr<Formats> formats_;
};

}  // namespace veyla
