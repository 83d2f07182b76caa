#include "platform/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace veyla {
namespace {

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
