#include "shell/view_animation.h"

#include <gtest/gtest.h>

namespace veyla {
namespace {

TEST(ViewAnimationTest, EachLeadsItsOwnWayBetweenRestAndGone) {
  for (const ViewAnimation& way : {ViewAnimation{"fadeIn", 0.3, {0}},
                                   {"fadeOut", 0.3, {0}},
                                   {"zoomIn", 0.35, {0, 0.6}},
                                   {"zoomOut", 0.25, {0, 0.6}},
                                   {"slideLeft", 0.3, {0, 1, -60}},
                                   {"slideRight", 0.3, {0, 1, 60}},
                                   {"slideUp", 0.3, {0, 1, 0, -60}}}) {
    SCOPED_TRACE(way.name);
    const auto animation = viewAnimation(way.name);
    ASSERT_TRUE(animation);
    EXPECT_EQ(animation->seconds, way.seconds);
    EXPECT_EQ(animation->poseAt(0, false), ElementPose());
    EXPECT_EQ(animation->poseAt(9, false), way.gone);
    // What comes moves the same way as what goes, and slows down where that gathers speed.
    EXPECT_EQ(animation->poseAt(0, true).x, -way.gone.x);
    EXPECT_EQ(animation->poseAt(0, true).y, -way.gone.y);
    EXPECT_EQ(animation->poseAt(0, true).scale, way.gone.scale);
    EXPECT_EQ(animation->poseAt(way.seconds / 2, true).opacity, 0.75);
    EXPECT_EQ(animation->poseAt(way.seconds / 2, false).opacity, 0.75);
    EXPECT_EQ(animation->poseAt(9, true), ElementPose());
  }
  EXPECT_FALSE(viewAnimation("spin"));
}

}  // namespace
}  // namespace veyla
