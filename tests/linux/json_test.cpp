#include "platform/portable/json.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "platform/portable/real_text.h"

namespace veyla {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

std::optional<Value> parsed(std::string_view text) { return NlohmannJsonParser().parse(text); }

TEST(JsonParserTest, KeepsNumbersApartAndTheLastOfEqualKeysAndReadsNoTags) {
  using Limits = std::numeric_limits<std::int64_t>;
  const std::pair<const char*, Value> cases[] = {
      {R"([1, 1.0, -9223372036854775808, true, null, "a"])",
       Array{1, 1.0, Limits::min(), true, Value(), "a"}},
      {"[9223372036854775807, 9223372036854775808, -9223372036854775809]",
       Array{Limits::max(), 9223372036854775808.0, -9223372036854775808.0}},
      {R"({"a": 1, "b": 2, "a": {"a": 3, "a": 4}, "c": 5})",
       Dictionary{{"a", Dictionary{{"a", 4}}}, {"b", 2}, {"c", 5}}},
      {R"({"$date": 1})", Dictionary{{"$date", 1}}}};
  for (const auto& [text, value] : cases) EXPECT_EQ(parsed(text), value) << text;
}

TEST(JsonParserTest, WhatIsNoJsonOrNestsTooDeepIsNothing) {
  for (const char* text : {"", "{", "[1,]", "{\"a\" 1}", "nul", "[1] x", "\"\xff\"", "1e999"}) {
    EXPECT_EQ(parsed(text), std::nullopt) << text;
  }
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  EXPECT_TRUE(parsed(nested(deepestJson)));
  EXPECT_FALSE(parsed(nested(deepestJson + 1)));
  EXPECT_FALSE(parsed(std::string(5'000'000, '[')));
}

TEST(JsonWriterTest, WritesPlainJsonIndentedInItsOrder) {
  const NlohmannJsonWriter writer;
  EXPECT_EQ(writer.prettyPrinted(Dictionary{{"b", 97.1F}, {"a", Array{1, true, Value()}}}),
            "{\n  \"b\": 97.1,\n  \"a\": [\n    1,\n    true,\n    null\n  ]\n}");
  for (const Value& unwritable :
       {Value(std::numeric_limits<double>::infinity()), Value(Date{1}), Value("\xff")}) {
    EXPECT_EQ(writer.prettyPrinted(Array{unwritable}), std::nullopt);
  }
}

TEST(StoredJsonTest, EveryBitOfANumberIsKept) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    const auto half = static_cast<std::uint32_t>(bits);
    const double wide = std::bit_cast<double>(bits);
    const float narrow = std::bit_cast<float>(half);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(*doubleFromText(numberText(wide))), bits);
    ASSERT_EQ(std::bit_cast<std::uint32_t>(*floatFromText(numberText(narrow))), half);
    const auto text = writeJson(Array{wide, narrow, Date{wide}});
    ASSERT_EQ(writeJson(*readJson(*text)), text);
    // What WebAssembly does it with.
    double read = 0;
    float single = 0;
    ASSERT_EQ(RealTextByC::read(RealTextByC::shortest(wide), read), !std::isnan(wide));
    ASSERT_EQ(RealTextByC::read(RealTextByC::shortest(narrow), single), !std::isnan(narrow));
    ASSERT_TRUE((read == wide || std::isnan(wide)) && (single == narrow || std::isnan(narrow)));
  }
}

TEST(StoredJsonTest, ALineThatIsNoJsonSpoilsNoOther) {
  const auto read = readJson("[{\"a\":1},\n{\"a\":1e999},\n{\"a\":,\n{\"a\":2}]");
  EXPECT_EQ(read,
            Value(Array{Dictionary{{"a", 1}}, R"({"a":1e999})", R"({"a":)", Dictionary{{"a", 2}}}));
  for (const char* text :
       {"[{]", "[", "]", "", "{\"a\":1e999}", "[1e999]", "[1,\n2", "[1,\n\xff]"}) {
    EXPECT_EQ(readJson(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace veyla
