#include "platform/linux/icu_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "platform/linux/text_columns.h"

namespace veyla {
namespace {

constexpr Date afternoon{1709647620};  // 2024-03-05 14:07:00 UTC

std::string plainSpaced(std::string text) {
  for (const char* space : {"\u202f", "\u00a0", "\u2009"}) {
    for (std::size_t at = 0; (at = text.find(space)) != std::string::npos;) {
      text.replace(at, std::string(space).size(), " ");
    }
  }
  return text;
}

TEST(IcuTextTest, DatesFollowLocaleAndTimeZoneAndTheEnvironmentChoosesThem) {
  EXPECT_EQ(plainSpaced(IcuText("en_US", "UTC").mediumDateShortTime(afternoon)),
            "Mar 5, 2024, 2:07 PM");
  EXPECT_EQ(IcuText("de_DE", "Europe/Berlin").mediumDateShortTime(afternoon), "05.03.2024, 15:07");
  EXPECT_THROW(IcuText("en_US", "Europe/Nowhere"), std::invalid_argument);
  setenv("TZ", "Asia/Tokyo", 1);
  setenv("LANG", "fr_FR.UTF-8", 1);
  setenv("LC_TIME", "de_DE.UTF-8@euro", 1);
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(IcuText().mediumDateShortTime(afternoon), "05.03.2024, 23:07");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(plainSpaced(IcuText().mediumDateShortTime(afternoon)), "Mar 5, 2024, 11:07 PM");
}

TEST(IcuTextTest, WhatFormattingMakesReadsBackWithAnySpaces) {
  for (const char* locale : {"en_US", "de_DE", "fr_FR", "es_CO", "ja_JP", "ko_KR", "ar_EG", "bg_BG",
                             "fi_FI", "vi_VN", "th_TH", "fa_IR", "zh_TW", "hi_IN"}) {
    const IcuText text(locale, "America/New_York");
    // The last is the later one of two that are written alike.
    for (const Date date :
         {afternoon, Date{0}, Date{1719878400}, Date{1733011140}, Date{1730615400}}) {
      const std::string written = text.mediumDateShortTime(date);
      EXPECT_EQ(text.parseMediumDateShortTime(written), date) << written;
      EXPECT_EQ(text.parseMediumDateShortTime(plainSpaced(written)), date) << written;
    }
  }
}

TEST(IcuTextTest, WritingMoreDatesWritesThemAsTheFirst) {
  for (const char* locale : {"en_US", "de_DE", "ja_JP", "ko_KR", "ar_EG", "fa_IR", "vi_VN", "zh_TW",
                             "zh_TW@hours=h12", "th_TH", "hi_IN", "bg_BG"}) {
    for (const char* zone : {"Europe/Berlin", "Asia/Kathmandu", "America/St_Johns"}) {
      const IcuText one(locale, zone);
      // Three days around a change of the clocks, in steps that meet each day and minute again.
      for (int i = 0; i < 120; ++i) {
        const Date date{1729900000 + 2160.0 * i};
        EXPECT_EQ(one.mediumDateShortTime(date), IcuText(locale, zone).mediumDateShortTime(date));
      }
      for (const double seconds : {-1.0, -62135596800.0, -7e10, 2.5e11, 1e300}) {
        EXPECT_EQ(one.mediumDateShortTime(Date{seconds}),
                  IcuText(locale, zone).mediumDateShortTime(Date{seconds}))
            << seconds;
      }
    }
  }
}

TEST(IcuTextTest, AnotherFormIsNoDate) {
  const IcuText text("en_US", "UTC");
  for (const char* wrong :
       {"", " ", "Mar 5, 2024", "Mar 5, 2024, 2:07 PM.", "Mar 5, 2024, 2:07 PM PM",
        "Feb 31, 2024, 2:07 PM", "05.03.2024, 15:07", "Mar 5, 2024, 25:07 PM", "2024-03-05"}) {
    EXPECT_EQ(text.parseMediumDateShortTime(wrong), std::nullopt) << wrong;
  }
}

TEST(IcuTextTest, PatternsWriteAndReadTheLocalesDigitsNamesAndCalendar) {
  EXPECT_EQ(IcuText("en_US", "UTC").formatted(afternoon, "dd MMM"), "05 Mar");
  EXPECT_EQ(IcuText("th_TH", "Asia/Bangkok").formatted(afternoon, "dd/MM/yyyy"), "05/03/2567");
  for (const char* locale : {"en_US", "ar_EG", "fa_IR", "th_TH", "ja_JP"}) {
    const IcuText text(locale, "Pacific/Kiritimati");
    const std::string day = text.formatted(afternoon, "yyyy-MM-dd");
    // 2024-03-06 00:00, fourteen hours ahead.
    EXPECT_EQ(text.parse(day, "yyyy-MM-dd"), Date{1709632800}) << day;
    EXPECT_EQ(text.parse(day + "x", "yyyy-MM-dd"), std::nullopt);
  }
  EXPECT_EQ(IcuText("en_US", "UTC").parse("", "yyyy"), std::nullopt);
}

TEST(IcuTextTest, DecimalNumbersAreShortAndTheLocales) {
  EXPECT_EQ(IcuText("en_US", "UTC").decimal(1250, 1), "1,250");
  EXPECT_EQ(IcuText("de_DE", "UTC").decimal(97.25, 1), "97,2");
  EXPECT_EQ(IcuText("ar_EG", "UTC").decimal(90, 1), "٩٠");
}

TEST(RegularExpressionsTest, TheWholeTextMustMatchInAnyCase) {
  const IcuText text("en_US", "UTC");
  struct {
    const char *pattern, *text;
    bool matches;
  } const cases[] = {{"[a-z]+@x", "Someone@X", true},
                     {"[a-z]+@x", "someone@x\n", false},
                     {"[a-z]+@x", " someone@x", false},
                     {"a|ab", "abc", false},
                     {"a|ab", "ab", true},
                     {"[a-z", "a", false},
                     {"[a-z]+$", "a\n", false},
                     {"[a-z]", "\u212a", false}};
  for (const auto& [pattern, subject, matches] : cases) {
    EXPECT_EQ(text.matchesWholeIgnoringCase(pattern, subject), matches) << pattern << subject;
  }
}

TEST(RegularExpressionsTest, ASearchEndsWhereItIsToldAndAHostileTextEndsIt) {
  const IcuText text("en_US", "UTC");
  EXPECT_TRUE(text.findsIgnoringCase("b+$", "aBBc", 3));
  EXPECT_FALSE(text.findsIgnoringCase("b$", "b\n", 2));
  EXPECT_FALSE(text.findsIgnoringCase("c", "aBBc", 3));
  EXPECT_FALSE(text.findsIgnoringCase("a", "a", 0));
  EXPECT_TRUE(text.findsIgnoringCase("^a$", "a", 100)) << "beyond the text's end";
  EXPECT_FALSE(text.findsIgnoringCase("[a", "a", 1));
  EXPECT_FALSE(text.findsIgnoringCase("(a+)+b", std::string(40, 'a'), 40));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("(a+)+b", std::string(40, 'a')));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("(?:a|b)*c", std::string(5'000'000, 'a')));
}

TEST(CharactersTest, AreCountedAsTheyAreSeen) {
  const IcuText text("en_US", "UTC");
  EXPECT_EQ(text.count(""), 0U);
  EXPECT_EQ(text.count("e\u0301a"), 2U);
  EXPECT_EQ(text.count("\r\n"), 1U);
  EXPECT_EQ(text.count("\U0001F468\u200D\U0001F469\u200D\U0001F467"), 1U) << "a family";
  EXPECT_EQ(text.count("\U0001F1E9\U0001F1EA\U0001F1EF\U0001F1F5"), 2U) << "two flags";
  EXPECT_EQ(IcuText("tr_TR", "UTC").lowerCased("I\u00c4"), "i\u00e4");
}

TEST(TextColumnsTest, FollowWhatATerminalShows) {
  EXPECT_EQ(columnsOf("Mar 5"), 5U);
  EXPECT_EQ(columnsOf("\u6e2c\u5b9a"), 4U);
  EXPECT_EQ(columnsOf("\u0661\u0661\u200f/e\u0301"), 4U);
  EXPECT_EQ(columnsOf("\xff"), 1U);
  EXPECT_EQ(withAsciiSpaces("2:07\u202fPM\u00a0\u3000\n"), "2:07 PM  \n");
}

}  // namespace
}  // namespace veyla
