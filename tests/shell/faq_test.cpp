#include "shell/faq.h"

#include <gmock/gmock.h>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FaqTest, WholeEntriesAreLoadedInTheirOrderAndReplaceThoseBefore) {
  TestPlatform platform;
  platform.resources.give(
      "Faq",
      Value::Dictionary{
          {"results", Value::Array{Value::Dictionary{{"question", "B?"}, {"answer", "b"}},
                                   Value::Dictionary{{"question", "no answer"}},
                                   Value::Dictionary{{"question", "A?"}, {"answer", "a"}}}}});
  Utils::loadLocalFaqs();
  Utils::loadLocalFaqs();
  EXPECT_THAT(Utils::faqs(), ElementsAre(FaqEntry{"B?", "b"}, FaqEntry{"A?", "a"}));
  platform.resources.files["Faq.json"] = "no JSON";
  Utils::loadLocalFaqs();
  EXPECT_THAT(Utils::faqs(), IsEmpty());
}

}  // namespace
}  // namespace veyla
