#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/text_services.h"

namespace veyla {

/// Dates and numbers by `Intl`, regular expressions by `RegExp`, characters by `Intl.Segmenter` and
/// random identifiers by `crypto`, in the browser's locale and time zone.
class BrowserText : public DateFormatting,
                    public NumberFormatting,
                    public RegularExpressions,
                    public Characters,
                    public UuidGenerator {
 public:
  /// `page` answers the operations by their names.
  explicit BrowserText(emscripten::val page) : page_(std::move(page)) {}

  LocalTime localTime(Date date) const override;
  std::string mediumDateShortTime(Date date) const override;
  std::optional<Date> parseMediumDateShortTime(std::string_view text) const override;

  std::string formatted(Date date, std::string_view pattern) const override;
  std::optional<Date> parse(std::string_view text, std::string_view pattern) const override;

  std::string decimal(double value, int maximumFractionDigits) const override;

  bool matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const override;

  bool findsIgnoringCase(std::string_view pattern, std::string_view text,
                         std::size_t length) const override;

  std::size_t count(std::string_view text) const override;
  std::string lowerCased(std::string_view text) const override;

  std::string randomUuid() override;

 private:
  emscripten::val page_;
};

}  // namespace veyla
