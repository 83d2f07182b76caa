#pragma once

#include <functional>
#include <string>

#include "platform/alert_view.h"
#include "platform/no_services.h"

namespace veyla {

/// A program has no other screens to go to and no bars to colour; only the introduction, which
/// leads to the intended use and to the question about health records, has a form here. The title
/// is remembered for pictures.
class CliScreens : public NoScreens {
 public:
  /// Called where the phone would show its introduction; may be empty.
  std::function<void()> introShown;

  void showIntro() override {
    if (introShown) introShown();
  }
  void setTitle(std::string_view title) override { title_ = title; }

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
