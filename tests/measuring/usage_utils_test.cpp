#include "measuring/usage_utils.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <limits>

#include "history/history_store.h"
#include "platform/portable/json.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

TEST(UsageUtilsTest, EachCounterIsItsOwnAndDurableAtOnce) {
  TestPlatform platform;
  EXPECT_EQ(UsageUtils::total_lowsig(), 0);
  const std::array setters{&UsageUtils::setTotal_finished, &UsageUtils::setTotal_finished_percent,
                           &UsageUtils::setTotal_hr_low,   &UsageUtils::setTotal_hr_low_percent,
                           &UsageUtils::setTotal_lowsig,   &UsageUtils::setTotal_lowsig_percent};
  const std::array getters{&UsageUtils::total_finished, &UsageUtils::total_finished_percent,
                           &UsageUtils::total_hr_low,   &UsageUtils::total_hr_low_percent,
                           &UsageUtils::total_lowsig,   &UsageUtils::total_lowsig_percent};
  const std::int64_t values[] = {1, 2, 3, 4, -5, std::numeric_limits<std::int64_t>::max()};
  for (std::size_t i = 0; i < setters.size(); ++i) setters[i](values[i]);
  for (std::size_t i = 0; i < getters.size(); ++i) EXPECT_EQ(getters[i](), values[i]) << i;
  EXPECT_THAT(platform.journal.of("store"),
              ElementsAre("set total_finished", "flush", "set total_finished_percent", "flush",
                          "set total_hr_low", "flush", "set total_hr_low_percent", "flush",
                          "set total_lowsig", "flush", "set total_lowsig_percent", "flush"));
  EXPECT_EQ(UsageUtils::getSome(), 42);
}

TEST(UsageUtilsTest, AddressesAreJudgedAsTheTableOfBothBindingsSays) {
  TestPlatform platform;
  std::ifstream file(VEYLA_ADDRESSES);
  const auto table = NlohmannJsonParser().parse(std::string(std::istreambuf_iterator(file), {}));
  ASSERT_TRUE(table);
  const auto& addresses = *(*table)["addresses"].array();
  ASSERT_GT(addresses.size(), 40U);
  const std::string& isEmail = *(*table)["isEmail"].text();
  const std::string& validates = *(*table)["validateEmail"].text();
  for (const Value& address : addresses) {
    const std::string& text = *address["text"].text();
    const bool isOne = address["isEmail"].boolValue();
    const bool isValid = address["validateEmail"].boolValue();
    EXPECT_EQ(UsageUtils().isEmailWithEmail(text), isOne) << text;
    EXPECT_EQ(Utils::validateEmail(text), isValid) << text;
    // The table's own patterns are those.
    EXPECT_EQ(platform.text->findsIgnoringCase(isEmail, text, platform.text->count(text)), isOne);
    EXPECT_EQ(platform.text->matchesWholeIgnoringCase(validates, text), isValid);
  }
}

}  // namespace
}  // namespace veyla
