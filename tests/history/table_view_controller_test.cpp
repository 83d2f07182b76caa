#include "history/table_view_controller.h"

#include <gmock/gmock.h>

#include <memory>

#include "history/history_store.h"
#include "shell/alerts.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

class RecorderOptionsView : public OptionsView {
 public:
  std::map<std::string_view, std::string> texts;
  std::optional<AccessoryButton> emailButton;

  void setText(Element element, const std::string& text) override { texts[element.name] = text; }
  void setAccessoryButton(Element cell, const AccessoryButton& button) override {
    EXPECT_EQ(cell, OptionsScreen::cellEmail);
    emailButton = button;
  }
};

class TableViewControllerTest : public testing::Test {
 protected:
  TableViewControllerTest() {
    platform_.resources.give("Product",
                             Value::Dictionary{{"supportAddress", "support@veyla.test"},
                                               {"storePage", "https://store.test/veyla"},
                                               {"storeHost", "store.test"},
                                               {"storeId", "4711"},
                                               {"socialMediaPage", "https://social.test/veyla"}});
  }

  const Alert& dialog() const { return platform_.alerts.shown.front(); }
  /// Opens the dialog and types.
  void type(const std::string& text) {
    platform_.alerts.shown.clear();
    platform_.alerts.fields.clear();
    screen_.accessoryButtonTapped();
    id_ = platform_.alerts.lastId;
    alerts_.typeInField(id_, text);
  }
  void tap(const std::string& button) {
    for (std::size_t i = 0; i < dialog().buttons.size(); ++i) {
      if (dialog().buttons[i].title == button) return alerts_.tapButton(id_, i);
    }
    FAIL() << "no button " << button;
  }
  std::vector<std::string> tapRow(std::int32_t section, std::int32_t row) {
    platform_.journal.clear();
    screen_.didSelectRow(section, row);
    return platform_.journal.lines();
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
  const auto rows = screen_.rows();
  ASSERT_THAT(rows, ElementsAre(SizeIs(2), SizeIs(7), SizeIs(2)));
  struct Case {
    std::int32_t section;
    std::int32_t row;
    const char* title;
    const char* leadsTo;
  };
  const std::string review =
      "sharing open "
      "itms-apps://store.test/WebObjects/MZStore.woa/wa/viewContentsUserReviews?id=4711"
      "&onlyLatestVersion=true&pageNumber=0&sortOrdering=1&type=Purple+Software";
  // What a tap does; or the page, which the view shows.
  const Case cases[] = {{0, 0, "Send feedback", "sharing mail Veyla Support"},
                        {0, 1, "Release notes", "screens release notes"},
                        {1, 0, "Introduction", "screens intro"},
                        {1, 1, "Health records", "HealthHowTo"},
                        {1, 2, "Terms", "Terms"},
                        {1, 3, "Rate Veyla", review.c_str()},
                        {1, 4, "Invite friends", "sharing mail Check out Orvane Veyla app"},
                        {1, 5, "Questions and answers", "screens faq"},
                        {1, 6, "Follow us", "sharing open https://social.test/veyla"},
                        {2, 0, "Please provide us your email", ""},
                        {2, 1, "About", "About"}};
  for (const auto& [section, row, title, leadsTo] : cases) {
    const OptionsRow& shown =
        rows[static_cast<std::size_t>(section)][static_cast<std::size_t>(row)];
    EXPECT_EQ(shown.title, title);
    EXPECT_EQ(shown.isEmail, section == 2 && row == 0);
    const auto done = tapRow(section, row);
    EXPECT_EQ(std::string(shown.page) + (done.empty() ? "" : done.front()), leadsTo);
    EXPECT_EQ(screen_.whichEmail(), section * 10 + row >= 14 ? "invite" : "feedback");
  }
  for (const auto& [section, row] : {std::pair{0, 2}, {1, 7}, {2, 3}, {3, 0}, {-1, 0}, {0, -1}}) {
    EXPECT_THAT(tapRow(section, row), IsEmpty()) << section << ", " << row;
  }
  EXPECT_EQ(rows[2][0].subTitle, "For better support");
  Utils::setEmail("a@b.de");
  EXPECT_EQ(screen_.rows()[2][0], (OptionsRow{"Change your email", "a@b.de", "", true}));
}

TEST_F(TableViewControllerTest, AScreenThatHasGoneIsNotCalledByItsDialog) {
  Utils::setEmail("old@example.org");
  auto screen = std::make_unique<TableViewController>(view_, nullptr);
  screen->accessoryButtonTapped();
  screen.reset();
  const int id = platform_.alerts.lastId;
  alerts_.typeInField(id, "new@example.org");
  alerts_.tapButton(id, 1);
  alerts_.tapButton(id, 0);
  EXPECT_EQ(Utils::getEmail(), "old@example.org");
  EXPECT_THAT(view_.texts, IsEmpty());
}

// The user's mail address.

TEST_F(TableViewControllerTest, TheDialogAsksForAnAddress) {
  type("");
  const Alert& asked = dialog();
  EXPECT_EQ(asked.kind, AlertKind::edit);
  EXPECT_EQ(asked.title, "Email");
  EXPECT_EQ(asked.subtitle,
            "By supplying us with your email address, we will be better equipped to provide you "
            "with proper support");
  EXPECT_EQ(asked.closeButton, "Cancel");
  EXPECT_EQ(asked.duration, std::nullopt);
  EXPECT_TRUE(asked.closesOnOutsideTap);
  EXPECT_EQ(asked.style,
            (AlertStyle{AlertMotion::upward, AlertMotion::downward, AlertBackground::blur}));
  EXPECT_EQ(asked.color, (Color{200 / 255.0, 2 / 255.0, 0, 1}));
  EXPECT_EQ(asked.iconTint, (Color{1, 1, 1, 1}));
  ASSERT_TRUE(asked.textField);
  EXPECT_EQ(asked.textField->placeholder, "Enter your email");
  EXPECT_EQ(asked.textField->text, "");
  EXPECT_EQ(asked.textField->keyboard, Keyboard::email);
  EXPECT_FALSE(asked.textField->autocapitalizes || asked.textField->autocorrects);
  ASSERT_EQ(asked.buttons.size(), 1U) << "nothing to remove";
  EXPECT_EQ(asked.buttons[0].title, "Save");
}

TEST_F(TableViewControllerTest, AnAddressIsStoredAsTypedButForBlanksAroundIt) {
  // All of Unicode's.
  const std::string blanks =
      " \t\n\v\f\r\u0085\u00a0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
      "\u200a\u2028\u2029\u202f\u205f\u3000";
  type(blanks + "Some.One+Tag@Example.ORG" + blanks);
  tap("Save");
  EXPECT_EQ(Utils::getEmail(), "Some.One+Tag@Example.ORG");
  EXPECT_FALSE(alerts_.isShowing(id_));
  EXPECT_THAT(view_.texts,
              UnorderedElementsAre(Pair("labelEmailTitle", "Change your email"),
                                   Pair("labelEmailSubTitle", "Some.One+Tag@Example.ORG")));
}

TEST_F(TableViewControllerTest, ANonvalidAddressKeepsTheDialogOpen) {
  for (const char* text : {"", "someone", "someone@example", "some one@example.org",
                           "someone@example.museum", "m\u00fcller@example.org"}) {
    type(text);
    tap("Save");
    EXPECT_FALSE(Utils::hasEmail()) << text;
    ASSERT_TRUE(alerts_.isShowing(id_)) << text;
    EXPECT_EQ(alerts_.fieldText(id_), text);
    EXPECT_EQ(platform_.alerts.shown.back().title, "Whoops!");
    EXPECT_EQ(platform_.alerts.shown.back().kind, AlertKind::plain);
    EXPECT_EQ(platform_.alerts.shown.back().closeButton, "OK");
    EXPECT_EQ(platform_.alerts.shown.back().subtitle, "You entered a nonvalid email");
    EXPECT_THAT(platform_.alerts.fields, ElementsAre("focus " + std::to_string(id_)));
  }
  alerts_.typeInField(id_, "someone@example.org");
  tap("Save");
  EXPECT_EQ(Utils::getEmail(), "someone@example.org");
  EXPECT_FALSE(alerts_.isShowing(id_));
}

TEST_F(TableViewControllerTest, AStoredAddressIsShownAndCanBeRemoved) {
  Utils::setEmail("old@example.org");
  type("half typed");
  EXPECT_EQ(dialog().textField->text, "old@example.org");
  ASSERT_EQ(dialog().buttons.size(), 2U);
  EXPECT_EQ(dialog().buttons[0].title, "Remove");
  tap("Remove");
  EXPECT_FALSE(Utils::hasEmail());
  EXPECT_THAT(platform_.alerts.fields, ElementsAre("text " + std::to_string(id_) + " "));
  EXPECT_THAT(view_.texts,
              UnorderedElementsAre(Pair("labelEmailTitle", "Please provide us your email"),
                                   Pair("labelEmailSubTitle", "For better support")));
  EXPECT_EQ(platform_.alerts.shown.back().title, "Removed!");
  EXPECT_EQ(platform_.alerts.shown.back().subtitle, "Your email has been removed from our system");
}

// Mails.

TEST_F(TableViewControllerTest, FeedbackTellsTheApplicationAndTheMachine) {
  platform_.device.shortVersion = "1.2";
  screen_.feedback();
  const Mail& mail = platform_.sharing.mails.back();
  EXPECT_THAT(mail.recipients, ElementsAre("support@veyla.test"));
  EXPECT_FALSE(mail.isHtml);
  EXPECT_EQ(mail.body,
            "\n\n\n"
            "## Please type your feedback above this line ##\n"
            "\n"
            "You will receive an email from us to confirm that we have received your feedback\n"
            "\n"
            "App: Veyla 1.2 (1.0.0)\n"
            "System Version: 10.3.1\n"
            "Model: iPhone 6S");
  EXPECT_EQ(mail.tint, (Color{0, 0, 0, 1}));
  EXPECT_EQ(mail.titleColor, (Color{0, 0, 0, 1}));
  platform_.sharing.mailFinished(MailResult::failed, "no account");
  EXPECT_THAT(platform_.log.lines, testing::Contains("Mail sent failure: no account"));
  EXPECT_THAT(platform_.journal.of("sharing").back(), "dismiss mail");
}

TEST_F(TableViewControllerTest, OnlyFeedbackAsksWhetherMailCanBeSent) {
  platform_.sharing.sendsMail = false;
  screen_.feedback();
  EXPECT_THAT(platform_.sharing.mails, IsEmpty());
  const Alert& alert = platform_.alerts.shown.back();
  EXPECT_EQ(alert.kind, AlertKind::error);
  EXPECT_EQ(alert.title, "");
  EXPECT_EQ(alert.subtitle, "Your email is not configured on the device");

  screen_.inviteFriends();
  const Mail& mail = platform_.sharing.mails.back();
  EXPECT_TRUE(mail.isHtml);
  EXPECT_THAT(mail.recipients, IsEmpty());
  EXPECT_THAT(mail.body, HasSubstr("built-in camera.</p><p>"));
  EXPECT_THAT(mail.body,
              testing::EndsWith("<p><a href=\"https://store.test/veyla\">iTunes link</a></p>"));
  EXPECT_EQ(mail.titleColor, std::nullopt);
}

}  // namespace
}  // namespace veyla
