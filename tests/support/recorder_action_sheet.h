#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/action_sheet.h"

namespace veyla {

/// Keeps the sheet that is open, whose actions a test taps.
class RecorderActionSheet : public ActionSheetView {
 public:
  std::optional<ActionSheet> open;

  void present(const ActionSheet& sheet) override { open = sheet; }
  void dismiss() override { open.reset(); }

  std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const SheetAction& action : open->actions) titles.push_back(action.title);
    return titles;
  }
  void tap(std::size_t index) {
    const auto action = open->actions.at(index).action;
    action();
  }
};

}  // namespace veyla
