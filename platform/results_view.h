#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/action_sheet.h"
#include "platform/display.h"

namespace veyla {

enum class RowAnimation { none, fade };

/// The views of the results screen: the list, the label chooser before a dimming view, the bottom
/// toolbar and the navigation bar. Rows count from 0 at the top.
///
/// This class itself is a screen with no views attached: nothing happens, an animation is complete.
class ResultsView {
 public:
  virtual ~ResultsView() = default;

  /// Of the navigation bar. `titles` begin at the outer edge.
  virtual void setLeftButton(std::string_view /*title*/) {}
  virtual void setRightButtons(const std::vector<std::string_view>& /*titles*/) {}

  /// In points, of the list.
  virtual std::int32_t listHeight() const { return 0; }
  /// Check circles instead of swiping.
  virtual void setEditing(bool /*editing*/, bool /*animated*/) {}
  /// Neither scrolls.
  virtual void selectRow(std::size_t /*row*/, bool /*animated*/) {}
  virtual void deselectRow(std::size_t /*row*/, bool /*animated*/) {}
  /// Takes rows, in ascending order, out of the list in one update.
  virtual void deleteRows(const std::vector<std::size_t>& /*rows*/, RowAnimation /*animation*/) {}

  /// Of a deletion, which `text` tells, beside the list.
  virtual void offerUndo(const std::string& /*text*/) {}
  virtual void withdrawUndo() {}

  /// The list is another one than it was.
  virtual void reloadRows() {}

  virtual void reloadChooser() {}
  virtual void setCheckMark(std::size_t /*chooserRow*/, bool /*shown*/) {}

  /// 0 to 1, at once or over `seconds`.
  virtual void setOpacity(Element /*element*/, double /*opacity*/, double /*seconds*/) {}
  /// Moves the toolbar by so many points upward (negative: downward) while the list takes its new
  /// height, in one animation.
  virtual void slideToolbar(std::int32_t /*upward*/, std::int32_t /*listHeight*/,
                            double /*seconds*/) {}

  /// The user's choice calls the action, which dismisses the sheet.
  virtual void presentSheet(const ActionSheet& /*sheet*/) {}
  virtual void dismissSheet() {}
};

}  // namespace veyla
