#include "measuring/notification_center.h"

#include <gmock/gmock.h>

namespace veyla {
namespace {

TEST(NotificationCenterTest, AHandlerMayRegisterAndRemoveAnybodyItselfIncluded) {
  NotificationCenter center;
  std::vector<std::string> told;
  const int leaving = 0, removed = 0, staying = 0;
  center.add(&leaving, "news", [&, name = std::string("a name longer than a word is")] {
    center.remove(&leaving);
    center.remove(&removed);
    center.add(&staying, "news", [&] { told.push_back("late"); });
    told.push_back(name);
  });
  center.add(&removed, "news", [&] { told.push_back("removed"); });
  center.add(&staying, "news", [&] { told.push_back("staying"); });
  center.add(&staying, "other news", [&] { told.push_back("other"); });
  center.post("news");
  center.post("news");
  EXPECT_THAT(told,
              testing::ElementsAre("a name longer than a word is", "staying", "staying", "late"));
}

}  // namespace
}  // namespace veyla
