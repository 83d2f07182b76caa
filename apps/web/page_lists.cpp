#include "apps/web/page_lists.h"

#include "apps/web/page_shell.h"

namespace veyla {

using emscripten::val;

void PageResults::setLeftButton(std::string_view title) {
  page_.call<void>("setLeftButton", std::string(title));
}

void PageResults::setRightButtons(const std::vector<std::string_view>& titles) {
  val list = val::array();
  for (const std::string_view title : titles) list.call<void>("push", std::string(title));
  page_.call<void>("setRightButtons", list);
}

std::int32_t PageResults::listHeight() const { return page_.call<int>("listHeight"); }

void PageResults::setEditing(bool editing, bool animated) {
  page_.call<void>("setEditing", editing, animated);
}

void PageResults::selectRow(std::size_t row, bool) {
  page_.call<void>("setSelected", static_cast<int>(row), true);
}

void PageResults::deselectRow(std::size_t row, bool) {
  page_.call<void>("setSelected", static_cast<int>(row), false);
}

void PageResults::deleteRows(const std::vector<std::size_t>& rows, RowAnimation animation) {
  val list = val::array();
  for (const std::size_t row : rows) list.call<void>("push", static_cast<int>(row));
  page_.call<void>("deleteRows", list, animation == RowAnimation::fade);
}

void PageResults::setCheckMark(std::size_t chooserRow, bool shown) {
  page_.call<void>("setCheckMark", static_cast<int>(chooserRow), shown);
}

void PageResults::setOpacity(Element element, double opacity, double seconds) {
  page_.call<void>("setOpacity", nameOf(element), opacity, seconds);
}

void PageResults::slideToolbar(std::int32_t upward, std::int32_t, double seconds) {
  page_.call<void>("slideToolbar", upward, seconds);
}

void PageOptions::setText(Element element, const std::string& text) {
  page_.call<void>("setText", nameOf(element), text);
}

void PageOptions::setAccessoryButton(Element cell, const AccessoryButton& button) {
  page_.call<void>("setAccessoryButton", nameOf(cell), std::string(button.title));
}

}  // namespace veyla
