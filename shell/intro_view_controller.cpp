#include "shell/intro_view_controller.h"

#include <algorithm>
#include <utility>

#include "acquisition/settings.h"
#include "history/history_store.h"
#include "measuring/hk_utils.h"
#include "shell/alerts.h"

namespace veyla {

namespace {

/// On these phones the finger can cover the lens alone while the light still shines on it.
constexpr std::array<std::string_view, 4> lensOnlyProfiles{"iphone6", "iphone6plus", "iphone6s",
                                                           "iphone6splus"};

std::string placementInstruction() {
  const std::string profile = Utils::platformString();
  const bool lensOnly = std::find(lensOnlyProfiles.begin(), lensOnlyProfiles.end(), profile) !=
                        lensOnlyProfiles.end();
  return lensOnly
             ? "Now cover lens with your finger. The flash's light must shine on your fingertip."
             : "Now cover both the camera lens and the flash with your finger.";
}

}  // namespace

IntroViewController::IntroViewController(Display& display,
                                         std::function<void(std::function<void()> then)> dismiss)
    : display_(display), dismiss_(std::move(dismiss)) {}

void IntroViewController::viewDidLoad() {
  titles_ = {"Step 1: Calibrate", "Step 2: Ready", "Step 3: Wait", "Step 4: Done"};
  subTitles_ = {"Begin measuring by tapping START - this calibrates the camera.",
                placementInstruction(),
                "Wait 10 seconds for the progress bar and data curve to appear.",
                "After approximately 10-20 seconds you should be done. Otherwise see the FAQ."};
  images_ = {"dummyimg1.png", "dummyimg2.png", "dummyimg3.png", "dummyimg4.png"};
  currentPage_ = 0;
  indicatedPage_ = currentPage_ - 1;
}

void IntroViewController::swipeleft() {
  if (currentPage_ < pages - 1) showPage(currentPage_ + 1, "slideRight", "slideLeft");
}

void IntroViewController::swiperight() {
  if (currentPage_ >= 1) showPage(currentPage_ - 1, "slideLeft", "slideRight");
}

void IntroViewController::showPage(std::int32_t page, std::string_view exit,
                                   std::string_view entry) {
  currentPage_ = page;
  indicatedPage_ = page;
  const auto index = static_cast<std::size_t>(page);
  const auto replace = [&](Element element, std::function<void()> setContent) {
    display_.animate(element, exit, false,
                     [this, element, entry, setContent = std::move(setContent)] {
                       setContent();
                       display_.animate(element, entry, true, {});
                     });
  };
  replace(IntroScreen::labelTitle,
          [this, index] { display_.setText(IntroScreen::labelTitle, titles_[index]); });
  replace(IntroScreen::image,
          [this, index] { display_.setImage(IntroScreen::image, images_[index]); });
  replace(IntroScreen::labelSubTitle,
          [this, index] { display_.setText(IntroScreen::labelSubTitle, subTitles_[index]); });
}

void IntroViewController::buttonSkipTapped() {
  if (Utils::hasFirstTimeNotePopup()) {
    dismiss_([] {});
    return;
  }
  Alert notice;
  notice.kind = AlertKind::notice;
  notice.title = "INTENDED USE";
  notice.subtitle =
      "The Veyla app is for use by sports users who are interested in knowing their blood "
      "oxygenation level (SpO2) and Heart Rate. The Veyla app is NOT INTENDED FOR MEDICAL USE. The "
      "Veyla app can be used in a wide range of settings, including between exercises, running, "
      "hiking, and in relaxation management.";
  notice.closeButton = "Done";
  notice.style = {.show = AlertMotion::upward,
                  .hide = AlertMotion::downward,
                  .background = AlertBackground::blur};
  notice.onDismiss = [dismiss = dismiss_] {
    Utils::setFirstTimeNotePopup();
    dismiss([] { HKUtils::setupHK(); });
  };
  Alerts::instance().show(std::move(notice));
}

}  // namespace veyla
