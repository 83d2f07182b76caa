#include "shell/pages.h"

#include <gmock/gmock.h>

#include "history/table_view_controller.h"
#include "platform/linux/resource_files.h"
#include "shell/faq.h"
#include "shell/product.h"
#include "shell/release_notes.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

class PagesTest : public testing::Test {
 protected:
  TestPlatform platform_;
  std::map<std::string, std::string, std::less<>>& files_ = platform_.resources.files;
};

TEST_F(PagesTest, WholeSectionsAndQuestionsAreReadInTheirOrder) {
  files_["Terms.json"] = R"({"title": "Terms", "sections": [
      {"heading": "B", "text": "b"}, {"heading": "no text"}, "nothing",
      {"heading": "A", "text": "a"}]})";
  files_["About.json"] = R"("no page")";
  EXPECT_EQ(Utils::page("Terms"), (Page{"Terms", {{"B", "b"}, {"A", "a"}}}));
  EXPECT_EQ(Utils::page("About"), std::nullopt);
  EXPECT_EQ(Utils::page("Missing"), std::nullopt);

  files_["Faq.json"] = R"({"results": [{"question": "B?", "answer": "b"},
      {"question": "no answer"}, {"question": "A?", "answer": "a"}]})";
  Utils::loadLocalFaqs();
  Utils::loadLocalFaqs();
  EXPECT_THAT(Utils::faqs(), ElementsAre(FaqEntry{"B?", "b"}, FaqEntry{"A?", "a"}));
  files_["Faq.json"] = "no JSON";
  Utils::loadLocalFaqs();
  EXPECT_THAT(Utils::faqs(), IsEmpty());
}

TEST_F(PagesTest, WhatComesWithTheApplicationIsWhole) {
  for (const char* name : {"HealthHowTo", "Terms", "About", "Product", "ReleaseNotes", "Faq"}) {
    const auto text = EmbeddedResources().read(name, "json");
    ASSERT_TRUE(text) << name;
    files_[name + std::string(".json")] = *text;
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
  EXPECT_FALSE(Utils::releaseNotes().empty());
  Utils::loadLocalFaqs();
  EXPECT_FALSE(Utils::faqs().empty());
}

TEST_F(PagesTest, ThePopupTellsWhatThisVersionBrought) {
  files_["ReleaseNotes.json"] = R"({"results": [{"version": "1.1.0", "notes": ["Later."]},
      {"version": "1.0.0", "notes": ["First.", 5, "Second."]}]})";
  const auto shown = [&](const char* version) {
    platform_.device.version = version;
    Utils::showReleaseNotesPopup();
    return inWords(platform_.alerts.shown.back());
  };
  EXPECT_EQ(shown("1.0.0"),
            "notice | What's new in 1.0.0 | \u2022 First.\n\u2022 Second. [Done] [outside]");
  EXPECT_EQ(shown("1.0.1"), "notice | What's new in 1.0.1 | Small improvements. [Done] [outside]");
}

}  // namespace
}  // namespace veyla
