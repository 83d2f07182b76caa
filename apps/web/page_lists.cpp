#include "apps/web/page_lists.h"

#include "platform/web/page_fields.h"

namespace veyla {

template <>
struct PageNames<ActionStyle> {
  static constexpr std::array<std::string_view, 2> names{"standard", "cancel"};
};

template <>
struct PageNames<RowAnimation> {
  static constexpr std::array<std::string_view, 2> names{"none", "fade"};
};

EMSCRIPTEN_BINDINGS(page_lists) {
  VEYLA_VALUE(AccessoryButton, backgroundImage, title, titleColor, font, background);
  VEYLA_VALUE(SheetAction, title, style);
  VEYLA_VALUE(ActionSheet, title, message, tint, actions);
}

void PageActionSheet::present(const ActionSheet& sheet) {
  sheet_ = sheet;
  page_.call<void>("present", sheet);
}

void PageActionSheet::choose(std::size_t action) {
  if (action >= sheet_.actions.size()) return;
  // A copy: the action may present another sheet.
  const auto chosen = sheet_.actions[action].action;
  if (chosen) chosen();
}

void PageResults::setLeftButton(std::string_view title) {
  page_.call<void>("setLeftButton", title);
}

void PageResults::setRightButtons(const std::vector<std::string_view>& titles) {
  page_.call<void>("setRightButtons", titles);
}

std::int32_t PageResults::listHeight() const { return page_.call<int>("listHeight"); }

void PageResults::setEditing(bool editing, bool animated) {
  page_.call<void>("setEditing", editing, animated);
}

void PageResults::selectRow(std::size_t row, bool animated) {
  page_.call<void>("setSelected", row, true, animated);
}

void PageResults::deselectRow(std::size_t row, bool animated) {
  page_.call<void>("setSelected", row, false, animated);
}

void PageResults::deleteRows(const std::vector<std::size_t>& rows, RowAnimation animation) {
  page_.call<void>("deleteRows", rows, animation);
}

void PageResults::setCheckMark(std::size_t chooserRow, bool shown) {
  page_.call<void>("setCheckMark", chooserRow, shown);
}

void PageResults::setOpacity(Element element, double opacity, double seconds) {
  page_.call<void>("setOpacity", element, opacity, seconds);
}

void PageResults::slideToolbar(std::int32_t upward, std::int32_t listHeight, double seconds) {
  page_.call<void>("slideToolbar", upward, listHeight, seconds);
}

void PageOptions::setText(Element element, const std::string& text) {
  page_.call<void>("setText", element, text);
}

void PageOptions::setAccessoryButton(Element cell, const AccessoryButton& button) {
  page_.call<void>("setAccessoryButton", cell, button);
}

}  // namespace veyla
