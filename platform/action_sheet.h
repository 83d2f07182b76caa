#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace veyla {

enum class ActionStyle { standard, cancel };

struct SheetAction {
  std::string title;
  ActionStyle style = ActionStyle::standard;
  std::function<void()> action;
};

/// A choice that slides in from below.
struct ActionSheet {
  std::optional<std::string> title;
  std::optional<std::string> message;
  std::vector<SheetAction> actions;
  /// Of the actions' titles; without it the system's own.
  std::optional<Color> tint = {};
};

/// Shows one sheet at a time and calls the action that the user taps.
class ActionSheetView {
 public:
  virtual ~ActionSheetView() = default;

  virtual void present(const ActionSheet& sheet) = 0;
  virtual void dismiss() = 0;
};

}  // namespace veyla
