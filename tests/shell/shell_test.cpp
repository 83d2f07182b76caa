#include <gmock/gmock.h>

#include "history/table_view_controller.h"
#include "measuring/app_delegate.h"
#include "platform/linux/resource_files.h"
#include "shell/alerts.h"
#include "shell/faq.h"
#include "shell/launch_history.h"
#include "shell/pages.h"
#include "shell/product.h"
#include "shell/rating_prompt.h"
#include "shell/release_notes.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

TEST(AlertsTest, AnAlertGoesByItselfOrByWhatItOffersAndIsDismissedOnce) {
  TestPlatform platform;
  Alerts& alerts = Alerts::instance();
  int dismissals = 0;
  Alert alert;
  alert.onDismiss = [&] { ++dismissals; };
  const int stays = alerts.show(alert);
  alerts.tapClose(stays);
  alerts.tapOutside(stays);
  alerts.tapButton(stays, 0);
  alert.duration = 2;
  const int timed = alerts.show(alert);
  platform.time.runFor(1.99);
  EXPECT_TRUE(alerts.isShowing(stays) && alerts.isShowing(timed));
  platform.time.runFor(0.02);
  EXPECT_FALSE(alerts.isShowing(timed));
  alert.closeButton = "Done";
  alert.closesOnOutsideTap = true;
  const int closed = alerts.show(alert);
  alerts.tapOutside(closed);
  alerts.tapClose(closed);
  platform.time.run();
  EXPECT_EQ(dismissals, 2);
  EXPECT_TRUE(alerts.isShowing(stays));
  EXPECT_EQ(joined(platform.journal.of("alert")), "show  | show  | hide 2 | show  | hide 3");
  // A view may answer at once.
  platform.alerts.answer = [&](int answered) { alerts.tapClose(answered); };
  EXPECT_FALSE(alerts.isShowing(alerts.show(alert)));
  platform.time.run();
  EXPECT_EQ(dismissals, 3);
}

TEST(RatingPromptTest, AsksOnceWhenADayThreeUsesAndThreeMeasurementsHaveAllBeenReached) {
  for (const auto& [uses, events, seconds, asks] : {std::tuple{3, 3, 86400, true},
                                                    {3, 3, 86399, false},
                                                    {2, 9, 86400, false},
                                                    {9, 2, 86400, false}}) {
    TestPlatform platform;
    RatingPrompt& prompt = RatingPrompt::instance();
    AppDelegate::instance();  // Configures it.
    for (int i = 1; i < uses; ++i) prompt.logUse();
    for (int i = 1; i < events; ++i) prompt.logSignificantEvent();
    platform.time.runFor(seconds);
    prompt.logUse();
    prompt.logSignificantEvent();
    EXPECT_EQ(platform.store.values.contains("rating_asked"), asks);
    if (asks) prompt.logUse();
    EXPECT_EQ(platform.journal.of("screens").size(), asks ? 1U : 0U) << uses << ' ' << events;
  }
}

TEST(LaunchHistoryTest, TheFirstLaunchIsNoUpdateAndRecordsItsVersion) {
  std::map<std::string, Value, std::less<>> kept;
  for (const auto& [version, isFirst, isUpdated] :
       {std::tuple{"1.0.0", true, false}, {"1.0.0", false, false}, {"1.1.0", false, true}}) {
    TestPlatform platform;
    platform.store.values = kept;
    platform.device.version = version;
    EXPECT_EQ(Utils::isAppOnFirstLaunch(), isFirst) << version;
    EXPECT_EQ(Utils::isAppVersionUpdated(), isUpdated) << version;
    EXPECT_EQ(Utils::isAppOnFirstLaunch(), isFirst) << "the answer holds for the whole launch";
    EXPECT_EQ(platform.journal.of("store").back(), "flush");
    kept = platform.store.values;
  }
}

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
