#include "shell/alerts.h"

#include <gmock/gmock.h>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;

class AlertsTest : public testing::Test {
 protected:
  /// Shows an alert that counts its dismissals.
  int show(std::optional<std::string> closeButton, std::optional<double> duration,
           bool closesOnOutsideTap = false) {
    Alert alert;
    alert.title = "Title";
    alert.closeButton = std::move(closeButton);
    alert.duration = duration;
    alert.closesOnOutsideTap = closesOnOutsideTap;
    alert.onDismiss = [this] { ++dismissals_; };
    return alerts_.show(std::move(alert));
  }

  TestPlatform platform_;
  Alerts& alerts_ = Alerts::instance();
  int dismissals_ = 0;
};

TEST_F(AlertsTest, AnAlertGoesByItselfOrByWhatItOffersAndIsDismissedOnce) {
  const int stays = show({}, {});
  alerts_.tapClose(stays);
  alerts_.tapOutside(stays);
  alerts_.tapButton(stays, 0);
  const int timed = show({}, 2);
  platform_.time.runFor(1.99);
  EXPECT_TRUE(alerts_.isShowing(stays) && alerts_.isShowing(timed));
  platform_.time.runFor(0.02);
  EXPECT_FALSE(alerts_.isShowing(timed));
  const int closed = show("Done", 1, true);
  alerts_.tapOutside(closed);
  alerts_.tapClose(closed);
  platform_.time.run();
  EXPECT_EQ(dismissals_, 2);
  EXPECT_TRUE(alerts_.isShowing(stays));
  EXPECT_THAT(platform_.journal.of("alert"),
              ElementsAre("show Title", "show Title", "hide 2", "show Title", "hide 3"));
  // A view may answer at once.
  platform_.alerts.answer = [&](int answered) { alerts_.tapClose(answered); };
  EXPECT_FALSE(alerts_.isShowing(show("Done", 1)));
  platform_.time.run();
  EXPECT_EQ(dismissals_, 3);
}

}  // namespace
}  // namespace veyla
