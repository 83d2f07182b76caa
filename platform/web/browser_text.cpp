#include "platform/web/browser_text.h"

#include <cstdint>

namespace veyla {

using emscripten::val;

namespace {

std::optional<Date> dateFrom(const val& seconds) {
  if (seconds.isNull()) return std::nullopt;
  return Date{seconds.as<double>()};
}

}  // namespace

LocalTime BrowserText::localTime(Date date) const {
  const val time = page_.call<val>("localTime", date.secondsSince1970);
  const auto part = [&](int index) { return time[index].as<std::int32_t>(); };
  return {part(0), part(1), part(2), part(3), part(4), part(5)};
}

std::string BrowserText::mediumDateShortTime(Date date) const {
  return page_.call<std::string>("mediumDateShortTime", date.secondsSince1970);
}

std::optional<Date> BrowserText::parseMediumDateShortTime(std::string_view text) const {
  return dateFrom(page_.call<val>("parseMediumDateShortTime", std::string(text)));
}

std::string BrowserText::formatted(Date date, std::string_view pattern) const {
  return page_.call<std::string>("formatted", date.secondsSince1970, std::string(pattern));
}

std::optional<Date> BrowserText::parse(std::string_view text, std::string_view pattern) const {
  return dateFrom(page_.call<val>("parse", std::string(text), std::string(pattern)));
}

std::string BrowserText::decimal(double value, int maximumFractionDigits) const {
  return page_.call<std::string>("decimal", value, maximumFractionDigits);
}

bool BrowserText::matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const {
  return page_.call<bool>("matchesWholeIgnoringCase", std::string(pattern), std::string(text));
}

bool BrowserText::findsIgnoringCase(std::string_view pattern, std::string_view text,
                                    std::size_t length) const {
  return page_.call<bool>("findsIgnoringCase", std::string(pattern), std::string(text),
                          static_cast<double>(length));
}

std::size_t BrowserText::count(std::string_view text) const {
  return static_cast<std::size_t>(page_.call<int>("count", std::string(text)));
}

std::string BrowserText::lowerCased(std::string_view text) const {
  return page_.call<std::string>("lowerCased", std::string(text));
}

std::string BrowserText::randomUuid() { return page_.call<std::string>("randomUuid"); }

}  // namespace veyla
