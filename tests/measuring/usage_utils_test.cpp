#include "measuring/usage_utils.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

bool accepts(const std::string& text) { return UsageUtils().isEmailWithEmail(text); }

TEST(UsageUtilsTest, EachCounterIsItsOwnAndDurableAtOnce) {
  TestPlatform platform;
  EXPECT_EQ(UsageUtils::total_lowsig(), 0);
  UsageUtils::setTotal_finished(1);
  UsageUtils::setTotal_finished_percent(2);
  UsageUtils::setTotal_hr_low(3);
  UsageUtils::setTotal_hr_low_percent(4);
  UsageUtils::setTotal_lowsig(-5);
  UsageUtils::setTotal_lowsig_percent(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(UsageUtils::total_finished(), 1);
  EXPECT_EQ(UsageUtils::total_finished_percent(), 2);
  EXPECT_EQ(UsageUtils::total_hr_low(), 3);
  EXPECT_EQ(UsageUtils::total_hr_low_percent(), 4);
  EXPECT_EQ(UsageUtils::total_lowsig(), -5);
  EXPECT_EQ(UsageUtils::total_lowsig_percent(), std::numeric_limits<std::int64_t>::max());
  EXPECT_THAT(platform.journal.of("store"),
              ElementsAre("set total_finished", "flush", "set total_finished_percent", "flush",
                          "set total_hr_low", "flush", "set total_hr_low_percent", "flush",
                          "set total_lowsig", "flush", "set total_lowsig_percent", "flush"));
  EXPECT_EQ(UsageUtils::getSome(), 42);
}

TEST(UsageUtilsTest, AnAddressEndsInTwoToFourLetters) {
  TestPlatform platform;
  for (const char* address : {"a@b.de", "SOME.one_%+-9@Mail.Example-1.ORG", "a@b.info", "a@-.xx"}) {
    EXPECT_TRUE(accepts(address)) << address;
  }
  for (const char* text : {"", "a@b", "a@b.d", "a@b.museum", "a@b.d1", "@b.de", "a@.", "a b@c.de",
                           " a@b.de", "a@b.de ", "a@@b.de", "m\u00fcller@b.de", "a@b\u00fc.de"}) {
    EXPECT_FALSE(accepts(text)) << text;
  }
}

TEST(UsageUtilsTest, AsManyUnitsAreLookedAtAsThereAreCharacters) {
  TestPlatform platform;
  // A character of two units at the end leaves out as many units as there are too many.
  EXPECT_TRUE(accepts("a@b.de\u0301"));
  EXPECT_TRUE(accepts("a@b.com\u0301\u0302")) << "what is left out counts for nothing";
  EXPECT_FALSE(accepts("a@b.d\u0301e")) << "the accent is looked at, the e is not";
  EXPECT_FALSE(accepts("a@b.de\U0001F600")) << "half of it is looked at";
  EXPECT_TRUE(accepts("a@b.de\r\n")) << "one character, and a line may end";
}

}  // namespace
}  // namespace veyla
