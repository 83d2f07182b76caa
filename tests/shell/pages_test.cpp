#include "shell/pages.h"

#include <gmock/gmock.h>

#include "history/history_store.h"
#include "platform/linux/resource_files.h"
#include "platform/portable/json.h"
#include "shell/alerts.h"
#include "shell/product.h"
#include "shell/release_notes.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

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
  for (const char* name : {"HealthHowTo", "Terms", "About", "Options", "Product", "ReleaseNotes"}) {
    giveOwn(name);
  }
  const auto rows = Utils::optionsRows();
  ASSERT_THAT(rows, ElementsAre(SizeIs(2), SizeIs(7), SizeIs(2)));
  int pages = 0;
  for (const auto& section : rows) {
    for (const OptionsRow& row : section) {
      EXPECT_NE(row.title, "");
      if (row.page.empty()) continue;
      ++pages;
      const auto page = Utils::page(row.page);
      ASSERT_TRUE(page) << row.page;
      EXPECT_GE(page->sections.size(), 3U) << row.page;
    }
  }
  EXPECT_EQ(pages, 3);
  // Rows whose taps do something lead to no page.
  EXPECT_NE(rows[1][1].page, "");
  EXPECT_NE(rows[1][2].page, "");
  EXPECT_EQ(rows[1][3].page, "");
  EXPECT_NE(Utils::product().supportAddress, "");
  EXPECT_THAT(Utils::releaseNotes(), testing::Not(IsEmpty()));
}

TEST_F(PagesTest, TheRowOfTheMailAddressTellsTheStoredOne) {
  giveOwn("Options");
  const OptionsRow none = Utils::optionsRows()[2][0];
  EXPECT_EQ(none, (OptionsRow{"Please provide us your email", "For better support", "", true}));
  Utils::setEmail("a@b.de");
  EXPECT_EQ(Utils::optionsRows()[2][0], (OptionsRow{"Change your email", "a@b.de", "", true}));
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

}  // namespace
}  // namespace veyla
