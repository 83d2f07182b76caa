#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/format.h"
#include "platform/value.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

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
  for (const std::size_t length : {126U, 127U, 128U, 5000U}) {
    const std::string text(length, 'a');
    EXPECT_EQ(formatText("%s!", text.c_str()), text + "!");
  }
  const double numbers[] = {0, -0.0, -0.3, 0.5, 1.5, 72.4, 999999.5, 1e6, 1e300, -72.5};
  for (const double number : numbers) {
    EXPECT_EQ(roundedText(number), formatText("%.0f", number));
  }
  for (const int number : {0, 9, 10, 123}) {
    EXPECT_EQ(paddedText(number, 2), formatText("%02d", number));
  }
}

TEST(ValueTest, NumbersConvertWithinTheRangeAndEverythingElseReadsAsNothing) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::pair<Value, std::int32_t> integers[] = {{12.9, 12},
                                                     {-3.7F, -3},
                                                     {true, 1},
                                                     {1e300, Limits::max()},
                                                     {-1e300, Limits::min()},
                                                     {std::int64_t{1} << 40, Limits::max()},
                                                     {2147483648.0, Limits::max()},
                                                     {std::nan(""), 0}};
  for (const auto& [value, integer] : integers) {
    EXPECT_EQ(value.intValue(), integer) << described(value);
  }
  EXPECT_EQ(Value(std::ldexp(1.0, 63)).int64Value(), std::numeric_limits<std::int64_t>::max());
  EXPECT_TRUE(Value(0.5).boolValue());
  EXPECT_FALSE(Value(0).boolValue());
  for (const Value& other : {Value(), Value("5"), Value(Date{5}), Value(Value::Array{5})}) {
    EXPECT_EQ(other.intValue(), 0);
    EXPECT_FALSE(other.boolValue());
    EXPECT_FALSE(other.isNumber());
    EXPECT_TRUE(other["key"].isNull());
  }
}

}  // namespace
}  // namespace veyla
