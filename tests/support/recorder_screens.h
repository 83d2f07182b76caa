#pragma once

#include <optional>
#include <string>

#include "platform/screens.h"
#include "tests/support/journal.h"

namespace veyla {

/// Every call stands in the journal as "screens …".
class RecorderScreens : public Screens {
 public:
  explicit RecorderScreens(Journal& journal) : journal_(journal) {}

  std::optional<Appearance> appearance;
  std::optional<Color> navigationBarTint;

  void performTransition(std::string_view name) override { record(name); }
  void showIntro() override { record("intro"); }
  void showFaq() override { record("faq"); }
  void showRemoteReleaseNotes() override { record("release notes"); }
  void showRatingPrompt() override { record("rating prompt"); }
  void setTitle(std::string_view title) override { record("title " + std::string(title)); }
  void setBackSwipeEnabled(bool enabled) override {
    record(enabled ? "back swipe on" : "back swipe off");
  }
  void setIdleTimerDisabled(bool disabled) override {
    record(disabled ? "idle timer off" : "idle timer on");
  }
  void setAppearance(const Appearance& of) override {
    appearance = of;
    record("appearance");
  }
  void setNavigationBarTint(std::optional<Color> tint) override {
    navigationBarTint = tint;
    record(tint ? "tint set" : "tint default");
  }

 private:
  void record(std::string_view what) { journal_.add("screens " + std::string(what)); }

  Journal& journal_;
};

}  // namespace veyla
