#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "history/history_entry.h"
#include "platform/color.h"
#include "platform/life.h"
#include "platform/results_view.h"
#include "platform/sharing.h"

namespace veyla {

/// What a row of the list shows. An entry that cannot be read shows as damaged.
struct HistoryTableViewCell {
  static constexpr std::string_view reuseIdentifier = "cell";

  std::string dateLabel;
  std::string heartrateLabel;
  std::string spo2Label;
  std::string labelNames;

  bool operator==(const HistoryTableViewCell&) const = default;
};

/// What a row of the label chooser shows. The last one has controls that delete the entry and close
/// the chooser in place of a label.
struct TableCell {
  std::string_view reuseIdentifier = "labelCell";
  std::string labelName;
  /// The check mark.
  bool isChecked = false;

  bool operator==(const TableCell&) const = default;
};

enum class EditingStyle { swipeToDelete, multipleSelection };

/// What swiping a row of the list offers.
struct SwipeAction {
  std::string_view title;
  Color background;

  bool operator==(const SwipeAction&) const = default;
};

/// The results screen: the history, newest first, with labels, deletion and sharing.
///
/// It reads the history once, when it is loaded; from then on every change is written through at
/// once. A row or label that does not exist is left alone. Rows count from 0 at the top.
class ResultsViewController {
 public:
  /// The list and the label chooser are told apart by these tags.
  static constexpr std::int32_t listTag = 0;
  static constexpr std::int32_t chooserTag = 1;

  /// `dismiss` closes the screen; it may be empty.
  ResultsViewController(ResultsView& view, std::function<void()> dismiss);

  // The screen's life.

  void viewDidLoad();
  void viewWillAppear();
  void viewWillDisappear();

  // What both lists show.

  std::size_t numberOfSections() const { return 1; }
  std::size_t numberOfRows(std::int32_t tag) const;
  /// In points.
  std::int32_t heightForRow(std::int32_t tag) const { return tag == listTag ? 50 : 40; }
  EditingStyle editingStyle() const;
  HistoryTableViewCell listCell(std::size_t row) const;
  TableCell chooserCell(std::size_t row) const;
  SwipeAction swipeAction() const;

  // What the user does.

  void didSelectRow(std::size_t row, std::int32_t tag);
  void didDeselectRow(std::size_t row);
  void showChart();
  void buttonCloseTap();
  /// The button on the left of the bar, and the one that begins and ends editing.
  void tapLeftButton();
  void tapEditButton();
  /// A touch outside the lists.
  void touchesBegan();
  void clickCloseResultsLabelsView();
  /// The chooser's control.
  void tapDeleteRow();
  void tapSwipeAction(std::size_t row);
  void clickTrash();
  /// While the view offers it: puts what was deleted last back in its places.
  void tapUndo();
  void clickShare();
  void clickAllAndNone();
  void setEditing(bool editing, bool animated);
  /// Takes all labels from the entry being edited.
  void tapNoLabels();

  // What that leads to.

  void showLabels();
  void closeResultsLabelsView();
  /// Stores `data`, oldest first.
  /// Shows what is stored where the change could not be. Whether it is stored.
  bool saveValues();
  /// Clears the flag beside `row`, at `row` + `upOrDown`, and its check mark, where it is set.
  void removeDoubleBookingForLabels(std::size_t row, std::int32_t upOrDown, Labels& bools);
  /// Gives each entry of the old layout that lacks labels all of them off, and stores them all.
  void addLabelsArrayForMissingRows(std::vector<OldHistoryEntry> entries);
  void emailCSVResults();
  void emailRawResults();
  /// Opens a text message where the device can send one.
  void sendSMS(const std::string& body);
  void mailComposeController(MailResult didFinishWithResult, const std::string& error);

  // State.

  const decltype(labelNames)& labels() const { return labelNames; }
  /// Newest first.
  const std::vector<HistoryEntry>& data() const { return data_; }
  /// The row whose labels are being edited; -1 for none.
  std::int32_t resultsCurrentSelectedRow() const { return resultsCurrentSelectedRow_; }
  const std::optional<std::size_t>& resultsCurrentSelectedIndexPath() const {
    return resultsCurrentSelectedIndexPath_;
  }
  bool isEditing() const { return editing_; }
  bool resultsEditIsShowingAll() const { return resultsEditIsShowingAll_; }
  bool isBottomToolbarShown() const { return isBottomToolbarShown_; }
  std::int32_t resultsTableHeight() const { return resultsTableHeight_; }
  /// In editing mode, ascending.
  const std::set<std::size_t>& selectedRows() const { return selectedRows_; }

 private:
  void toggleLabel(std::size_t label);
  void loadValues();
  HistoryEntry* editedEntry();
  const HistoryEntry* editedEntry() const;
  void storeLabels(HistoryEntry& entry, const Labels& labels);
  /// `rows` ascend.
  void remove(const std::vector<std::size_t>& rows, RowAnimation animation);
  void withdrawUndo();
  void showToolbarIfSelected();
  std::vector<std::string> selectedLines() const;

  ResultsView& view_;
  std::function<void()> dismiss_;
  std::vector<HistoryEntry> data_;
  /// What was deleted last, by the rows it had, while that can be undone.
  std::vector<std::pair<std::size_t, HistoryEntry>> deleted_;
  /// Which deletion it was.
  int deletions_ = 0;
  std::set<std::size_t> selectedRows_;
  std::int32_t resultsCurrentSelectedRow_ = -1;
  std::optional<std::size_t> resultsCurrentSelectedIndexPath_;
  bool editing_ = false;
  bool resultsEditIsShowingAll_ = false;
  bool isBottomToolbarShown_ = false;
  std::int32_t resultsTableHeight_ = 0;
  Life life_;
};

}  // namespace veyla
