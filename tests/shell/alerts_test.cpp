#include "shell/alerts.h"

#include <gmock/gmock.h>

#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

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

}  // namespace
}  // namespace veyla
