#include "shell/view_animation.h"

#include <gtest/gtest.h>

namespace veyla {
namespace {

TEST(ViewAnimationTest, MoveFromOneRestToTheOther) {
  const ElementPose rest;
  for (const char* name :
       {"fadeIn", "fadeOut", "zoomIn", "zoomOut", "slideLeft", "slideRight", "slideUp"}) {
    SCOPED_TRACE(name);
    const auto animation = viewAnimation(name);
    ASSERT_TRUE(animation);
    for (const bool comes : {true, false}) {
      const ElementPose first = animation->poseAt(0, comes);
      const ElementPose last = animation->poseAt(animation->seconds + 1, comes);
      EXPECT_EQ(comes ? last : first, rest);
      EXPECT_EQ((comes ? first : last).opacity, 0);
      const double half = animation->poseAt(animation->seconds / 2, comes).opacity;
      EXPECT_TRUE(half > 0 && half < 1) << half;
    }
  }
  // What comes moves the same way as what goes.
  const auto slide = viewAnimation("slideLeft");
  EXPECT_LT(slide->poseAt(1, false).x, 0);
  EXPECT_GT(slide->poseAt(0, true).x, 0);
  EXPECT_FALSE(viewAnimation("spin"));
}

}  // namespace
}  // namespace veyla
