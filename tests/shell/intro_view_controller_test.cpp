#include "shell/intro_view_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

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
  struct Page {
    const char* title;
    const char* subTitle;
    const char* image;
  };
  const Page pages[] = {
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
  const Element elements[] = {IntroScreen::labelTitle, IntroScreen::image,
                              IntroScreen::labelSubTitle};
  EXPECT_EQ(intro_.indicatedPage(), -1);
  int page = 0;
  for (const bool left : {false, true, true, true, true, false, false, false, false}) {
    const int next = std::clamp(page + (left ? 1 : -1), 0, 3);
    const bool turns = next != std::exchange(page, next);
    left ? intro_.swipeleft() : intro_.swiperight();
    EXPECT_EQ(intro_.currentPage(), page);
    const auto expectPlaying = [&](const char* animation) {
      for (const Element element : elements) {
        EXPECT_EQ(display.playing(element), turns ? animation : "") << page << element.name;
      }
    };
    expectPlaying(left ? "slideRight" : "slideLeft");
    platform_.time.runFor(0.31);
    expectPlaying(left ? "slideLeft" : "slideRight");
    platform_.time.runFor(1);
    expectPlaying("");
    if (!turns) continue;
    EXPECT_EQ(intro_.indicatedPage(), page);
    const Page& shown = pages[page];
    EXPECT_TRUE(display.isSeen(IntroScreen::labelTitle));
    EXPECT_EQ(display.view(IntroScreen::labelTitle).text, shown.title);
    EXPECT_EQ(display.view(IntroScreen::labelSubTitle).text, shown.subTitle);
    EXPECT_EQ(display.view(IntroScreen::image).image, shown.image);
  }
  intro_.swipeleft();
  intro_.swipeleft();  // Before the page is there.
  intro_.swiperight();
  platform_.time.run();
  EXPECT_EQ(display.view(IntroScreen::labelTitle).text, pages[1].title);
}

TEST_F(IntroViewControllerTest, TheLightMayShineFromTheSideOnFourProfilesOnly) {
  for (const auto& [model, instruction] :
       {std::pair{"iPhone7,2", "cover lens"},
        {"iPhone7,1", "cover lens"},
        {"iPhone8,1", "cover lens"},
        {"iPhone8,2", "cover lens"},
        {"iPhone6,1", "cover both the camera lens and the flash with your finger."},
        {"iPhone9,1", "cover both the camera lens and the flash with your finger."}}) {
    platform_.device.model = model;
    intro_.viewDidLoad();
    EXPECT_EQ(intro_.subTitles()[1].find(std::string("Now ") + instruction), 0U) << model;
  }
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
