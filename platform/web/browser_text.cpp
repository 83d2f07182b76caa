#include "platform/web/browser_text.h"

#include <emscripten/bind.h>

#include "platform/web/page_types.h"

namespace veyla {

EMSCRIPTEN_BINDINGS(browser_text) {
  emscripten::value_array<LocalTime>("LocalTime")
      .element(&LocalTime::year)
      .element(&LocalTime::month)
      .element(&LocalTime::day)
      .element(&LocalTime::hour)
      .element(&LocalTime::minute)
      .element(&LocalTime::second);
}

LocalTime BrowserText::localTime(Date date) const {
  return page_.call<LocalTime>("localTime", date);
}

std::string BrowserText::mediumDateShortTime(Date date) const {
  return page_.call<std::string>("mediumDateShortTime", date);
}

std::optional<Date> BrowserText::parseMediumDateShortTime(std::string_view text) const {
  return page_.call<std::optional<Date>>("parseMediumDateShortTime", text);
}

std::string BrowserText::formatted(Date date, std::string_view pattern) const {
  return page_.call<std::string>("formatted", date, pattern);
}

std::optional<Date> BrowserText::parse(std::string_view text, std::string_view pattern) const {
  return page_.call<std::optional<Date>>("parse", text, pattern);
}

std::string BrowserText::decimal(double value, int maximumFractionDigits) const {
  return page_.call<std::string>("decimal", value, maximumFractionDigits);
}

bool BrowserText::matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const {
  return page_.call<bool>("matchesWholeIgnoringCase", pattern, text);
}

bool BrowserText::findsIgnoringCase(std::string_view pattern, std::string_view text,
                                    std::size_t length) const {
  return page_.call<bool>("findsIgnoringCase", pattern, text, length);
}

std::size_t BrowserText::count(std::string_view text) const {
  return page_.call<std::size_t>("count", text);
}

std::string BrowserText::lowerCased(std::string_view text) const {
  return page_.call<std::string>("lowerCased", text);
}

std::string BrowserText::randomUuid() { return page_.call<std::string>("randomUuid"); }

}  // namespace veyla
