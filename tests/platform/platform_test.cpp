#include "platform/platform.h"

#include <gtest/gtest.h>

#include "platform/format.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

struct Early {
  int used = 0;

  static inline int usedAtTheEnd = 0;
  ~Early() { usedAtTheEnd = used; }
};

/// Uses another shared instance while it goes.
struct Late {
  ~Late() { ++Platform::current().shared<Early>().used; }
};

TEST(PlatformTest, SharedInstancesAreOnePerPlatformAndTheNewestIsInForce) {
  TestPlatform platform;
  Early& outer = Platform::current().shared<Early>();
  outer.used = 5;
  {
    TestPlatform inner;
    EXPECT_EQ(Platform::current().shared<Early>().used, 0);
    logLine("%d of %s", 1, "two");
    EXPECT_EQ(inner.log.lines.back(), "1 of two");
  }
  EXPECT_EQ(&Platform::current().shared<Early>(), &outer);
}

TEST(PlatformTest, SharedInstancesMayUseEachOtherWhileTheyGo) {
  {
    TestPlatform platform;
    Platform::current().shared<Late>();
    Platform::current().shared<Early>();
  }
  EXPECT_EQ(Early::usedAtTheEnd, 1) << "Early went before Late, which uses it";
}

TEST(FormatTest, TextsMayBeLong) {
  EXPECT_EQ(formatText("%.0f%%", 97.5), "98%");
  EXPECT_EQ(formatText("%s!", std::string(5000, 'a').c_str()).size(), 5001U);
}

}  // namespace
}  // namespace veyla
