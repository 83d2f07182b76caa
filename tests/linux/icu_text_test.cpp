#include "platform/linux/icu_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

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

TEST(IcuTextTest, DatesFollowLocaleAndTimeZone) {
  EXPECT_EQ(plainSpaced(IcuText("en_US", "UTC").mediumDateShortTime(afternoon)),
            "Mar 5, 2024, 2:07 PM");
  EXPECT_EQ(IcuText("de_DE", "Europe/Berlin").mediumDateShortTime(afternoon), "05.03.2024, 15:07");
  EXPECT_THROW(IcuText("en_US", "Europe/Nowhere"), std::invalid_argument);
}

TEST(IcuTextTest, WhatFormattingMakesReadsBackWithAnySpaces) {
  for (const char* locale : {"en_US", "de_DE", "fr_FR", "es_MX", "ja_JP", "ko_KR", "ar_EG", "bg_BG",
                             "fi_FI", "vi_VN", "th_TH", "fa_IR", "zh_TW", "hi_IN"}) {
    const IcuText text(locale, "America/New_York");
    for (const Date date : {afternoon, Date{0}, Date{1719878400}, Date{1733011140}}) {
      const std::string written = text.mediumDateShortTime(date);
      EXPECT_EQ(text.parseMediumDateShortTime(written), date) << written;
      EXPECT_EQ(text.parseMediumDateShortTime(plainSpaced(written)), date) << written;
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

TEST(IcuTextTest, TheEnvironmentChoosesLocaleAndTimeZone) {
  setenv("TZ", "Asia/Tokyo", 1);
  setenv("LANG", "fr_FR.UTF-8", 1);
  setenv("LC_TIME", "de_DE.UTF-8@euro", 1);
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(IcuText().mediumDateShortTime(afternoon), "05.03.2024, 23:07");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(plainSpaced(IcuText().mediumDateShortTime(afternoon)), "Mar 5, 2024, 11:07 PM");
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
  EXPECT_EQ(IcuText("de_DE", "UTC").decimal(97.34, 1), "97,3");
  EXPECT_EQ(IcuText("ar_EG", "UTC").decimal(90, 1), "٩٠");
}

TEST(RegularExpressionsTest, TheWholeTextMustMatchInAnyCase) {
  const IcuText text("en_US", "UTC");
  EXPECT_TRUE(text.matchesWholeIgnoringCase("[a-z]+@x", "Someone@X"));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("[a-z]+@x", "someone@x\n"));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("[a-z]+@x", " someone@x"));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("a|ab", "abc"));
  EXPECT_TRUE(text.matchesWholeIgnoringCase("a|ab", "ab"));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("[a-z", "a"));
}

TEST(RegularExpressionsTest, AHostileTextEndsTheSearch) {
  const IcuText text("en_US", "UTC");
  EXPECT_FALSE(text.matchesWholeIgnoringCase("(a+)+b", std::string(40, 'a')));
  EXPECT_FALSE(text.matchesWholeIgnoringCase("(?:a|b)*c", std::string(5'000'000, 'a')));
}

}  // namespace
}  // namespace veyla
