#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/color.h"

namespace veyla {

/// The colours and images that all standard controls of the application share.
struct Appearance {
  Color tableCellTint;
  Color navigationBarTint;
  Color navigationBarTitle;
  std::string_view navigationBarImage;
  Color pageIndicatorDot;
  Color pageIndicatorCurrentDot;
  Color pageIndicatorBackground;
  Color segmentedControlTint;

  bool operator==(const Appearance&) const = default;
};

/// The application's window: which screen is in front, and what frames it.
class Screens {
 public:
  virtual ~Screens() = default;

  /// Opens the screen behind the transition `name` ("settings", "results", "chart").
  virtual void performTransition(std::string_view name) = 0;
  virtual void showIntro() = 0;
  virtual void showFaq() = 0;
  virtual void showRemoteReleaseNotes() = 0;
  virtual void showRatingPrompt() = 0;

  virtual void setTitle(std::string_view title) = 0;
  virtual void setBackSwipeEnabled(bool enabled) = 0;
  virtual void setIdleTimerDisabled(bool disabled) = 0;
  virtual void setAppearance(const Appearance& appearance) = 0;
  /// Without a colour, the system's own.
  virtual void setNavigationBarTint(std::optional<Color> tint) = 0;
};

}  // namespace veyla
