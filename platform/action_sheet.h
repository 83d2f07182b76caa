#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace veyla {

struct SheetAction {
  std::string title;
  /// May be empty.
  std::function<void()> action;
};

/// A choice of actions that slides over the screen.
struct ActionSheet {
  /// Empty for none.
  std::string title;
  /// Of the actions' titles; without it the system's own.
  std::optional<Color> tint;
  std::vector<SheetAction> actions;
};

/// Shows one sheet at a time and calls the action that the user taps.
class ActionSheetView {
 public:
  virtual ~ActionSheetView() = default;

  virtual void present(const ActionSheet& sheet) = 0;
  virtual void dismiss() = 0;
};

}  // namespace veyla
