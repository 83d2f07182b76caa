#include "shell/intro_view_controller.h"

#include <gtest/gtest.h>

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
                               then();
                             }};

  void SetUp() override { intro_.viewDidLoad(); }
};

TEST_F(IntroViewControllerTest, SwipesTurnThePagesAndStopAtBothEnds) {
  intro_.swiperight();
  EXPECT_EQ(intro_.currentPage(), 0);
  EXPECT_EQ(intro_.indicatedPage(), -1);
  for (int i = 0; i < 4; ++i) intro_.swipeleft();
  EXPECT_EQ(intro_.currentPage(), 3);
  EXPECT_EQ(intro_.indicatedPage(), 3);

  intro_.swiperight();
  intro_.swiperight();  // Before the page is there.
  intro_.swipeleft();
  const auto& display = platform_.display;
  EXPECT_EQ(display.playing(IntroScreen::labelTitle), "slideRight");
  EXPECT_EQ(display.playing(IntroScreen::image), "slideRight");
  EXPECT_EQ(display.playing(IntroScreen::labelSubTitle), "slideRight");
  platform_.time.runFor(0.31);
  EXPECT_EQ(display.playing(IntroScreen::labelTitle), "slideLeft");
  EXPECT_TRUE(display.isSeen(IntroScreen::labelTitle));
  EXPECT_EQ(display.view(IntroScreen::labelTitle).text, "Step 3: Wait");
  EXPECT_EQ(display.view(IntroScreen::image).image, "dummyimg3.png");
  EXPECT_EQ(display.view(IntroScreen::labelSubTitle).text,
            "Wait 10 seconds for the progress bar and data curve to appear.");
}

TEST_F(IntroViewControllerTest, TheLightMayShineFromTheSideOnFourProfilesOnly) {
  const auto placement = [&](const char* model) {
    platform_.device.model = model;
    intro_.viewDidLoad();
    return intro_.subTitles()[1];
  };
  const char* lensOnly =
      "Now cover lens with your finger. The flash's light must shine on your fingertip.";
  const char* both = "Now cover both the camera lens and the flash with your finger.";
  EXPECT_EQ(placement("iPhone8,2"), lensOnly);
  EXPECT_EQ(placement("iPhone7,1"), lensOnly);
  EXPECT_EQ(placement("iPhone6,1"), both);
  EXPECT_EQ(placement("iPhone9,1"), both);
}

TEST_F(IntroViewControllerTest, TheFirstSkipShowsTheIntendedUseAndThenAsksForHealthRecords) {
  intro_.buttonSkipTapped();
  const Alert& notice = platform_.alerts.shown.back();
  ASSERT_EQ(notice.title, "INTENDED USE");
  EXPECT_EQ(notice.subtitle,
            "The Veyla app is for use by sports users who are interested in knowing their blood "
            "oxygenation level (SpO2) and Heart Rate. The Veyla app is NOT INTENDED FOR MEDICAL "
            "USE. The Veyla app can be used in a wide range of settings, including between "
            "exercises, running, hiking, and in relaxation management.");
  EXPECT_EQ(notice.closeButton, "Done");
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

}  // namespace
}  // namespace veyla
