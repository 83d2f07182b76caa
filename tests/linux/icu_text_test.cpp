#include "platform/linux/icu_text.h"

#include <gtest/gtest.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/text_columns.h"

namespace veyla {
namespace {

constexpr Date afternoon{1709647620};  // 2024-03-05 14:07:00 UTC
const IcuText english("en_US", "UTC");

TEST(IcuTextTest, DatesFollowLocaleAndTimeZoneAndTheEnvironmentChoosesThem) {
  EXPECT_EQ(english.mediumDateShortTime(afternoon), "Mar 5, 2024, 2:07\u202fPM");
  EXPECT_EQ(IcuText("de_DE", "Europe/Berlin").mediumDateShortTime(afternoon), "05.03.2024, 15:07");
  EXPECT_THROW(IcuText("en_US", "Europe/Nowhere"), std::invalid_argument);
  setenv("TZ", "Asia/Tokyo", 1);
  setenv("LANG", "fr_FR.UTF-8", 1);
  setenv("LC_TIME", "de_DE.UTF-8@euro", 1);
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(IcuText().mediumDateShortTime(afternoon), "05.03.2024, 23:07");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(IcuText().mediumDateShortTime(afternoon), "Mar 5, 2024, 11:07\u202fPM");
}

TEST(IcuTextTest, LocalTimesAreGregorianInEveryLocale) {
  for (const char* locale : {"de_DE", "ar_EG", "th_TH"}) {
    const IcuText text(locale, "Europe/Berlin");
    const std::pair<double, LocalTime> times[] = {
        {1720700999.9, {2024, 7, 11, 14, 29, 59}}, {1711846799, {2024, 3, 31, 1, 59, 59}},
        {1711846800, {2024, 3, 31, 3, 0, 0}},      {1729987200, {2024, 10, 27, 2, 0, 0}},
        {1729990800, {2024, 10, 27, 2, 0, 0}},     {-0.5, {1970, 1, 1, 0, 59, 59}},
        {-2208992400, {1900, 1, 1, 0, 0, 0}},      {253402300799, {10000, 1, 1, 0, 59, 59}}};
    for (const auto& [seconds, time] : times) {
      EXPECT_EQ(text.localTime(Date{seconds}), time) << locale << " " << time.month;
    }
  }
}

TEST(IcuTextTest, WhatIsWrittenReadsBackWithAnySpaces) {
  for (const char* locale : {"en_US", "es_CO", "ja_JP", "ar_EG", "vi_VN", "th_TH", "zh_TW"}) {
    const IcuText text(locale, "America/New_York");
    // The last is the later one of two that are written alike.
    for (const Date date :
         {afternoon, Date{0}, Date{1719878400}, Date{1733011140}, Date{1730615400}}) {
      const std::string written = text.mediumDateShortTime(date);
      EXPECT_EQ(text.parseMediumDateShortTime(written), date) << written;
      EXPECT_EQ(text.parseMediumDateShortTime(withAsciiSpaces(written)), date) << written;
    }
  }
  for (const char* wrong : {"", "Mar 5, 2024, 2:07 PM.", "Feb 31, 2024, 2:07 PM"}) {
    EXPECT_EQ(english.parseMediumDateShortTime(wrong), std::nullopt) << wrong;
  }
}

TEST(IcuTextTest, DatesAreThoseOfIcuHoweverManyAreWritten) {
  const std::vector<const char*> patterns{"dd/MM", "yyyy-MM-dd", "dd/MM HH:mm"};
  std::vector<double> dates{-1.0, -62135596800.0, -7e10, 2.5e11, 1e300};
  // Three days around a change of the clocks, in steps that meet each day and minute again.
  for (int i = 0; i < 120; ++i) dates.push_back(1729900000 + 2160.0 * i);
  for (const char* name : {"en_US", "ko_KR", "fa_IR", "zh_TW@hours=h12", "th_TH", "bg_BG"}) {
    for (const char* zone : {"Europe/Berlin", "Asia/Kathmandu", "America/St_Johns"}) {
      const IcuText text(name, zone);
      const auto byIcu = [&](icu::DateFormat* made) {
        std::shared_ptr<icu::DateFormat> format(made);
        format->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
        return [format](double seconds) {
          icu::UnicodeString written;
          std::string utf8;
          return format->format(1000 * seconds, written).toUTF8String(utf8);
        };
      };
      const auto whole = byIcu(icu::DateFormat::createDateTimeInstance(
          icu::DateFormat::kMedium, icu::DateFormat::kShort, name));
      for (const double each : dates) {
        EXPECT_EQ(text.mediumDateShortTime(Date{each}), whole(each)) << name << " " << each;
      }
      for (const char* pattern : patterns) {
        UErrorCode status = U_ZERO_ERROR;
        const auto formatted = byIcu(new icu::SimpleDateFormat(pattern, icu::Locale(name), status));
        for (const double each : dates) {
          EXPECT_EQ(text.formatted(Date{each}, pattern), formatted(each)) << pattern << each;
        }
      }
    }
  }
}

TEST(IcuTextTest, PatternsAndNumbersHaveTheLocalesDigitsAndCalendar) {
  EXPECT_EQ(english.formatted(afternoon, "dd MMM"), "05 Mar");
  EXPECT_EQ(english.parse("", "yyyy"), std::nullopt);
  EXPECT_EQ(english.decimal(1250, 1), "1,250");
  EXPECT_EQ(IcuText("de_DE", "UTC").decimal(97.25, 1), "97,2");
  EXPECT_EQ(IcuText("ar_EG", "UTC").decimal(90, 1), "٩٠");
  for (const char* locale : {"en_US", "ar_EG", "fa_IR", "th_TH", "ja_JP"}) {
    const IcuText text(locale, "Pacific/Kiritimati");
    const std::string day = text.formatted(afternoon, "yyyy-MM-dd");
    // 2024-03-06 00:00, fourteen hours ahead.
    EXPECT_EQ(text.parse(day, "yyyy-MM-dd"), Date{1709632800}) << day;
    EXPECT_EQ(text.parse(day + "x", "yyyy-MM-dd"), std::nullopt);
  }
}

TEST(RegularExpressionsTest, AHostileTextEndsTheSearch) {
  EXPECT_FALSE(english.findsIgnoringCase("(a+)+b", std::string(40, 'a'), 40));
  EXPECT_FALSE(english.matchesWholeIgnoringCase("(a+)+b", std::string(40, 'a')));
  EXPECT_FALSE(english.matchesWholeIgnoringCase("(?:a|b)*c", std::string(5'000'000, 'a')));
}

TEST(CharactersTest, AreCountedAsTheyAreSeen) {
  EXPECT_EQ(english.count("e\u0301a\r\n"), 3U);
  EXPECT_EQ(english.count("\U0001F468\u200D\U0001F469\u200D\U0001F467"), 1U) << "a family";
  EXPECT_EQ(english.count("\U0001F1E9\U0001F1EA\U0001F1EF\U0001F1F5"), 2U) << "two flags";
  EXPECT_EQ(IcuText("tr_TR", "UTC").lowerCased("I\u00c4"), "i\u00e4");
}

TEST(TextColumnsTest, FollowWhatATerminalShows) {
  EXPECT_EQ(columnsOf("Mar 5 \u6e2c\u5b9a"), 10U);
  EXPECT_EQ(columnsOf("\u0661\u0661\u200f/e\u0301"), 4U);
  EXPECT_EQ(columnsOf("\xff"), 1U);
  EXPECT_EQ(withAsciiSpaces("2:07\u202fPM\u00a0\u3000\n"), "2:07 PM  \n");
}

}  // namespace
}  // namespace veyla
