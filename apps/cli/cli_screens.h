#pragma once

#include <functional>
#include <string>

#include "platform/alert_view.h"
#include "platform/screens.h"

namespace veyla {

/// A program has no other screens to go to and no bars to colour; only the introduction, which
/// leads to the intended use and to the question about health records, has a form here. The title
/// is remembered for pictures.
class CliScreens : public Screens {
 public:
  /// Called where the phone would show its introduction; may be empty.
  std::function<void()> introShown;

  void performTransition(std::string_view /*name*/) override {}
  void showIntro() override {
    if (introShown) introShown();
  }
  void showFaq() override {}
  void showRemoteReleaseNotes() override {}
  void showRatingPrompt() override {}
  void setTitle(std::string_view title) override { title_ = title; }
  void setBackSwipeEnabled(bool /*enabled*/) override {}
  void setIdleTimerDisabled(bool /*disabled*/) override {}
  void setAppearance(const Appearance& /*appearance*/) override {}
  void setNavigationBarTint(std::optional<Color> /*tint*/) override {}

  const std::string& title() const { return title_; }

 private:
  std::string title_;
};

/// Prints notices and closes them; remembers any other alert that waits for an answer, which ends
/// the program's run.
class CliAlerts : public AlertView {
 public:
  /// Called when an alert comes that waits for an answer; may be empty.
  std::function<void()> waitsForAnswer;

  void show(int id, const Alert& alert) override;
  void hide(int /*id*/) override {}

  const std::string& title() const { return title_; }
  const std::string& subtitle() const { return subtitle_; }

 private:
  std::string title_;
  std::string subtitle_;
};

}  // namespace veyla
