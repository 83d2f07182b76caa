#include "shell/alerts.h"

#include <gmock/gmock.h>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

class AlertsTest : public testing::Test {
 protected:
  static Alert alertWith(std::optional<std::string> closeButton, std::optional<double> duration,
                         bool closesOnOutsideTap = false) {
    Alert alert;
    alert.closeButton = std::move(closeButton);
    alert.duration = duration;
    alert.closesOnOutsideTap = closesOnOutsideTap;
    return alert;
  }
  /// Shows an alert that counts its dismissals.
  int show(Alert alert) {
    alert.title = "Title";
    alert.onDismiss = [this] { ++dismissals_; };
    return alerts_.show(std::move(alert));
  }

  TestPlatform platform_;
  Alerts& alerts_ = Alerts::instance();
  int dismissals_ = 0;
};

TEST_F(AlertsTest, AnAlertWithADurationGoesAwayByItself) {
  const int id = show(alertWith({}, 2));
  platform_.time.runFor(1.99);
  EXPECT_TRUE(alerts_.isShowing(id));
  platform_.time.runFor(0.02);
  EXPECT_FALSE(alerts_.isShowing(id));
  EXPECT_EQ(dismissals_, 1);
  EXPECT_THAT(platform_.journal.of("alert"), ElementsAre("show Title", "hide 1"));
}

TEST_F(AlertsTest, WhatTheAlertDoesNotOfferDoesNotCloseIt) {
  const int id = show({});
  alerts_.tapClose(id);
  alerts_.tapOutside(id);
  alerts_.tapButton(id, 0);
  EXPECT_TRUE(alerts_.isShowing(id));
  EXPECT_EQ(dismissals_, 0);
}

TEST_F(AlertsTest, AnAlertIsDismissedOnceHoweverOftenItIsClosed) {
  const int id = show(alertWith("Done", 1, true));
  const int other = show(alertWith({}, {}, true));
  alerts_.tapOutside(id);
  alerts_.tapClose(id);
  platform_.time.run();
  EXPECT_EQ(dismissals_, 1);
  EXPECT_TRUE(alerts_.isShowing(other));
}

TEST_F(AlertsTest, AViewMayAnswerAtOnce) {
  platform_.alerts.answer = [&](int id) { alerts_.tapClose(id); };
  const int id = show(alertWith("Done", 1));
  EXPECT_FALSE(alerts_.isShowing(id));
  platform_.time.run();
  EXPECT_EQ(dismissals_, 1);
}

TEST_F(AlertsTest, AnAlertThatIsWithdrawnGoesWithoutAWord) {
  const int id = show(alertWith("Done", 1));
  alerts_.withdraw(id);
  EXPECT_FALSE(alerts_.isShowing(id));
  alerts_.withdraw(id);
  platform_.time.run();
  EXPECT_EQ(dismissals_, 0);
  EXPECT_THAT(platform_.journal.of("alert"), ElementsAre("show Title", "hide 1"));
}

TEST_F(AlertsTest, APlainMessageHasAnOkButton) {
  Utils::showOkAlert("text", "title");
  const Alert& alert = platform_.alerts.shown.back();
  EXPECT_EQ(alert.kind, AlertKind::plain);
  EXPECT_EQ(alert.title, "title");
  EXPECT_EQ(alert.subtitle, "text");
  EXPECT_EQ(alert.closeButton, "OK");
}

}  // namespace
}  // namespace veyla
