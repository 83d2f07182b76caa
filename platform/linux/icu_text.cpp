#include "platform/linux/icu_text.h"

#include <unicode/brkiter.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/numberformatter.h>
#include <unicode/regex.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

namespace veyla {

namespace {

using icu::UnicodeString;

constexpr double millisecondsPerSecond = 1000;

/// In steps of the matcher, which are about as many milliseconds.
constexpr std::int32_t matchingSteps = 250;
/// In bytes.
constexpr std::int32_t matchingStack = 8 * 1024 * 1024;

std::string environmentLocale() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (!value || !*value) continue;
    const std::string name(value);
    const std::string locale = name.substr(0, name.find_first_of(".@"));
    return locale == "C" || locale == "POSIX" ? "en_US" : locale;
  }
  return "en_US";
}

std::unique_ptr<icu::TimeZone> namedTimeZone(const std::string& name) {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(UnicodeString::fromUTF8(name)));
  if (*zone == icu::TimeZone::getUnknown()) {
    throw std::invalid_argument("the time zone \"" + name +
                                "\" is not known; give one such as Europe/Berlin");
  }
  return zone;
}

/// A pattern meets hostile texts.
void limit(icu::RegexMatcher& matcher, UErrorCode& status) {
  matcher.setTimeLimit(matchingSteps, status);
  matcher.setStackLimit(matchingStack, status);
}

/// Every kind of space as the ordinary one.
UnicodeString withPlainSpaces(const UnicodeString& text) {
  UnicodeString plain;
  for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    const UChar32 character = text.char32At(i);
    plain.append(u_isUWhiteSpace(character) ? UChar32(' ') : character);
  }
  return plain;
}

}  // namespace

struct IcuText::Formats {
  Formats(const icu::Locale& ofLocale, const icu::TimeZone& ofZone)
      : locale(ofLocale), zone(ofZone.clone()) {
    write = simpleFormat(locale, *zone);
    read = simpleFormat(locale, *zone);
    // Reading compares plain spaces with plain spaces, in the pattern and in its words.
    UnicodeString pattern;
    read->applyPattern(withPlainSpaces(read->toPattern(pattern)));
    icu::DateFormatSymbols symbols(*read->getDateFormatSymbols());
    std::int32_t count = 0;
    if (const UnicodeString* halves = symbols.getAmPmStrings(count)) {
      const std::vector<UnicodeString> plain = plainSpaced(halves, count);
      symbols.setAmPmStrings(plain.data(), count);
    }
    if (const UnicodeString* months = symbols.getShortMonths(count)) {
      const std::vector<UnicodeString> plain = plainSpaced(months, count);
      symbols.setShortMonths(plain.data(), count);
    }
    read->setDateFormatSymbols(symbols);
    read->setLenient(false);
    ownCalendar.reset(write->getCalendar()->clone());
    apart = partsOfWriting();
  }

  static std::vector<UnicodeString> plainSpaced(const UnicodeString* words, std::int32_t count) {
    std::vector<UnicodeString> plain;
    plain.reserve(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) plain.push_back(withPlainSpaces(words[i]));
    return plain;
  }

  static std::unique_ptr<icu::SimpleDateFormat> simpleFormat(const icu::Locale& locale,
                                                             const icu::TimeZone& zone) {
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kMedium, icu::DateFormat::kShort, locale));
    if (!dynamic_cast<icu::SimpleDateFormat*>(format.get())) {
      throw std::runtime_error("the data of ICU cannot be found; install libicu again");
    }
    format->setTimeZone(zone);
    return std::unique_ptr<icu::SimpleDateFormat>(
        static_cast<icu::SimpleDateFormat*>(format.release()));
  }

  /// What writes and reads by a pattern. Making one takes a thousand times as long as using it.
  struct Pattern {
    std::unique_ptr<icu::SimpleDateFormat> format;
    /// Whether all moments of a day are written alike, and how those that have come up are.
    bool isOfDays;
    std::unordered_map<std::int64_t, std::string> days;
  };

  Pattern& of(std::string_view pattern) {
    const auto made = patterns.find(pattern);
    if (made != patterns.end()) return made->second;
    UErrorCode status = U_ZERO_ERROR;
    auto format =
        std::make_unique<icu::SimpleDateFormat>(UnicodeString::fromUTF8(pattern), locale, status);
    if (U_FAILURE(status)) {
      throw std::runtime_error("the data of ICU cannot be found; install libicu again");
    }
    format->setTimeZone(*zone);
    const bool isOfDays = pattern.find_first_not_of("dMEy /.-") == std::string_view::npos;
    return patterns.emplace(pattern, Pattern{std::move(format), isOfDays, {}}).first->second;
  }

  std::string written(Date date, std::string_view pattern) {
    Pattern& by = of(pattern);
    const double milliseconds = date.secondsSince1970 * millisecondsPerSecond;
    const auto moment = by.isOfDays ? momentOf(milliseconds) : std::nullopt;
    if (moment) {
      const auto kept = by.days.find(moment->day);
      if (kept != by.days.end()) return kept->second;
    }
    UnicodeString text;
    by.format->format(milliseconds, text);
    std::string utf8 = utf8Of(text);
    if (moment) by.days.emplace(moment->day, utf8);
    return utf8;
  }

  /// The date with its time. Writing takes ICU a while, and a long list has many entries of a day
  /// and of a minute of the day: what surrounds the time is kept for each day that has come up,
  /// the time for each minute.
  std::string written(Date date) {
    const double milliseconds = date.secondsSince1970 * millisecondsPerSecond;
    const auto moment = apart ? momentOf(milliseconds) : std::nullopt;
    if (!moment) return textBy(*write, milliseconds);
    const auto [around, isNew] = aroundTime.try_emplace(moment->day);
    auto& [before, behind] = around->second;
    if (isNew) {
      before = textBy(*apart->before, milliseconds);
      behind = textBy(*apart->behind, milliseconds);
    }
    std::string& time = times[moment->minute];
    if (time.empty()) time = textBy(*apart->time, milliseconds);
    std::string text;
    text.reserve(before.size() + time.size() + behind.size());
    return text.append(before).append(time).append(behind);
  }

  std::string textBy(const icu::SimpleDateFormat& format, double milliseconds) {
    UErrorCode status = U_ZERO_ERROR;
    ownCalendar->setTime(milliseconds, status);
    UnicodeString text;
    icu::FieldPosition nowhere(icu::FieldPosition::DONT_CARE);
    format.format(*ownCalendar, text, nowhere);
    return utf8Of(text);
  }

  /// A day of the zone, counted from 1970, a minute of it and a second of that.
  struct Moment {
    std::int64_t day;
    std::size_t minute;
    std::int32_t second;
  };

  /// Nothing for times that no calendar reaches.
  std::optional<Moment> momentOf(double milliseconds) const {
    constexpr double farthest = 3e14;
    constexpr double secondsPerMinute = 60;
    if (!(std::abs(milliseconds) < farthest)) return std::nullopt;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone->getOffset(milliseconds, false, raw, saving, status);
    if (U_FAILURE(status)) return std::nullopt;
    const double seconds = std::floor((milliseconds + raw + saving) / millisecondsPerSecond);
    const double day = std::floor(seconds / secondsPerDay);
    const double ofDay = seconds - day * secondsPerDay;
    const double minute = std::floor(ofDay / secondsPerMinute);
    return Moment{static_cast<std::int64_t>(day), static_cast<std::size_t>(minute),
                  static_cast<std::int32_t>(ofDay - minute * secondsPerMinute)};
  }

  /// What writes the time, and of the day what comes before and behind it.
  struct Apart {
    std::unique_ptr<icu::SimpleDateFormat> before;
    std::unique_ptr<icu::SimpleDateFormat> time;
    std::unique_ptr<icu::SimpleDateFormat> behind;
  };

  /// Nothing where the date is written amid the time, or something that is neither a day's nor a
  /// minute's.
  std::optional<Apart> partsOfWriting() const {
    UnicodeString pattern;
    write->toPattern(pattern);
    std::int32_t begin = pattern.length();
    std::int32_t end = 0;
    std::vector<std::int32_t> ofDays;
    bool isQuoted = false;
    for (std::int32_t i = 0; i < pattern.length(); ++i) {
      const char16_t symbol = pattern[i];
      if (symbol == u'\'') isQuoted = !isQuoted;
      if (isQuoted || symbol > u'z' || !u_isalpha(symbol)) continue;
      if (std::u16string_view(u"GyUrMLdEec").find(symbol) != std::u16string_view::npos) {
        ofDays.push_back(i);
      } else if (std::u16string_view(u"hHkKmabB").find(symbol) != std::u16string_view::npos) {
        begin = std::min(begin, i);
        end = i + 1;
      } else {
        return std::nullopt;
      }
    }
    const auto isAmid = [=](std::int32_t at) { return begin < at && at < end; };
    if (begin >= end || std::ranges::any_of(ofDays, isAmid)) return std::nullopt;
    const auto part = [&](std::int32_t from, std::int32_t to) {
      std::unique_ptr<icu::SimpleDateFormat> format(write->clone());
      format->applyPattern(pattern.tempSubStringBetween(from, to));
      return format;
    };
    return Apart{part(0, begin), part(begin, end), part(end, pattern.length())};
  }

  static std::string utf8Of(const UnicodeString& text) {
    std::string utf8;
    return text.toUTF8String(utf8);
  }

  icu::Locale locale;
  std::unique_ptr<icu::TimeZone> zone;
  std::unique_ptr<icu::SimpleDateFormat> write;
  std::unique_ptr<icu::SimpleDateFormat> read;
  std::map<std::string, Pattern, std::less<>> patterns;
  /// The locale's calendar. A formatter that is given none copies its own for every date.
  std::unique_ptr<icu::Calendar> ownCalendar;
  std::optional<Apart> apart;
  std::unordered_map<std::int64_t, std::pair<std::string, std::string>> aroundTime;
  /// By minute of the day; empty where none has come up.
  std::array<std::string, 1440> times;
};

IcuText::IcuText() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  formats_ = std::make_unique<Formats>(icu::Locale(environmentLocale().c_str()), *zone);
}

IcuText::IcuText(const std::string& locale, const std::string& timeZone)
    : formats_(std::make_unique<Formats>(icu::Locale(locale.c_str()), *namedTimeZone(timeZone))) {}

IcuText::~IcuText() = default;

LocalTime IcuText::localTime(Date date) const {
  const auto moment = formats_->momentOf(date.secondsSince1970 * millisecondsPerSecond);
  if (!moment) return {};
  constexpr std::int32_t minutesPerHour = 60;
  const std::chrono::sys_days day(std::chrono::days(moment->day));
  const std::chrono::year_month_day calendar(day);
  const auto minute = static_cast<std::int32_t>(moment->minute);
  return {int(calendar.year()),
          static_cast<std::int32_t>(unsigned(calendar.month())),
          static_cast<std::int32_t>(unsigned(calendar.day())),
          minute / minutesPerHour,
          minute % minutesPerHour,
          moment->second};
}

std::string IcuText::mediumDateShortTime(Date date) const { return formats_->written(date); }

std::optional<Date> IcuText::parseMediumDateShortTime(std::string_view text) const {
  const UnicodeString plain = withPlainSpaces(UnicodeString::fromUTF8(text));
  icu::ParsePosition position(0);
  const UDate milliseconds = formats_->read->parse(plain, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != plain.length() || plain.isEmpty()) {
    return std::nullopt;
  }
  return Date{milliseconds / millisecondsPerSecond};
}

std::string IcuText::formatted(Date date, std::string_view pattern) const {
  return formats_->written(date, pattern);
}

std::string IcuText::dayInDigits(Date date) const {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = formats_->locale;
  locale.setKeywordValue("numbers", "latn", status);
  const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
      icu::DateTimePatternGenerator::createInstance(locale, status));
  UnicodeString text;
  if (U_FAILURE(status)) return {};
  icu::SimpleDateFormat format(patterns->getBestPattern(u"Md", status), locale, status);
  if (U_FAILURE(status)) return {};
  format.setTimeZone(*formats_->zone);
  format.format(date.secondsSince1970 * millisecondsPerSecond, text);
  return Formats::utf8Of(text);
}

std::optional<Date> IcuText::parse(std::string_view text, std::string_view pattern) const {
  const UnicodeString whole = UnicodeString::fromUTF8(text);
  icu::ParsePosition position(0);
  const UDate milliseconds = formats_->of(pattern).format->parse(whole, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != whole.length() || whole.isEmpty()) {
    return std::nullopt;
  }
  return Date{milliseconds / millisecondsPerSecond};
}

std::string IcuText::decimal(double value, int maximumFractionDigits) const {
  UErrorCode status = U_ZERO_ERROR;
  std::string utf8;
  return icu::number::NumberFormatter::withLocale(formats_->locale)
      .precision(icu::number::Precision::maxFraction(maximumFractionDigits))
      .formatDouble(value, status)
      .toString(status)
      .toUTF8String(utf8);
}

namespace {

/// ICU takes the long s and the Kelvin sign for letters of ASCII when it folds case; everywhere
/// else a letter beyond ASCII is none of ASCII's.
UnicodeString subjectOf(std::string_view text) {
  UnicodeString subject = UnicodeString::fromUTF8(text);
  const UnicodeString noLetter(static_cast<char16_t>(0xFFFF));
  subject.findAndReplace(UnicodeString(u'\u017F'), noLetter);
  subject.findAndReplace(UnicodeString(u'\u212A'), noLetter);
  return subject;
}

/// "$" at a pattern's end stands for the text's end, as "^" for its beginning; ICU's own stops
/// before a last line end, too.
UnicodeString patternOf(std::string_view pattern) {
  UnicodeString strict = UnicodeString::fromUTF8(pattern);
  if (pattern.ends_with("$") && !pattern.ends_with("\\$")) {
    strict.truncate(strict.length() - 1);
    strict.append(u"\\z", 2);
  }
  return strict;
}

}  // namespace

bool IcuText::matchesWholeIgnoringCase(std::string_view pattern, std::string_view text) const {
  UErrorCode status = U_ZERO_ERROR;
  const UnicodeString subject = subjectOf(text);
  icu::RegexMatcher matcher(patternOf(pattern), subject, UREGEX_CASE_INSENSITIVE, status);
  limit(matcher, status);
  const bool matches = matcher.matches(status);
  return U_SUCCESS(status) && matches;
}

bool IcuText::findsIgnoringCase(std::string_view pattern, std::string_view text,
                                std::size_t length) const {
  UErrorCode status = U_ZERO_ERROR;
  const UnicodeString subject = subjectOf(text);
  icu::RegexMatcher matcher(patternOf(pattern), subject, UREGEX_CASE_INSENSITIVE, status);
  limit(matcher, status);
  const auto units = static_cast<std::size_t>(subject.length());
  matcher.region(0, static_cast<std::int64_t>(std::min(length, units)), status);
  const bool found = matcher.find(status);
  return U_SUCCESS(status) && found;
}

std::size_t IcuText::count(std::string_view text) const {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> boundaries(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return 0;
  const UnicodeString characters = UnicodeString::fromUTF8(text);
  boundaries->setText(characters);
  std::size_t count = 0;
  while (boundaries->next() != icu::BreakIterator::DONE) ++count;
  return count;
}

std::string IcuText::lowerCased(std::string_view text) const {
  std::string utf8;
  return UnicodeString::fromUTF8(text).toLower(icu::Locale::getRoot()).toUTF8String(utf8);
}

}  // namespace veyla
