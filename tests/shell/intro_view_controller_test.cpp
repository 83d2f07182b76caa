#include "shell/intro_view_controller.h"

#include <gmock/gmock.h>

#include "history/history_store.h"
#include "shell/alerts.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

class IntroViewControllerTest : public testing::Test {
 protected:
  TestPlatform platform_;
  int dismissals_ = 0;
  IntroViewController intro_{platform_.display, [this](const std::function<void()>& then) {
                               ++dismissals_;
                               EXPECT_TRUE(Utils::hasFirstTimeNotePopup()) << "noted before";
                               then();
                             }};

  void SetUp() override { intro_.viewDidLoad(); }
};

TEST_F(IntroViewControllerTest, SwipesTurnThePagesAndStopAtBothEnds) {
  const std::array<std::string, 3> pages[] = {
      {"Step 1: Calibrate", "Begin measuring by tapping START - this calibrates the camera.",
       "dummyimg1.png"},
      {"Step 2: Ready",
       "Now cover lens with your finger. The flash's light must shine on your fingertip.",
       "dummyimg2.png"},
      {"Step 3: Wait", "Wait 10 seconds for the progress bar and data curve to appear.",
       "dummyimg3.png"},
      {"Step 4: Done",
       "After approximately 10-20 seconds you should be done. Otherwise see the FAQ.",
       "dummyimg4.png"}};
  const RecorderDisplay& display = platform_.display;
  using namespace IntroScreen;
  EXPECT_EQ(intro_.indicatedPage(), -1);
  int page = 0;
  for (const bool left : {false, true, true, true, true, false, false, false, false}) {
    const int next = std::clamp(page + (left ? 1 : -1), 0, 3);
    const bool turns = next != std::exchange(page, next);
    const char* ways[] = {left ? "slideRight" : "slideLeft", left ? "slideLeft" : "slideRight", ""};
    left ? intro_.swipeleft() : intro_.swiperight();
    EXPECT_EQ(intro_.currentPage(), page);
    for (const char* way : ways) {
      for (const Element element : {labelTitle, image, labelSubTitle}) {
        EXPECT_EQ(display.playing(element), turns ? way : "") << page;
      }
      platform_.time.runFor(0.31);
    }
    const std::string inOrder = "labelTitle image labelSubTitle ";
    EXPECT_EQ(std::exchange(platform_.display.begun, {}), turns ? inOrder + inOrder : "");
    if (!turns) continue;
    EXPECT_EQ(intro_.indicatedPage(), page);
    EXPECT_TRUE(display.isSeen(labelTitle));
    EXPECT_EQ(display.view(labelTitle).text, pages[page][0]);
    EXPECT_EQ(display.view(labelSubTitle).text, pages[page][1]);
    EXPECT_EQ(display.view(image).image, pages[page][2]);
  }
  intro_.swipeleft();
  intro_.swipeleft();  // Before the page is there.
  intro_.swiperight();
  platform_.time.run();
  EXPECT_EQ(display.view(labelTitle).text, pages[1][0]);

  for (const char* lensAlone : {"iPhone7,2", "iPhone7,1", "iPhone8,1", "iPhone8,2"}) {
    platform_.device.model = lensAlone;
    intro_.viewDidLoad();
    EXPECT_EQ(intro_.subTitles()[1], pages[1][1]) << lensAlone;
  }
  platform_.device.model = "iPhone9,1";
  intro_.viewDidLoad();
  EXPECT_EQ(intro_.subTitles()[1],
            "Now cover both the camera lens and the flash with your finger.");
}

TEST_F(IntroViewControllerTest, TheFirstSkipShowsTheIntendedUseAndThenAsksForHealthRecords) {
  intro_.buttonSkipTapped();
  const Alert& notice = platform_.alerts.shown.back();
  EXPECT_EQ(inWords(notice),
            "notice | INTENDED USE | The Veyla app is for use by sports users who are interested "
            "in knowing their blood oxygenation level (SpO2) and Heart Rate. The Veyla app is NOT "
            "INTENDED FOR MEDICAL USE. The Veyla app can be used in a wide range of settings, "
            "including between exercises, running, hiking, and in relaxation management. [Done]");
  EXPECT_EQ(notice.style,
            (AlertStyle{AlertMotion::upward, AlertMotion::downward, AlertBackground::blur}));
  EXPECT_FALSE(Utils::hasFirstTimeNotePopup());
  EXPECT_EQ(dismissals_, 0) << "the introduction stays open behind the notice";

  Alerts::instance().tapClose(platform_.alerts.lastId);
  EXPECT_TRUE(Utils::hasFirstTimeNotePopup());
  EXPECT_EQ(dismissals_, 1);
  EXPECT_EQ(platform_.health.requested.size(), 2U);

  platform_.health.requested.clear();
  intro_.buttonSkipTapped();
  EXPECT_EQ(dismissals_, 2);
  EXPECT_EQ(platform_.alerts.shown.size(), 1U);
  EXPECT_TRUE(platform_.health.requested.empty());
}

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
