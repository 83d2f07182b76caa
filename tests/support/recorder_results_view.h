#pragma once

#include <string>

#include "platform/format.h"
#include "platform/results_view.h"
#include "tests/support/recorders.h"

namespace veyla {

/// Keeps the sheet that was presented; every call stands in the journal as "results …".
class RecorderResultsView : public ResultsView {
 public:
  explicit RecorderResultsView(Journal& journal) : journal_(journal) {}

  std::optional<ActionSheet> sheet;

  void setLeftButton(std::string_view title) override { record("left " + std::string(title)); }
  void setRightButtons(const std::vector<std::string_view>& titles) override {
    std::string line = "right";
    for (const std::string_view title : titles) line.append(" ").append(title);
    record(line);
  }
  std::int32_t listHeight() const override { return 500; }
  void setEditing(bool editing, bool animated) override {
    record(formatText("editing %i%s", editing ? 1 : 0, animated ? " animated" : ""));
  }
  void selectRow(std::size_t row, bool /*animated*/) override {
    record(formatText("select %zu", row));
  }
  void deselectRow(std::size_t row, bool /*animated*/) override {
    record(formatText("deselect %zu", row));
  }
  void deleteRows(const std::vector<std::size_t>& rows, RowAnimation animation) override {
    std::string line = "delete";
    for (const std::size_t row : rows) line += formatText(" %zu", row);
    record(line + (animation == RowAnimation::fade ? " fading" : " at once"));
  }
  void reloadRows() override { record("reload"); }
  void reloadChooser() override { record("reload chooser"); }
  void setCheckMark(std::size_t chooserRow, bool shown) override {
    record(formatText("check mark %zu %s", chooserRow, shown ? "on" : "off"));
  }
  void setOpacity(Element element, double opacity, double seconds) override {
    record(std::string(element.name) + formatText(" opacity %g in %g s", opacity, seconds));
  }
  void slideToolbar(std::int32_t upward, std::int32_t listHeight, double seconds) override {
    record(formatText("toolbar %i, list %i in %g s", upward, listHeight, seconds));
  }
  void presentSheet(const ActionSheet& presented) override {
    sheet = presented;
    record("present sheet");
  }
  void dismissSheet() override { record("dismiss sheet"); }

 private:
  void record(const std::string& what) { journal_.add("results " + what); }

  Journal& journal_;
};

}  // namespace veyla
