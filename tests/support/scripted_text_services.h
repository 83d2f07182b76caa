#pragma once

#include <cstdlib>
#include <string>

#include "platform/format.h"
#include "platform/linux/icu_text.h"
#include "platform/text_services.h"

namespace veyla {

/// Dates read "at 1000", for the seconds since 1970; the rest is real, in UTC.
class ScriptedTextServices : public DateFormatting,
                             public RegularExpressions,
                             public Characters,
                             public UuidGenerator {
 public:
  std::string mediumDateShortTime(Date date) const override {
    return formatText("at %.0f", date.secondsSince1970);
  }
  std::optional<Date> parseMediumDateShortTime(std::string_view text) const override {
    if (!text.starts_with("at ")) return std::nullopt;
    return Date{std::strtod(std::string(text.substr(3)).c_str(), nullptr)};
  }
  LocalTime localTime(Date date) const override { return icu().localTime(date); }
  bool matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const override {
    return icu().matchesWholeIgnoringCase(pattern, text);
  }
  bool findsIgnoringCase(std::string_view pattern, std::string_view text,
                         std::size_t length) const override {
    return icu().findsIgnoringCase(pattern, text, length);
  }
  std::size_t count(std::string_view text) const override { return icu().count(text); }
  std::string lowerCased(std::string_view text) const override { return icu().lowerCased(text); }
  std::string randomUuid() override { return "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB"; }

 private:
  static const IcuText& icu() {
    static const IcuText icu("en_US", "UTC");
    return icu;
  }
};

}  // namespace veyla
