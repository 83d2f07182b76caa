#include "history/results_view_controller.h"

#include <algorithm>
#include <utility>

#include "history/history_store.h"
#include "history/results_screen.h"
#include "measuring/app_delegate.h"
#include "platform/format.h"
#include "platform/platform.h"
#include "shell/mail.h"
#include "shell/product.h"

namespace veyla {

namespace {

using namespace ResultsScreen;

constexpr std::size_t labelCount = labelNames.size();
constexpr double fadeSeconds = 0.5;
constexpr double slideSeconds = 0.5;
constexpr double undoSeconds = 6;
/// In points.
constexpr std::int32_t toolbarHeight = 44;

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

std::string csvDate(Date date) {
  const LocalTime time = services().dates.localTime(date);
  std::string text = paddedText(time.year, 4);
  text.append("-").append(paddedText(time.month, 2)).append("-").append(paddedText(time.day, 2));
  text.append(" ").append(paddedText(time.hour, 2)).append(":").append(paddedText(time.minute, 2));
  return text.append(":").append(paddedText(time.second, 2));
}

std::string csvFileName() {
  const LocalTime today = services().dates.localTime(services().clock.now());
  return formatText("veyla-data-%04d%02d%02d.csv", today.year, today.month, today.day);
}

std::string introduction() {
  return "The heart rate and saturation data have been measured with the Veyla app. It can be "
         "downloaded on the App Store: " +
         Utils::htmlLink(Utils::product().storePage, "iTunes link") + ".";
}

Mail resultsMail() {
  Mail mail;
  mail.subject = "Veyla data";
  mail.isHtml = true;
  mail.tint = black;
  mail.titleColor = black;
  return mail;
}

}  // namespace

ResultsViewController::ResultsViewController(ResultsView& view, std::function<void()> dismiss)
    : view_(view), dismiss_(std::move(dismiss)) {}

// The screen's life.

void ResultsViewController::viewDidLoad() {
  logLine("ResultsView: didload");
  loadValues();
  isBottomToolbarShown_ = false;
  resultsEditIsShowingAll_ = false;
  resultsTableHeight_ = view_.listHeight();
  view_.setRightButtons({"Edit", "Chart"});
  view_.setLeftButton("Close");
  AppDelegate::instance().setIsResults(true);
  view_.setOpacity(dimView, 0, 0);
  editing_ = false;
}

void ResultsViewController::viewWillAppear() { logLine("ResultsView: viewWillAppear"); }

void ResultsViewController::viewWillDisappear() {
  AppDelegate::instance().setIsResults(false);
  logLine("ResultsView: willDisappear");
  withdrawUndo();
}

// What both lists show.

std::size_t ResultsViewController::numberOfRows(std::int32_t tag) const {
  return tag == listTag ? data_.size() : labelCount + 1;
}

EditingStyle ResultsViewController::editingStyle() const {
  return editing_ ? EditingStyle::multipleSelection : EditingStyle::swipeToDelete;
}

HistoryTableViewCell ResultsViewController::listCell(std::size_t row) const {
  if (row >= data_.size()) return {};
  const HistoryEntry& entry = data_[row];
  if (entry.damaged) return {"Damaged entry", noValue, noValue, ""};
  std::vector<std::string> names;
  for (std::size_t i = 0; i < labelCount; ++i) {
    if (entry.labels[i]) names.emplace_back(labelNames[i]);
  }
  return {services().dates.mediumDateShortTime(entry.date),
          entry.hr == 0 ? noValue : roundedText(entry.hr) + " bpm",
          entry.spo2 == 0 ? noValue : roundedText(entry.spo2) + "%", joined(names, ", ")};
}

TableCell ResultsViewController::chooserCell(std::size_t row) const {
  TableCell cell;
  if (row >= labelCount) {
    cell.reuseIdentifier = "labelsButtons";
    return cell;
  }
  cell.labelName = labelNames[row];
  const HistoryEntry* entry = editedEntry();
  cell.isChecked = entry && entry->labels[row];
  return cell;
}

SwipeAction ResultsViewController::swipeAction() const { return {"Delete", pureRed}; }

// What the user does.

void ResultsViewController::didSelectRow(std::size_t row, std::int32_t tag) {
  logLine("didSelect, tag: %li", static_cast<long>(tag));
  if (tag != listTag) {
    toggleLabel(row);
    return;
  }
  if (row >= data_.size()) return;
  if (editing_) {
    selectedRows_.insert(row);
    showToolbarIfSelected();
    return;
  }
  withdrawUndo();
  resultsCurrentSelectedRow_ = static_cast<std::int32_t>(row);
  resultsCurrentSelectedIndexPath_ = row;
  showLabels();
}

void ResultsViewController::didDeselectRow(std::size_t row) {
  if (!editing_) return;
  selectedRows_.erase(row);
  showToolbarIfSelected();
}

void ResultsViewController::showChart() { services().screens.performTransition("chart"); }

void ResultsViewController::buttonCloseTap() {
  if (dismiss_) dismiss_();
}

void ResultsViewController::tapLeftButton() {
  if (editing_) {
    clickAllAndNone();
  } else {
    buttonCloseTap();
  }
}

void ResultsViewController::tapEditButton() { setEditing(!editing_, true); }

void ResultsViewController::touchesBegan() { closeResultsLabelsView(); }

void ResultsViewController::clickCloseResultsLabelsView() { closeResultsLabelsView(); }

void ResultsViewController::tapDeleteRow() {
  if (!editedEntry()) return;
  const std::size_t row = *resultsCurrentSelectedIndexPath_;
  logLine("delete row %i, pathrow: %li", resultsCurrentSelectedRow_, static_cast<long>(row));
  remove({row}, RowAnimation::none);
  closeResultsLabelsView();
}

void ResultsViewController::tapSwipeAction(std::size_t row) {
  if (row >= data_.size()) return;
  logLine("delete from swipe");
  remove({row}, RowAnimation::fade);
}

void ResultsViewController::clickTrash() {
  logLine("click trash");
  remove({selectedRows_.begin(), selectedRows_.end()}, RowAnimation::fade);
  setEditing(false, true);
}

void ResultsViewController::tapUndo() {
  if (deleted_.empty()) return;
  for (auto& [row, entry] : deleted_) {
    data_.insert(data_.begin() + static_cast<std::ptrdiff_t>(row), std::move(entry));
  }
  withdrawUndo();
  if (saveValues()) view_.reloadRows();
}

void ResultsViewController::clickShare() {
  logLine("click share");
  const auto thenDismiss = [this](void (ResultsViewController::*send)()) {
    return life_.bound([this, send] {
      (this->*send)();
      view_.dismissSheet();
    });
  };
  const auto csv = thenDismiss(&ResultsViewController::emailCSVResults);
  const auto text = thenDismiss(&ResultsViewController::emailRawResults);
  // Cancelling sends, too, as it always has: users know the sheet by that, and nothing leaves
  // unseen, since the mail opens first and can be cancelled there.
  view_.presentSheet({std::nullopt,
                      std::nullopt,
                      {{"Cancel", ActionStyle::cancel, csv},
                       {"Email (text)", ActionStyle::standard, text},
                       {"Email (csv)", ActionStyle::standard, csv}}});
}

void ResultsViewController::clickAllAndNone() {
  if (!editing_) return;
  resultsEditIsShowingAll_ = !resultsEditIsShowingAll_;
  view_.setLeftButton(resultsEditIsShowingAll_ ? "None" : "All");
  for (std::size_t row = 0; row < data_.size(); ++row) {
    if (resultsEditIsShowingAll_) {
      selectedRows_.insert(selectedRows_.end(), row);
      view_.selectRow(row, true);
    } else {
      view_.deselectRow(row, true);
    }
  }
  if (!resultsEditIsShowingAll_) selectedRows_.clear();
  showToolbarIfSelected();
}

void ResultsViewController::setEditing(bool editing, bool animated) {
  // What is selected, as what is edited, goes by its row.
  if (editing) withdrawUndo();
  editing_ = editing;
  // The list begins and ends editing with nothing selected.
  selectedRows_.clear();
  view_.setEditing(editing, animated);
  view_.setRightButtons({editing ? "Done" : "Edit", "Chart"});
  logLine("setEditing %i", editing ? 1 : 0);
  view_.setLeftButton(editing ? "All" : "Close");
  showToolbarIfSelected();
}

void ResultsViewController::tapNoLabels() {
  HistoryEntry* entry = editedEntry();
  if (!entry || entry->damaged) return;
  for (std::size_t label = 0; label < labelCount; ++label) view_.setCheckMark(label, false);
  storeLabels(*entry, Labels{});
}

// What that leads to.

void ResultsViewController::showLabels() {
  for (const Element element : {resultsTableViewForLabels, dimView}) {
    view_.setOpacity(element, 0, 0);
    view_.setOpacity(element, 1, fadeSeconds);
  }
  view_.reloadChooser();
}

void ResultsViewController::closeResultsLabelsView() {
  for (const Element element : {resultsTableViewForLabels, dimView}) {
    view_.setOpacity(element, 0, fadeSeconds);
  }
}

bool ResultsViewController::saveValues() {
  if (Utils::setValues({data_.rbegin(), data_.rend()})) return true;
  loadValues();
  view_.reloadRows();
  return false;
}

void ResultsViewController::toggleLabel(std::size_t label) {
  HistoryEntry* entry = editedEntry();
  if (!entry || entry->damaged || label >= labelCount) return;
  Labels labels = entry->labels;
  labels[label] = !labels[label];
  view_.setCheckMark(label, labels[label]);
  for (const auto& [before, after] : exclusiveLabels) {
    if (!labels[label]) continue;
    if (label == before) removeDoubleBookingForLabels(label, 1, labels);
    if (label == after) removeDoubleBookingForLabels(label, -1, labels);
  }
  storeLabels(*entry, labels);
}

void ResultsViewController::removeDoubleBookingForLabels(std::size_t row, std::int32_t upOrDown,
                                                         Labels& bools) {
  const std::size_t partner = upOrDown > 0 ? row + 1 : row - 1;
  if (partner >= labelCount || !bools[partner]) return;
  bools[partner] = false;
  view_.setCheckMark(partner, false);
}

void ResultsViewController::addLabelsArrayForMissingRows(std::vector<OldHistoryEntry> entries) {
  for (OldHistoryEntry& entry : entries) {
    if (!entry.labels) entry.labels = Labels{};
  }
  Utils::setValuesOLD(entries);
}

void ResultsViewController::emailCSVResults() {
  Mail mail = resultsMail();
  mail.body = introduction();
  mail.attachments = {{joined(selectedLines(), "\n"), "text/csv", csvFileName()}};
  services().sharing.composeMail(mail, Utils::finishMail);
}

void ResultsViewController::emailRawResults() {
  Mail mail = resultsMail();
  mail.body = "<p>" + introduction() + "</p><p>" + joined(selectedLines(), "<br>") + "</p>";
  services().sharing.composeMail(mail, Utils::finishMail);
}

void ResultsViewController::sendSMS(const std::string& body) {
  Sharing& sharing = services().sharing;
  if (!sharing.canSendText()) return;
  sharing.composeMessage(body, [&sharing](MessageResult result) {
    switch (result) {
      case MessageResult::cancelled:
        logLine("Message cancelled");
        break;
      case MessageResult::sent:
        logLine("Message sent");
        break;
      case MessageResult::failed:
        logLine("Message failed");
        break;
    }
    sharing.dismissMessage();
  });
}

void ResultsViewController::mailComposeController(MailResult didFinishWithResult,
                                                  const std::string& error) {
  Utils::finishMail(didFinishWithResult, error);
}

// Within.

void ResultsViewController::loadValues() {
  data_ = Utils::getValues().value_or(std::vector<HistoryEntry>());
  std::reverse(data_.begin(), data_.end());
  selectedRows_.clear();
  resultsCurrentSelectedRow_ = -1;
  resultsCurrentSelectedIndexPath_.reset();
}

HistoryEntry* ResultsViewController::editedEntry() {
  return const_cast<HistoryEntry*>(std::as_const(*this).editedEntry());
}

const HistoryEntry* ResultsViewController::editedEntry() const {
  const auto& row = resultsCurrentSelectedIndexPath_;
  return row && *row < data_.size() ? &data_[*row] : nullptr;
}

void ResultsViewController::storeLabels(HistoryEntry& entry, const Labels& labels) {
  entry.labels = labels;
  if (!saveValues()) closeResultsLabelsView();
}

void ResultsViewController::remove(const std::vector<std::size_t>& rows, RowAnimation animation) {
  withdrawUndo();
  std::vector<HistoryEntry> kept;
  kept.reserve(data_.size());
  auto next = rows.begin();
  for (std::size_t row = 0; row < data_.size(); ++row) {
    if (next == rows.end() || *next != row) {
      kept.push_back(std::move(data_[row]));
    } else {
      deleted_.emplace_back(row, std::move(data_[row]));
      ++next;
    }
  }
  data_ = std::move(kept);
  resultsCurrentSelectedRow_ = -1;
  resultsCurrentSelectedIndexPath_.reset();
  if (!saveValues()) {
    deleted_.clear();
    return;
  }
  view_.deleteRows(rows, animation);
  if (deleted_.empty()) return;
  view_.offerUndo(
      formatText("%zu measurement%s deleted", deleted_.size(), deleted_.size() == 1 ? "" : "s"));
  services().mainQueue.after(undoSeconds, life_.bound([this, deletion = ++deletions_] {
    if (deletion == deletions_) withdrawUndo();
  }));
}

void ResultsViewController::withdrawUndo() {
  if (deleted_.empty()) return;
  deleted_.clear();
  view_.withdrawUndo();
}

void ResultsViewController::showToolbarIfSelected() {
  const bool shown = !selectedRows_.empty();
  if (shown == isBottomToolbarShown_) return;
  isBottomToolbarShown_ = shown;
  view_.slideToolbar(shown ? toolbarHeight : -toolbarHeight,
                     shown ? resultsTableHeight_ - toolbarHeight : resultsTableHeight_,
                     slideSeconds);
}

std::vector<std::string> ResultsViewController::selectedLines() const {
  std::vector<std::string> lines{"Date,Heart Rate,Saturation"};
  for (const std::size_t row : selectedRows_) {
    const HistoryEntry& entry = data_[row];
    if (entry.damaged) {
      logLine("a damaged entry has no values to share: %s", faultOf(*entry.damaged).c_str());
      continue;
    }
    lines.push_back(csvDate(entry.date) + "," + roundedText(entry.hr) + "," +
                    roundedText(entry.spo2));
  }
  return lines;
}

}  // namespace veyla
