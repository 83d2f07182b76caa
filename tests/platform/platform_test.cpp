#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "platform/format.h"
#include "platform/value.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

/// A shared instance that uses all of its kind while it goes; not again when it was made anew for
/// that, or they would make each other for ever.
template <int number>
struct Partner {
  /// Where there is one; null when there is none.
  static inline Platform* home = nullptr;
  static inline int gone = 0;

  Partner() { home = &Platform::current(); }
  ~Partner() {
    EXPECT_EQ(std::exchange(home, nullptr), &Platform::current());
    if (++gone > 1) return;
    use<0>();
    use<1>();
    use<2>();
  }

  template <int other>
  static void use() {
    Platform::current().shared<Partner<other>>();
    EXPECT_NE(Partner<other>::home, nullptr) << "what had gone was handed out";
  }
};

TEST(PlatformTest, SharedInstancesAreOnePerPlatformAndTheNewestIsInForce) {
  TestPlatform platform;
  int& outer = Platform::current().shared<int>();
  {
    TestPlatform inner;
    EXPECT_NE(&Platform::current().shared<int>(), &outer);
    logLine("%d of %s", 1, "two");
    EXPECT_EQ(inner.log.lines.back(), "1 of two");
  }
  EXPECT_EQ(&Platform::current().shared<int>(), &outer);
}

TEST(PlatformTest, SharedInstancesMayUseEachOtherAndThePlatformWhileTheyGo) {
  TestPlatform outer;
  {
    TestPlatform inner;
    Partner<1>::use<1>();
    Partner<1>::use<0>();
    Partner<1>::use<2>();
  }
  EXPECT_GT(Partner<0>::gone, 1);
  EXPECT_GT(Partner<1>::gone, 1);
  EXPECT_GT(Partner<2>::gone, 1);
  EXPECT_EQ(Partner<0>::home || Partner<1>::home || Partner<2>::home, false);
}

TEST(PlatformTest, AQueueThatGoesOnRunsNothingOfAPlatformThatHasGone) {
  TestPlatform outer;
  std::string ran;
  services().mainQueue.after(2, [&] { ran += 'o'; });
  {
    const Platform inner(services());
    services().mainQueue.after(1, [&] { ran += 'i'; });
    services().mainQueue.after(3, [&] { ran += 'x'; });
    outer.time.runFor(1);
  }
  outer.time.run();
  EXPECT_EQ(ran, "io");
}

TEST(FormatTest, TextsMayBeLong) {
  EXPECT_EQ(formatText("%.0f%%", 97.5), "98%");
  EXPECT_EQ(formatText("%s!", std::string(5000, 'a').c_str()).size(), 5001U);
}

TEST(ValueTest, NumbersConvertAndEverythingElseReadsAsNothing) {
  EXPECT_EQ(Value(12.9).intValue(), 12);
  EXPECT_EQ(Value(-3.7F).intValue(), -3);
  EXPECT_EQ(Value(true).intValue(), 1);
  EXPECT_TRUE(Value(0.5).boolValue());
  EXPECT_FALSE(Value(0).boolValue());
  for (const Value& other : {Value(), Value("5"), Value(Date{5}), Value(Value::Array{5})}) {
    EXPECT_EQ(other.intValue(), 0);
    EXPECT_FALSE(other.boolValue());
    EXPECT_FALSE(other.isNumber());
    EXPECT_TRUE(other["key"].isNull());
  }
}

TEST(ValueTest, IntegersStopAtTheEndsOfTheirRange) {
  using Limits = std::numeric_limits<std::int32_t>;
  EXPECT_EQ(Value(1e300).intValue(), Limits::max());
  EXPECT_EQ(Value(-1e300).intValue(), Limits::min());
  EXPECT_EQ(Value(std::int64_t{1} << 40).intValue(), Limits::max());
  EXPECT_EQ(Value(2147483647.0).intValue(), Limits::max());
  EXPECT_EQ(Value(-2147483648.0).intValue(), Limits::min());
  EXPECT_EQ(Value(std::nan("")).intValue(), 0);
  EXPECT_EQ(Value(9.3e18).int64Value(), std::numeric_limits<std::int64_t>::max());
}

}  // namespace
}  // namespace veyla
