#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/format.h"
#include "platform/linux/icu_text.h"
#include "platform/text_services.h"

namespace veyla {

/// Dates read "at 1000", for the seconds since 1970; what follows a pattern is the real thing, in
/// the locale and time zone that a test sets.
class ScriptedTextServices : public DateFormatting,
                             public NumberFormatting,
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
  std::string formatted(Date date, std::string_view pattern) const override {
    return icu_->formatted(date, pattern);
  }
  std::optional<Date> parse(std::string_view text, std::string_view pattern) const override {
    return icu_->parse(text, pattern);
  }
  std::string decimal(double value, int maximumFractionDigits) const override {
    return icu_->decimal(value, maximumFractionDigits);
  }
  LocalTime localTime(Date date) const override { return icu_->localTime(date); }
  bool matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const override {
    return icu_->matchesWholeIgnoringCase(pattern, text);
  }
  bool findsIgnoringCase(std::string_view pattern, std::string_view text,
                         std::size_t length) const override {
    return icu_->findsIgnoringCase(pattern, text, length);
  }
  std::size_t count(std::string_view text) const override { return icu_->count(text); }
  std::string lowerCased(std::string_view text) const override { return icu_->lowerCased(text); }
  std::string randomUuid() override { return "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB"; }

  void setLocaleAndZone(const std::string& locale, const std::string& timeZone) {
    icu_ = std::make_unique<IcuText>(locale, timeZone);
  }

 private:
  std::unique_ptr<IcuText> icu_ = std::make_unique<IcuText>("en_US", "UTC");
};

}  // namespace veyla
