#include "shell/pages.h"

#include <gmock/gmock.h>

#include "history/table_view_controller.h"
#include "platform/linux/resource_files.h"
#include "platform/portable/json.h"
#include "shell/alerts.h"
#include "shell/faq.h"
#include "shell/product.h"
#include "shell/release_notes.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PagesTest : public testing::Test {
 protected:
  /// The file as it comes with the application.
  void giveOwn(const std::string& name) {
    const auto json =
        NlohmannJsonParser().parse(EmbeddedResources().read(name, "json").value_or(""));
    ASSERT_TRUE(json) << name;
    platform_.resources.give(name, *json);
  }

  TestPlatform platform_;
};

TEST_F(PagesTest, APageHasItsWholeSectionsInTheirOrder) {
  platform_.resources.give(
      "Terms", Value::Dictionary{
                   {"title", "Terms"},
                   {"sections", Value::Array{Value::Dictionary{{"heading", "B"}, {"text", "b"}},
                                             Value::Dictionary{{"heading", "no text"}}, "nothing",
                                             Value::Dictionary{{"heading", "A"}, {"text", "a"}}}}});
  EXPECT_EQ(Utils::page("Terms"), (Page{"Terms", {{"B", "b"}, {"A", "a"}}}));
  EXPECT_EQ(Utils::page("About"), std::nullopt);
  platform_.resources.give("About", "no page");
  EXPECT_EQ(Utils::page("About"), std::nullopt);
}

TEST_F(PagesTest, TheApplicationsOwnPagesAreWhole) {
  for (const char* name : {"HealthHowTo", "Terms", "About", "Product", "ReleaseNotes"}) {
    giveOwn(name);
  }
  OptionsView noViews;
  std::vector<std::string_view> names;
  for (const auto& section : TableViewController(noViews, {}).rows()) {
    for (const OptionsRow& row : section) {
      if (row.page.empty()) continue;
      names.push_back(row.page);
      const auto page = Utils::page(row.page);
      ASSERT_TRUE(page) << row.page;
      EXPECT_GE(page->sections.size(), 3U) << row.page;
    }
  }
  EXPECT_THAT(names, ElementsAre("HealthHowTo", "Terms", "About"));
  EXPECT_NE(Utils::product().supportAddress, "");
  EXPECT_THAT(Utils::releaseNotes(), testing::Not(IsEmpty()));
}

TEST_F(PagesTest, ThePopupTellsWhatThisVersionBrought) {
  platform_.resources.give(
      "ReleaseNotes",
      Value::Dictionary{
          {"results",
           Value::Array{Value::Dictionary{{"version", "1.1.0"}, {"notes", Value::Array{"Later."}}},
                        Value::Dictionary{{"version", "1.0.0"},
                                          {"notes", Value::Array{"First.", 5, "Second."}}}}}});
  Utils::showReleaseNotesPopup();
  EXPECT_EQ(platform_.alerts.shown.back().title, "What's new in 1.0.0");
  EXPECT_EQ(platform_.alerts.shown.back().subtitle, "\u2022 First.\n\u2022 Second.");
  platform_.device.version = "1.0.1";
  Utils::showReleaseNotesPopup();
  EXPECT_EQ(platform_.alerts.shown.back().subtitle, "Small improvements.");
}

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
