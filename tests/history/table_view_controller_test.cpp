#include "history/table_view_controller.h"

#include <gmock/gmock.h>

#include <memory>

#include "history/history_store.h"
#include "shell/alerts.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

struct RecorderOptionsView : OptionsView {
  std::map<std::string_view, std::string> texts;
  std::optional<AccessoryButton> emailButton;

  void setText(Element element, const std::string& text) override { texts[element.name] = text; }
  void setAccessoryButton(Element cell, const AccessoryButton& button) override {
    if (cell == OptionsScreen::cellEmail) emailButton = button;
  }
};

class TableViewControllerTest : public testing::Test {
 protected:
  TableViewControllerTest() {
    platform_.resources.files["Product.json"] =
        R"({"supportAddress": "support@veyla.test", "storePage": "https://store.test/veyla",
            "storeHost": "store.test", "storeId": "4711",
            "socialMediaPage": "https://social.test/veyla"})";
  }

  const Alert& dialog() const { return platform_.alerts.shown.front(); }
  std::string alert() const { return inWords(platform_.alerts.shown.back()); }
  /// Opens the dialog and types.
  void type(const std::string& text) {
    platform_.alerts.shown.clear();
    screen_.accessoryButtonTapped();
    platform_.journal.clear();
    id_ = platform_.alerts.lastId;
    alerts_.typeInField(id_, text);
  }
  void tapFirstButton() { alerts_.tapButton(id_, 0); }
  std::string tapRow(std::int32_t section, std::int32_t row) {
    platform_.journal.clear();
    screen_.didSelectRow(section, row);
    return joined(platform_.journal.lines());
  }

  TestPlatform platform_;
  Alerts& alerts_ = Alerts::instance();
  RecorderOptionsView view_;
  int dismissals_ = 0;
  TableViewController screen_{view_, [this] { ++dismissals_; }};
  int id_ = 0;
};

TEST_F(TableViewControllerTest, ItAppearsWithAnEditButtonAndAWhiteBar) {
  screen_.viewDidLoad();
  screen_.viewWillAppear();
  screen_.buttonCloseTap();
  EXPECT_THAT(platform_.log.lines, ElementsAre("viewDidLoad: Options", "Options: viewWillAppear"));
  EXPECT_EQ(view_.emailButton,
            (AccessoryButton{
                "emaileditbutton.png", "EDIT", white, {"HelveticaNeue-Regular", 14}, transparent}));
  EXPECT_EQ(platform_.screens.navigationBarTint, white);
  EXPECT_EQ(dismissals_, 1);
}

TEST_F(TableViewControllerTest, RowsLeadWhereTheySay) {
  // What a tap does; or the page, which the view shows.
  std::string all;
  const auto sections = screen_.rows();
  for (std::size_t i = 0; i < sections.size(); ++i) {
    for (std::size_t k = 0; k < sections[i].size(); ++k) {
      const OptionsRow& row = sections[i][k];
      all += formatText("%zu %s (%s): %s", i, row.title.c_str(), row.subTitle.c_str(),
                        std::string(row.page).c_str());
      all += tapRow(static_cast<std::int32_t>(i), static_cast<std::int32_t>(k));
      all += row.isEmail ? "address\n" : "\n";
    }
  }
  EXPECT_EQ(all,
            R"(0 Send feedback (Tell us what works and what does not): sharing mail Veyla Support
0 Release notes (What each version brought): screens release notes
1 Introduction (How to hold your finger): screens intro
1 Health records (Keep your values with your other health data): HealthHowTo
1 Terms (Not for medical use): Terms
1 Rate Veyla (In the store): sharing open itms-apps://store.test/WebObjects/MZStore.woa/wa/viewContentsUserReviews?id=4711&onlyLatestVersion=true&pageNumber=0&sortOrdering=1&type=Purple+Software
1 Invite friends (By mail): sharing mail Check out Orvane Veyla app
1 Questions and answers (When a measurement fails, and why): screens faq
1 Follow us (Opens in the browser): sharing open https://social.test/veyla
2 Please provide us your email (For better support): address
2 About (Licence and libraries): About
)");
  for (const auto& [section, row] : {std::pair{0, 2}, {1, 7}, {2, 3}, {3, 0}, {-1, 0}, {0, -1}}) {
    EXPECT_EQ(tapRow(section, row), "") << section << ", " << row;
  }
  EXPECT_EQ(screen_.whichEmail(), "invite");
  Utils::setEmail("a@b.de");
  EXPECT_EQ(screen_.rows()[2][0], (OptionsRow{"Change your email", "a@b.de", "", true}));
}

// The user's mail address.

TEST_F(TableViewControllerTest, AnAddressIsStoredAsTypedButForBlanksAroundItAndCanBeRemoved) {
  const std::string blanks =
      " \t\n\v\f\r\u0085\u00a0\u1680\u2000\u200a\u2028\u2029\u202f\u205f\u3000";
  const std::string address = "Some.One+Tag@Example.ORG";
  type(blanks + address + blanks);
  EXPECT_EQ(inWords(dialog()),
            "edit | Email | By supplying us with your email address, we will be better equipped to "
            "provide you with proper support [Save] [Cancel] [outside]");
  EXPECT_EQ(dialog().style,
            (AlertStyle{AlertMotion::upward, AlertMotion::downward, AlertBackground::blur}));
  EXPECT_EQ(dialog().textField,
            (AlertTextField{"Enter your email", "", Keyboard::email, false, false}));
  tapFirstButton();
  EXPECT_EQ(Utils::getEmail(), address);
  EXPECT_FALSE(alerts_.isShowing(id_));
  EXPECT_THAT(view_.texts, UnorderedElementsAre(Pair("labelEmailTitle", "Change your email"),
                                                Pair("labelEmailSubTitle", address)));

  type("half typed");
  EXPECT_EQ(dialog().textField->text, address);
  EXPECT_EQ(dialog().buttons.front().title, "Remove");
  tapFirstButton();
  EXPECT_FALSE(Utils::hasEmail());
  EXPECT_EQ(platform_.journal.of("alert").front(), "text ");
  EXPECT_THAT(view_.texts,
              UnorderedElementsAre(Pair("labelEmailTitle", "Please provide us your email"),
                                   Pair("labelEmailSubTitle", "For better support")));
  EXPECT_EQ(alert(), "plain | Removed! | Your email has been removed from our system [OK]");
}

TEST_F(TableViewControllerTest, ANonvalidAddressKeepsTheDialogOpenAsLongAsItsScreenIsThere) {
  auto screen = std::make_unique<TableViewController>(view_, nullptr);
  screen->accessoryButtonTapped();
  id_ = platform_.alerts.lastId;
  for (const char* text : {"", "someone@example.museum"}) {
    alerts_.typeInField(id_, text);
    platform_.journal.clear();
    tapFirstButton();
    ASSERT_TRUE(alerts_.isShowing(id_)) << text;
    EXPECT_EQ(alerts_.fieldText(id_), text);
    EXPECT_EQ(alert(), "plain | Whoops! | You entered a nonvalid email [OK]");
    EXPECT_THAT(platform_.journal.of("alert"), ElementsAre("show Whoops!", "focus"));
  }
  screen.reset();
  alerts_.typeInField(id_, "someone@example.org");
  tapFirstButton();
  EXPECT_FALSE(Utils::hasEmail());
  EXPECT_THAT(view_.texts, IsEmpty());
}

// Mails.

TEST_F(TableViewControllerTest, FeedbackTellsTheApplicationAndTheMachineWhereMailCanBeSent) {
  platform_.device.shortVersion = "1.2";
  screen_.didSelectRow(0, 0);
  EXPECT_EQ(screen_.whichEmail(), "feedback");
  EXPECT_EQ(platform_.sharing.mails.back(), (Mail{{"support@veyla.test"},
                                                  "Veyla Support",
                                                  R"(


## Please type your feedback above this line ##

You will receive an email from us to confirm that we have received your feedback

App: Veyla 1.2 (1.0.0)
System Version: 10.3.1
Model: iPhone 6S)",
                                                  false,
                                                  {},
                                                  black,
                                                  black}));
  platform_.sharing.mailFinished(MailResult::failed, "no account");
  EXPECT_EQ(platform_.journal.of("sharing").back(), "dismiss mail");

  platform_.sharing.sendsMail = false;
  screen_.feedback();
  EXPECT_EQ(alert(), "error |  | Your email is not configured on the device [OK]");
  // The system itself says so where friends are invited.
  screen_.inviteFriends();
  EXPECT_EQ(platform_.sharing.mails.back(),
            (Mail{{},
                  "Check out Orvane Veyla app",
                  "<p>Veyla turns your phone into a blood-oxygen and pulse meter, using "
                  "the built-in camera.</p><p>Try Veyla yourself.</p><p>"
                  "<a href=\"https://store.test/veyla\">iTunes link</a></p>",
                  true,
                  {},
                  black,
                  std::nullopt}));
}

}  // namespace
}  // namespace veyla
