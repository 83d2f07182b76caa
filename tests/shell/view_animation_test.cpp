#include "shell/view_animation.h"

#include <gtest/gtest.h>

#include "shell/screen_state.h"

namespace veyla {
namespace {

constexpr Element panel{"panel"};

/// Whether the panel can be seen after these animations, one after the other.
bool visibleAfter(const std::vector<std::string_view>& animations) {
  ScreenState state;
  for (const auto animation : animations) state.animate(panel, animation, {});
  return state.view(panel).isVisible();
}

TEST(ViewAnimationTest, LeaveElementsVisibleOrGone) {
  EXPECT_FALSE(visibleAfter({"fadeOut"}));
  EXPECT_TRUE(visibleAfter({"fadeOut", "fadeIn"}));
  EXPECT_FALSE(visibleAfter({"zoomOut"}));
  EXPECT_TRUE(visibleAfter({"zoomOut", "zoomIn", "zoomIn"}));
  EXPECT_FALSE(visibleAfter({"slideLeft"}));
  EXPECT_TRUE(visibleAfter({"slideLeft", "slideRight"}));
  EXPECT_TRUE(visibleAfter({"fadeOut", "slideUp"}));
  EXPECT_TRUE(visibleAfter({"unknown"}));
}

TEST(ViewAnimationTest, MoveFromOneRestToTheOther) {
  const ElementPose rest;
  for (const char* name :
       {"fadeIn", "fadeOut", "zoomIn", "zoomOut", "slideLeft", "slideRight", "slideUp"}) {
    SCOPED_TRACE(name);
    const auto animation = viewAnimation(name);
    ASSERT_TRUE(animation);
    for (const bool wasVisible : {true, false}) {
      const bool comes = animation->endsVisible(wasVisible);
      const ElementPose first = animation->poseAt(0, wasVisible);
      const ElementPose last = animation->poseAt(animation->seconds + 1, wasVisible);
      EXPECT_EQ(comes ? last : first, rest);
      EXPECT_EQ((comes ? first : last).opacity, 0);
      const double half = animation->poseAt(animation->seconds / 2, wasVisible).opacity;
      EXPECT_TRUE(half > 0 && half < 1) << half;
    }
  }
  // What comes moves the same way as what goes.
  const auto slide = viewAnimation("slideLeft");
  EXPECT_LT(slide->poseAt(1, true).x, 0);
  EXPECT_GT(slide->poseAt(0, false).x, 0);
  EXPECT_FALSE(viewAnimation("spin"));
}

}  // namespace
}  // namespace veyla
