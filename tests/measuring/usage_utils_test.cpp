#include "measuring/usage_utils.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "history/history_store.h"
#include "platform/portable/json.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

TEST(UsageUtilsTest, EachCounterIsItsOwnAndDurableAtOnce) {
  TestPlatform platform;
  using U = UsageUtils;
  const std::tuple<void (*)(std::int64_t), std::int64_t (*)(), std::int64_t> counters[] = {
      {U::setTotal_finished, U::total_finished, 1},
      {U::setTotal_finished_percent, U::total_finished_percent, 2},
      {U::setTotal_hr_low, U::total_hr_low, 3},
      {U::setTotal_hr_low_percent, U::total_hr_low_percent, 4},
      {U::setTotal_lowsig, U::total_lowsig, -5},
      {U::setTotal_lowsig_percent, U::total_lowsig_percent, std::int64_t{1} << 62}};
  for (const auto& [set, get, value] : counters) set(value);
  for (const auto& [set, get, value] : counters) EXPECT_EQ(get(), value);
  EXPECT_THAT(platform.journal.of("store"),
              ElementsAre("set total_finished", "flush", "set total_finished_percent", "flush",
                          "set total_hr_low", "flush", "set total_hr_low_percent", "flush",
                          "set total_lowsig", "flush", "set total_lowsig_percent", "flush"));
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
