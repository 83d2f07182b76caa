#include "history/results_view_controller.h"

#include <gmock/gmock.h>

#include <memory>

#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "tests/support/recorder_results_view.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int32_t list = ResultsViewController::listTag;
constexpr std::int32_t chooser = ResultsViewController::chooserTag;

Labels flags(std::initializer_list<std::size_t> set) {
  Labels labels{};
  for (const std::size_t label : set) labels[label] = true;
  return labels;
}

class ResultsViewControllerTest : public testing::Test {
 protected:
  ResultsViewControllerTest() {
    platform_.resources.give("Product", Value::Dictionary{{"storePage", "https://store/veyla"}});
  }

  /// Three entries, stored oldest first: rows 2, 1 and 0 of the list.
  void loadThree() {
    Utils::saveHeartrate(60.4, 95.5, Date{1000}, flags({0}));
    Utils::saveHeartrate(0, 97.4, Date{2000}, flags({3, 5}));
    Utils::saveHeartrate(72.5, 0, Date{3000}, std::nullopt);
    load();
  }
  void load() {
    screen_.viewDidLoad();
    forget();
  }
  void forget() {
    platform_.journal.clear();
    platform_.log.lines.clear();
  }
  void edit(const std::vector<std::size_t>& rows) {
    screen_.setEditing(true, true);
    for (const std::size_t row : rows) screen_.didSelectRow(row, list);
    forget();
  }
  Labels storedLabels(std::size_t index) const { return Utils::getValues()->at(index).labels; }
  std::vector<std::string> shown() const { return platform_.journal.of("results"); }
  const Mail& mail() const { return platform_.sharing.mails.back(); }

  TestPlatform platform_;
  RecorderResultsView view_{platform_.journal};
  int dismissals_ = 0;
  ResultsViewController screen_{view_, [this] { ++dismissals_; }};
};

TEST_F(ResultsViewControllerTest, ItLoadsTheHistoryOnceNewestFirst) {
  Utils::saveHeartrate(60, 0, Date{1}, std::nullopt);
  Utils::saveHeartrate(61, 0, Date{2}, std::nullopt);
  forget();
  screen_.viewDidLoad();
  EXPECT_TRUE(AppDelegate::instance().isResults());
  Utils::saveHeartrate(62, 0, Date{3}, std::nullopt);
  screen_.viewWillAppear();
  screen_.viewWillDisappear();
  EXPECT_FALSE(AppDelegate::instance().isResults());

  EXPECT_THAT(platform_.log.lines,
              ElementsAre("ResultsView: didload", "ResultsView: viewWillAppear",
                          "ResultsView: willDisappear"));
  EXPECT_THAT(shown(), ElementsAre("right Edit Chart", "left Close", "dimView opacity 0 in 0 s"));
  ASSERT_EQ(screen_.numberOfRows(list), 2U);
  EXPECT_EQ(screen_.listCell(0).heartrateLabel, "61 bpm");
  EXPECT_EQ(screen_.numberOfRows(chooser), 8U);
  EXPECT_EQ(screen_.heightForRow(list), 50);
  EXPECT_EQ(screen_.heightForRow(chooser), 40);
}

TEST_F(ResultsViewControllerTest, ACellRoundsAndOnlyAnExactZeroIsEmpty) {
  loadThree();
  EXPECT_EQ(screen_.listCell(0), (HistoryTableViewCell{"at 3000", "72 bpm", "--", ""}));
  EXPECT_EQ(screen_.listCell(1),
            (HistoryTableViewCell{"at 2000", "--", "97%", "Training (Before), Sleep (Before)"}));
  EXPECT_EQ(screen_.listCell(2), (HistoryTableViewCell{"at 1000", "60 bpm", "96%", "Resting"}));
  Utils::setValues({{0.3, 0.7, Date{5}, {}, {}}});
  load();
  EXPECT_EQ(screen_.listCell(0).heartrateLabel, "0 bpm");
  EXPECT_EQ(screen_.listCell(0).spo2Label, "1%");
}

TEST_F(ResultsViewControllerTest, AnEmptyHistoryIsAnEmptyListThatStillLeadsToTheChart) {
  load();
  EXPECT_EQ(screen_.numberOfRows(list), 0U);
  screen_.showChart();
  EXPECT_THAT(platform_.journal.of("screens"), ElementsAre("chart"));
  screen_.didSelectRow(0, list);
  screen_.didSelectRow(0, chooser);
  screen_.tapDeleteRow();
  screen_.tapSwipeAction(0);
  EXPECT_THAT(platform_.journal.of("store"), IsEmpty());
  screen_.buttonCloseTap();
  EXPECT_EQ(dismissals_, 1);
}

// Labels.

TEST_F(ResultsViewControllerTest, ATappedRowOpensTheChooserWithItsCheckMarks) {
  loadThree();
  EXPECT_FALSE(screen_.chooserCell(0).isChecked);
  screen_.didSelectRow(1, list);
  EXPECT_EQ(screen_.resultsCurrentSelectedRow(), 1);
  EXPECT_THAT(platform_.log.lines, ElementsAre("didSelect, tag: 0"));
  EXPECT_THAT(shown(), ElementsAre("resultsTableViewForLabels opacity 0 in 0 s",
                                   "resultsTableViewForLabels opacity 1 in 0.5 s",
                                   "dimView opacity 0 in 0 s", "dimView opacity 1 in 0.5 s",
                                   "reload chooser"));
  EXPECT_EQ(screen_.chooserCell(3), (TableCell{"labelCell", "Training (Before)", true}));
  EXPECT_EQ(screen_.chooserCell(4), (TableCell{"labelCell", "Training (After)", false}));
  EXPECT_EQ(screen_.chooserCell(7), (TableCell{"labelsButtons", "", false}));
  forget();
  screen_.touchesBegan();
  EXPECT_THAT(shown(), ElementsAre("resultsTableViewForLabels opacity 0 in 0.5 s",
                                   "dimView opacity 0 in 0.5 s"));
}

TEST_F(ResultsViewControllerTest, EveryTapOnALabelIsStored) {
  loadThree();
  screen_.tapNoLabels();
  screen_.didSelectRow(2, list);
  forget();
  screen_.didSelectRow(1, chooser);
  EXPECT_EQ(storedLabels(0), flags({0, 1}));
  screen_.didSelectRow(0, chooser);
  EXPECT_EQ(storedLabels(0), flags({1}));
  screen_.didSelectRow(7, chooser);
  EXPECT_THAT(platform_.journal.lines(),
              ElementsAre("results check mark 1 on", "store set values", "store flush",
                          "results check mark 0 off", "store set values", "store flush"));
  EXPECT_THAT(platform_.log.lines, SizeIs(3));
  EXPECT_EQ(storedLabels(1), flags({3, 5})) << "another entry's";
  EXPECT_EQ(screen_.listCell(2).labelNames, "Active");
  screen_.didSelectRow(1, list);
  screen_.tapNoLabels();
  EXPECT_EQ(storedLabels(1), Labels{});
  EXPECT_EQ(storedLabels(0), flags({1}));
  EXPECT_FALSE(screen_.chooserCell(3).isChecked);
}

TEST_F(ResultsViewControllerTest, BeforeAndAfterExcludeEachOtherFromTheTappedSide) {
  struct Case {
    Labels labels;
    std::size_t tapped;
    Labels left;
  };
  const Case cases[] = {{flags({4}), 3, flags({3})},
                        {flags({5}), 6, flags({6})},
                        {flags({6}), 5, flags({5})},
                        {flags({3, 6}), 4, flags({4, 6})},  // the other pair
                        {flags({4}), 5, flags({4, 5})},     // neighbours of different pairs
                        {flags({1, 3, 6}), 0, flags({0, 1, 3, 6})},  // no pair's
                        {flags({3, 4}), 3, flags({4})},  // both already: only what is tapped goes
                        {flags({3}), 4, flags({4})}};
  for (const auto& [labels, tapped, left] : cases) {
    Utils::setValues({{60, 97, Date{1}, labels, {}}});
    load();
    screen_.didSelectRow(0, list);
    forget();
    screen_.didSelectRow(tapped, chooser);
    EXPECT_EQ(storedLabels(0), left) << tapped;
  }
  EXPECT_THAT(shown(), ElementsAre("check mark 4 on", "check mark 3 off"));
}

// Deletion.

TEST_F(ResultsViewControllerTest, TheChooserAndASwipeDeleteOneEntry) {
  loadThree();
  screen_.didSelectRow(1, list);
  forget();
  screen_.tapDeleteRow();
  EXPECT_THAT(platform_.journal.lines(),
              ElementsAre("store set values", "store flush", "results delete 1 at once",
                          "results resultsTableViewForLabels opacity 0 in 0.5 s",
                          "results dimView opacity 0 in 0.5 s"));
  EXPECT_THAT(platform_.log.lines, ElementsAre("delete row 1, pathrow: 1"));
  ASSERT_THAT(*Utils::getValues(), SizeIs(2));
  EXPECT_EQ(Utils::getValues()->back().hr, 72.5);
  screen_.didSelectRow(0, chooser);
  EXPECT_EQ(storedLabels(0), flags({0})) << "no entry is being edited";

  EXPECT_EQ(screen_.swipeAction(), (SwipeAction{"Delete", Color{1, 0, 0, 1}}));
  EXPECT_EQ(screen_.editingStyle(), EditingStyle::swipeToDelete);
  forget();
  for (const std::size_t row : {1U, 0U}) screen_.tapSwipeAction(row);
  EXPECT_THAT(platform_.log.lines, ElementsAre("delete from swipe", "delete from swipe"));
  EXPECT_THAT(shown(), ElementsAre("delete 1 fading", "delete 0 fading"));
  EXPECT_THAT(*Utils::getValues(), IsEmpty()) << "an empty history, not an absent one";
}

TEST_F(ResultsViewControllerTest, TheTrashDeletesTheSelectedRowsAndEndsEditing) {
  loadThree();
  screen_.didSelectRow(1, list);
  edit({2, 0});
  screen_.clickTrash();
  EXPECT_EQ(screen_.resultsCurrentSelectedRow(), -1);
  ASSERT_THAT(*Utils::getValues(), SizeIs(1));
  EXPECT_EQ(Utils::getValues()->front().spo2, 97.4);
  EXPECT_THAT(platform_.log.lines, ElementsAre("click trash", "setEditing 0"));
  EXPECT_THAT(platform_.journal.lines(),
              ElementsAre("store set values", "store flush", "results delete 0 2 fading",
                          "results editing 0 animated", "results right Edit Chart",
                          "results left Close", "results toolbar -44, list 500 in 0.5 s"));
}

// Editing.

TEST_F(ResultsViewControllerTest, TheToolbarShowsWhileSomethingIsSelectedAndAllAndNoneTakeTurns) {
  loadThree();
  const auto shownAfter = [&](const std::function<void()>& taps) {
    forget();
    taps();
    std::string lines;
    for (const std::string& line : shown()) lines += line + '|';
    return lines;
  };
  const std::string comes = "toolbar 44, list 456 in 0.5 s|";
  const std::string goes = "toolbar -44, list 500 in 0.5 s|";
  EXPECT_EQ(shownAfter([&] { screen_.tapEditButton(); }),
            "editing 1 animated|right Done Chart|left All|");
  EXPECT_THAT(platform_.log.lines, ElementsAre("setEditing 1"));
  EXPECT_EQ(screen_.editingStyle(), EditingStyle::multipleSelection);
  EXPECT_EQ(shownAfter([&] {
              for (const std::size_t row : {0U, 2U}) screen_.didSelectRow(row, list);
              screen_.didDeselectRow(0);
            }),
            comes)
      << "once";
  EXPECT_EQ(shownAfter([&] { screen_.didDeselectRow(2); }), goes);
  EXPECT_EQ(screen_.resultsCurrentSelectedRow(), -1) << "no chooser while editing";
  EXPECT_EQ(shownAfter([&] { screen_.tapLeftButton(); }),
            "left None|select 0|select 1|select 2|" + comes);
  EXPECT_THAT(screen_.selectedRows(), SizeIs(3));
  EXPECT_EQ(shownAfter([&] { screen_.tapLeftButton(); }),
            "left All|deselect 0|deselect 1|deselect 2|" + goes);
  EXPECT_THAT(screen_.selectedRows(), IsEmpty());

  // Whether the last tap was on All outlives the editing mode; what was selected does not.
  screen_.tapLeftButton();
  screen_.tapEditButton();
  EXPECT_FALSE(screen_.isBottomToolbarShown());
  EXPECT_THAT(screen_.selectedRows(), IsEmpty());
  screen_.tapEditButton();
  screen_.tapLeftButton();
  EXPECT_THAT(screen_.selectedRows(), IsEmpty());
  EXPECT_EQ(dismissals_, 0);
  screen_.tapEditButton();
  screen_.tapLeftButton();
  EXPECT_EQ(dismissals_, 1);
}

// Sharing.

TEST_F(ResultsViewControllerTest, CancellingTheShareChoiceSendsTheCsvMailToo) {
  loadThree();
  edit({0});
  screen_.clickShare();
  EXPECT_THAT(platform_.log.lines, ElementsAre("click share"));
  std::vector<std::string> actions;
  for (const SheetAction& action : view_.sheet->actions) {
    actions.push_back(action.title + (action.style == ActionStyle::cancel ? ", cancel" : ""));
  }
  EXPECT_THAT(actions, ElementsAre("Cancel, cancel", "Email (text)", "Email (csv)"));

  forget();
  view_.choose("Cancel");
  EXPECT_THAT(platform_.journal.lines(),
              ElementsAre("sharing mail Veyla data", "results dismiss sheet"));
  const Mail cancelled = mail();
  view_.choose("Email (csv)");
  EXPECT_EQ(mail(), cancelled);
  EXPECT_THAT(mail().attachments, SizeIs(1));
  view_.choose("Email (text)");
  EXPECT_THAT(mail().attachments, IsEmpty());
}

TEST_F(ResultsViewControllerTest, MailsCarryTheSelectedRowsNewestFirst) {
  loadThree();
  edit({2, 0, 1});
  screen_.emailCSVResults();
  EXPECT_EQ(mail().subject, "Veyla data");
  EXPECT_TRUE(mail().isHtml);
  EXPECT_EQ(mail().body,
            "The heart rate and saturation data have been measured with the Veyla app. It can be "
            "downloaded on the App Store: <a href=\"https://store/veyla\">iTunes link</a>.");
  EXPECT_THAT(mail().recipients, IsEmpty());
  EXPECT_EQ(mail().tint, (Color{0, 0, 0, 1}));
  EXPECT_EQ(mail().titleColor, (Color{0, 0, 0, 1}));
  // The test's clock stands at 2023-11-14 22:13:20 UTC.
  EXPECT_THAT(mail().attachments,
              ElementsAre(MailAttachment{"Date,Heart Rate,Saturation\n"
                                         "1970-01-01 00:50:00,72,0\n"
                                         "1970-01-01 00:33:20,0,97\n"
                                         "1970-01-01 00:16:40,60,96",
                                         "text/csv", "veyla-data-20231114.csv"}));

  // The text mail has the same lines in its body.
  for (const std::size_t row : {0U, 2U}) screen_.didDeselectRow(row);
  const std::string introduction = mail().body;
  screen_.emailRawResults();
  EXPECT_EQ(mail().body, "<p>" + introduction +
                             "</p><p>Date,Heart Rate,Saturation<br>1970-01-01 00:33:20,0,97</p>");
  EXPECT_TRUE(mail().isHtml);
  EXPECT_THAT(mail().attachments, IsEmpty());
}

TEST_F(ResultsViewControllerTest, HowMailsAndMessagesEndStandsInTheLog) {
  load();
  using enum MailResult;
  for (const MailResult result : {cancelled, saved, sent, failed}) {
    screen_.emailCSVResults();
    platform_.sharing.mailFinished(result, "no network");
  }
  platform_.sharing.sendsText = false;
  screen_.sendSMS("unsent");
  platform_.sharing.sendsText = true;
  for (const MessageResult result :
       {MessageResult::cancelled, MessageResult::sent, MessageResult::failed}) {
    screen_.sendSMS("hello");
    platform_.sharing.messageFinished(result);
  }
  EXPECT_THAT(platform_.log.lines, ElementsAre("Mail cancelled", "Mail saved", "Mail sent",
                                               "Mail sent failure: no network", "Message cancelled",
                                               "Message sent", "Message failed"));
  EXPECT_THAT(platform_.sharing.messages, ElementsAre("hello", "hello", "hello"));
  const auto calls = platform_.journal.of("sharing");
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "dismiss mail"), 4);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "dismiss message"), 3);
}

TEST_F(ResultsViewControllerTest, AScreenThatHasGoneIsNotCalledByItsSheetOrMail) {
  auto screen = std::make_unique<ResultsViewController>(view_, nullptr);
  screen->viewDidLoad();
  screen->buttonCloseTap();
  screen->emailCSVResults();
  screen->clickShare();
  screen.reset();
  forget();
  view_.choose("Cancel");
  EXPECT_THAT(platform_.journal.lines(), IsEmpty());
  platform_.sharing.mailFinished(MailResult::sent, "");
  EXPECT_THAT(platform_.log.lines, ElementsAre("Mail sent"));
  EXPECT_THAT(platform_.journal.lines(), ElementsAre("sharing dismiss mail"));
}

// What others left.

TEST_F(ResultsViewControllerTest, ADamagedEntryShowsAndStaysAsItIsUntilItIsDeleted) {
  Utils::saveHeartrate(60, 97, Date{1}, std::nullopt);
  Utils::saveHeartrate(61, 97, Date{2}, std::nullopt);
  auto stored = *platform_.store.values["values"].array();
  const Value damaged = Value::Dictionary{{"hr", "sixty"}, {"note", 5}};
  stored[0] = damaged;
  platform_.store.values["values"] = stored;
  load();
  EXPECT_EQ(screen_.listCell(1), (HistoryTableViewCell{"Damaged entry", "--", "--", ""}));
  screen_.didSelectRow(1, list);
  screen_.didSelectRow(0, chooser);
  EXPECT_FALSE(screen_.chooserCell(0).isChecked);
  screen_.didSelectRow(0, list);
  screen_.didSelectRow(0, chooser);
  EXPECT_EQ(storedLabels(1), flags({0}));
  EXPECT_EQ(platform_.store.values["values"].array()->front(), damaged);

  edit({0, 1});
  screen_.emailCSVResults();
  EXPECT_EQ(mail().attachments.front().data,
            "Date,Heart Rate,Saturation\n1970-01-01 00:00:02,61,97");
  EXPECT_THAT(platform_.log.lines, testing::Contains(HasSubstr("its \"hr\" is no number")));
  screen_.didDeselectRow(0);
  screen_.clickTrash();
  EXPECT_THAT(*platform_.store.values["values"].array(), SizeIs(1));
}

TEST_F(ResultsViewControllerTest, OldEntriesWithoutLabelsAreCompleted) {
  screen_.addLabelsArrayForMissingRows(
      {{"at 2", "60 bpm", "--", flags({2})}, {"at 1", "--", "97%", std::nullopt}});
  EXPECT_THAT(*Utils::getValuesOLD(),
              ElementsAre(OldHistoryEntry{"at 2", "60 bpm", "--", flags({2})},
                          OldHistoryEntry{"at 1", "--", "97%", Labels{}}));
}

}  // namespace
}  // namespace veyla
