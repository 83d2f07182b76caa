#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "history/results_view_controller.h"
#include "history/table_view_controller.h"
#include "platform/action_sheet.h"
#include "platform/options_view.h"
#include "platform/results_view.h"

namespace veyla {

/// The page's sheet of actions: `present(sheet)` gets its texts, and answers a tap by `choose`.
class PageActionSheet : public ActionSheetView {
 public:
  explicit PageActionSheet(emscripten::val page) : page_(std::move(page)) {}

  void present(const ActionSheet& sheet) override;
  void dismiss() override { page_.call<void>("dismiss"); }

  void choose(std::size_t action);

 private:
  emscripten::val page_;
  ActionSheet sheet_;
};

/// The results screen's views in the page: `page` answers the operations by their names, but for
/// the sheets, which `sheets` shows.
class PageResults : public ResultsView {
 public:
  PageResults(emscripten::val page, ActionSheetView& sheets)
      : page_(std::move(page)), sheets_(sheets) {}

  void setLeftButton(std::string_view title) override;
  void setRightButtons(const std::vector<std::string_view>& titles) override;
  std::int32_t listHeight() const override;
  void setEditing(bool editing, bool animated) override;
  void selectRow(std::size_t row, bool animated) override;
  void deselectRow(std::size_t row, bool animated) override;
  void deleteRows(const std::vector<std::size_t>& rows, RowAnimation animation) override;
  void offerUndo(const std::string& text) override { page_.call<void>("offerUndo", text); }
  void withdrawUndo() override { page_.call<void>("withdrawUndo"); }
  void reloadRows() override { page_.call<void>("reloadRows"); }
  void reloadChooser() override { page_.call<void>("reloadChooser"); }
  void setCheckMark(std::size_t chooserRow, bool shown) override;
  void setOpacity(Element element, double opacity, double seconds) override;
  void slideToolbar(std::int32_t upward, std::int32_t listHeight, double seconds) override;
  void presentSheet(const ActionSheet& sheet) override { sheets_.present(sheet); }
  void dismissSheet() override { sheets_.dismiss(); }

 private:
  emscripten::val page_;
  ActionSheetView& sheets_;
};

/// The options screen's views in the page.
class PageOptions : public OptionsView {
 public:
  explicit PageOptions(emscripten::val page) : page_(std::move(page)) {}

  void setText(Element element, const std::string& text) override;
  void setAccessoryButton(Element cell, const AccessoryButton& button) override;

 private:
  emscripten::val page_;
};

// Screens with their views, which last as long as the page keeps them.

class PageResultsScreen : private PageResults, public ResultsViewController {
 public:
  PageResultsScreen(emscripten::val page, ActionSheetView& sheets, std::function<void()> dismiss)
      : PageResults(std::move(page), sheets),
        ResultsViewController(static_cast<PageResults&>(*this), std::move(dismiss)) {}
  /// A sheet goes with its screen.
  ~PageResultsScreen() override { dismissSheet(); }
};

class PageOptionsScreen : private PageOptions, public TableViewController {
 public:
  PageOptionsScreen(emscripten::val page, std::function<void()> dismiss)
      : PageOptions(std::move(page)),
        TableViewController(static_cast<PageOptions&>(*this), std::move(dismiss)) {}
};

}  // namespace veyla
