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
  // A view may answer at once.
  platform_.alerts.answer = [&](int answered) { alerts_.tapClose(answered); };
  EXPECT_FALSE(alerts_.isShowing(show(alertWith("Done", 1))));
  platform_.time.run();
  EXPECT_EQ(dismissals_, 2);
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

}  // namespace
}  // namespace veyla
