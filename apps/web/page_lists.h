#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/action_sheet.h"
#include "platform/options_view.h"
#include "platform/results_view.h"

namespace veyla {

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

}  // namespace veyla
