#include "history/results_view_controller.h"

#include <gmock/gmock.h>

#include <memory>

#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

constexpr std::int32_t list = ResultsViewController::listTag;
constexpr std::int32_t chooser = ResultsViewController::chooserTag;

/// Keeps the sheet that was presented; every call stands in the journal as "results …".
struct RecorderResultsView : ResultsView {
  Journal& journal;
  std::optional<ActionSheet> sheet;
  std::string offered;
  std::int32_t height = 500;

  explicit RecorderResultsView(Journal& of) : journal(of) {}
  void record(const std::string& what) { journal.add("results " + what); }

  void setLeftButton(std::string_view title) override { record("left " + std::string(title)); }
  void setRightButtons(const std::vector<std::string_view>& titles) override {
    std::string line = "right";
    for (const std::string_view title : titles) line.append(" ").append(title);
    record(line);
  }
  std::int32_t listHeight() const override { return height; }
  void setEditing(bool editing, bool animated) override {
    record(formatText("editing %i%s", editing ? 1 : 0, animated ? " animated" : ""));
  }
  void selectRow(std::size_t row, bool animated) override {
    record(formatText("select %zu%s", row, animated ? "" : " at once"));
  }
  void deselectRow(std::size_t row, bool animated) override {
    record(formatText("deselect %zu%s", row, animated ? "" : " at once"));
  }
  void deleteRows(const std::vector<std::size_t>& rows, RowAnimation animation) override {
    std::string line = "delete";
    for (const std::size_t row : rows) line += formatText(" %zu", row);
    record(line + (animation == RowAnimation::fade ? " fading" : " at once"));
  }
  void offerUndo(const std::string& text) override { offered = text; }
  void withdrawUndo() override { offered.clear(); }
  void reloadRows() override { record("reload"); }
  void reloadChooser() override { record("reload chooser"); }
  void setCheckMark(std::size_t chooserRow, bool shown) override {
    record(formatText("check mark %zu %s", chooserRow, shown ? "on" : "off"));
  }
  void setOpacity(Element element, double opacity, double seconds) override {
    record(std::string(element.name) + formatText(" opacity %g in %g s", opacity, seconds));
  }
  void slideToolbar(std::int32_t upward, std::int32_t listHeight, double seconds) override {
    height = listHeight;
    record(formatText("toolbar %i, list %i in %g s", upward, listHeight, seconds));
  }
  void presentSheet(const ActionSheet& presented) override { sheet = presented; }
  void dismissSheet() override { record("dismiss sheet"); }
};

/// By their numbers, such as "035".
Labels flags(const std::string& numbers) {
  Labels labels{};
  for (const char number : numbers) labels[static_cast<std::size_t>(number - '0')] = true;
  return labels;
}

class ResultsViewControllerTest : public testing::Test {
 protected:
  ResultsViewControllerTest() {
    platform_.resources.files["Product.json"] = R"({"storePage": "https://store/veyla"})";
  }

  /// Three entries, stored oldest first: rows 2, 1 and 0 of the list.
  void loadThree() {
    Utils::saveHeartrate(60.4, 95.5, Date{1000}, flags("0"));
    Utils::saveHeartrate(0, 97.4, Date{2000}, flags("35"));
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

  /// Words such as "row1 label3": a tap on row 1 of the list, one on label 3 of the chooser.
  void tap(const std::string& words) {
    using Screen = ResultsViewController;
    static const std::map<std::string, std::function<void(Screen&, std::size_t)>> taps{
        {"row", [](Screen& screen, std::size_t row) { screen.didSelectRow(row, list); }},
        {"deselect", [](Screen& screen, std::size_t row) { screen.didDeselectRow(row); }},
        {"label", [](Screen& screen, std::size_t label) { screen.didSelectRow(label, chooser); }},
        {"swipe", [](Screen& screen, std::size_t row) { screen.tapSwipeAction(row); }},
        {"none", [](Screen& screen, std::size_t) { screen.tapNoLabels(); }},
        {"delete", [](Screen& screen, std::size_t) { screen.tapDeleteRow(); }},
        {"outside", [](Screen& screen, std::size_t) { screen.touchesBegan(); }},
        {"edit", [](Screen& screen, std::size_t) { screen.tapEditButton(); }},
        {"left", [](Screen& screen, std::size_t) { screen.tapLeftButton(); }},
        {"trash", [](Screen& screen, std::size_t) { screen.clickTrash(); }},
        {"undo", [](Screen& screen, std::size_t) { screen.tapUndo(); }},
        {"chart", [](Screen& screen, std::size_t) { screen.showChart(); }}};
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
      const std::size_t digits = std::min(word.find_first_of("0123456789"), word.size());
      taps.at(word.substr(0, digits))(screen_,
                                      static_cast<std::size_t>(std::atoi(word.c_str() + digits)));
    }
  }
  /// What taps lead to, row by row, in views, store and screens.
  void expectRows(const std::string& table) {
    for (const auto& [taps, done] :
         rowsOf(table, {{"{comes}",
                         "{chooser} 0 in 0 s | {chooser} 1 in 0.5 s | dimView opacity 0 "
                         "in 0 s | dimView opacity 1 in 0.5 s | reload chooser"},
                        {"{goes}", "{chooser} 0 in 0.5 s | dimView opacity 0 in 0.5 s"},
                        {"{chooser}", "resultsTableViewForLabels opacity"},
                        {"{saved}", "store set values | store flush"},
                        {"{up}", "toolbar 44, list 456 in 0.5 s"},
                        {"{down}", "toolbar -44, list 500 in 0.5 s"},
                        {"{begun}", "editing 1 animated | right Done Chart | left All"},
                        {"{ended}", "editing 0 animated | right Edit Chart | left Close"}})) {
      platform_.journal.clear();
      tap(taps);
      EXPECT_EQ(replaced(joined(platform_.journal.lines()), "results ", ""), done) << taps;
    }
  }
  Labels storedLabels(std::size_t index) const { return Utils::getValues()->at(index).labels; }

  TestPlatform platform_;
  RecorderResultsView view_{platform_.journal};
  int dismissals_ = 0;
  ResultsViewController screen_{view_, [this] { ++dismissals_; }};
};

TEST_F(ResultsViewControllerTest, ItLoadsTheHistoryOnceNewestFirstAndOnlyAnExactZeroIsEmpty) {
  loadThree();
  screen_.viewDidLoad();
  EXPECT_EQ(joined(platform_.journal.of("results")),
            "right Edit Chart | left Close | dimView opacity 0 in 0 s");
  EXPECT_TRUE(AppDelegate::instance().isResults());
  Utils::saveHeartrate(62, 0, Date{4000}, std::nullopt);
  screen_.viewWillAppear();
  screen_.viewWillDisappear();
  EXPECT_FALSE(AppDelegate::instance().isResults());
  EXPECT_THAT(platform_.log.lines,
              ElementsAre("ResultsView: didload", "ResultsView: viewWillAppear",
                          "ResultsView: willDisappear"));
  ASSERT_EQ(screen_.numberOfRows(list), 3U);
  EXPECT_EQ(screen_.listCell(0), (HistoryTableViewCell{"at 3000", "72 bpm", "--", ""}));
  EXPECT_EQ(screen_.listCell(1),
            (HistoryTableViewCell{"at 2000", "--", "97%", "Training (Before), Sleep (Before)"}));
  EXPECT_EQ(screen_.listCell(2), (HistoryTableViewCell{"at 1000", "60 bpm", "96%", "Resting"}));
  EXPECT_EQ(screen_.heightForRow(list), 50);
  EXPECT_EQ(screen_.heightForRow(chooser), 40);
}

TEST_F(ResultsViewControllerTest, ATappedRowIsLabelledOrDeletedAtOnce) {
  loadThree();
  EXPECT_FALSE(screen_.chooserCell(0).isChecked);
  expectRows("none ->\n row1 -> {comes}");
  EXPECT_EQ(screen_.resultsCurrentSelectedRow(), 1);
  EXPECT_THAT(platform_.log.lines, ElementsAre("didSelect, tag: 0"));
  EXPECT_EQ(screen_.numberOfRows(chooser), 8U);
  EXPECT_EQ(screen_.chooserCell(3), (TableCell{"labelCell", "Training (Before)", true}));
  EXPECT_EQ(screen_.chooserCell(4), (TableCell{"labelCell", "Training (After)", false}));
  EXPECT_EQ(screen_.chooserCell(7), (TableCell{"labelsButtons", "", false}));
  expectRows(R"(
outside              -> {goes}
row2 label1          -> {comes} | check mark 1 on | {saved}
label0               -> check mark 0 off | {saved}
label7               ->)");
  EXPECT_EQ(storedLabels(0), flags("1"));
  EXPECT_EQ(storedLabels(1), flags("35")) << "another entry's";
  EXPECT_EQ(screen_.listCell(2).labelNames, "Active");
  std::string unmarked;
  for (int label = 0; label < 7; ++label) unmarked += formatText("check mark %i off | ", label);
  expectRows("row1 none -> {comes} | " + unmarked + "{saved}");
  EXPECT_EQ(storedLabels(1), Labels{});
  EXPECT_EQ(storedLabels(0), flags("1"));
  EXPECT_FALSE(screen_.chooserCell(3).isChecked);

  forget();
  expectRows("delete -> {saved} | delete 1 at once | {goes}\n label0 ->");
  EXPECT_EQ(platform_.log.lines.front(), "delete row 1, pathrow: 1");
  EXPECT_EQ(Utils::getValues()->back().hr, 72.5);
  EXPECT_EQ(storedLabels(0), flags("1")) << "no entry is being edited";
  EXPECT_EQ(screen_.swipeAction(), (SwipeAction{"Delete", Color{1, 0, 0, 1}}));
  EXPECT_EQ(screen_.editingStyle(), EditingStyle::swipeToDelete);
  expectRows("swipe1 swipe0 -> {saved} | delete 1 fading | {saved} | delete 0 fading");
  EXPECT_EQ(platform_.log.lines.back(), "delete from swipe");
  EXPECT_THAT(*Utils::getValues(), IsEmpty()) << "an empty history, not an absent one";
}

TEST_F(ResultsViewControllerTest, ADeletionCanBeUndoneForSixSecondsUnlessRowsAreTakenUpAgain) {
  loadThree();
  const auto all = *Utils::getValues();
  for (const char* words : {"swipe1 undo undo", "row0 delete undo", "edit row0 row2 trash undo"}) {
    tap(words);
    EXPECT_EQ(*Utils::getValues(), all) << words;
    EXPECT_EQ(platform_.journal.of("results").back(), "reload");
  }
  for (const char* words : {"swipe0 edit undo edit", "swipe0 row0 undo outside"}) {
    Utils::setValues(all);
    load();
    tap(words);
    EXPECT_THAT(*Utils::getValues(), SizeIs(2)) << words;
  }
  Utils::setValues(all);
  load();
  tap("edit row0 row2 trash");
  EXPECT_EQ(view_.offered, "2 measurements deleted");
  platform_.time.runFor(3);
  tap("swipe0");
  platform_.time.runFor(5.9);
  EXPECT_EQ(view_.offered, "1 measurement deleted");
  platform_.time.runFor(0.2);
  EXPECT_EQ(view_.offered, "");
  tap("undo");
  EXPECT_THAT(*Utils::getValues(), IsEmpty());
}

TEST_F(ResultsViewControllerTest, BeforeAndAfterExcludeEachOtherFromTheTappedSide) {
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"4", 3, "3"},      {"5", 6, "6"}, {"6", 5, "5"}, {"36", 4, "46"},  // the other pair
      {"4", 5, "45"},      // neighbours of different pairs
      {"136", 0, "0136"},  // no pair's
      {"34", 3, "4"},      // both already: only what is tapped goes
      {"3", 4, "4"}};
  for (const auto& [labels, tapped, left] : cases) {
    Utils::setValues({{60, 97, Date{1}, flags(labels), {}}});
    load();
    screen_.didSelectRow(0, list);
    forget();
    screen_.didSelectRow(tapped, chooser);
    EXPECT_EQ(storedLabels(0), flags(left)) << tapped;
  }
  EXPECT_THAT(platform_.journal.of("results"), ElementsAre("check mark 4 on", "check mark 3 off"));
}

TEST_F(ResultsViewControllerTest, TheToolbarShowsWhileSomethingIsSelectedAndAllAndNoneTakeTurns) {
  loadThree();
  expectRows(R"(
row1 outside         -> {comes} | {goes}
edit                 -> {begun}
row0 row2 deselect0  -> {up}
deselect2            -> {down}
left                 -> left None | select 0 | select 1 | select 2 | {up}
left                 -> left All | deselect 0 | deselect 1 | deselect 2 | {down}
left edit            -> left None | select 0 | select 1 | select 2 | {up} | {ended} | {down}
edit left            -> {begun} | left All | deselect 0 | deselect 1 | deselect 2
row2 row0            -> {up}
trash                -> {saved} | delete 0 2 fading | {ended} | {down})");
  EXPECT_EQ(screen_.resultsCurrentSelectedRow(), -1);
  ASSERT_THAT(*Utils::getValues(), SizeIs(1));
  EXPECT_EQ(Utils::getValues()->front().spo2, 97.4);
  EXPECT_EQ(platform_.log.lines.back(), "setEditing 0");
  EXPECT_EQ(platform_.log.lines.end()[-2], "click trash");
  EXPECT_EQ(dismissals_, 0);
  tap("edit");
  EXPECT_EQ(screen_.editingStyle(), EditingStyle::multipleSelection);
  tap("row0 edit left");
  EXPECT_THAT(screen_.selectedRows(), IsEmpty());
  EXPECT_EQ(dismissals_, 1);
  // An empty list leads to the chart as well.
  tap("swipe0");
  expectRows("chart -> screens chart\n row0 label0 delete swipe0 none ->");
}

// Sharing.

TEST_F(ResultsViewControllerTest, TheShareSheetMailsTheSelectedRowsNewestFirstWhenCancelledToo) {
  loadThree();
  tap("edit row2 row0 row1");
  const std::string introduction =
      "The heart rate and saturation data have been measured with the Veyla app. It can be "
      "downloaded on the App Store: <a href=\"https://store/veyla\">iTunes link</a>.";
  // The test's clock stands at 2023-11-14 22:13:20 UTC.
  const std::string lines =
      "Date,Heart Rate,Saturation\n1970-01-01 00:50:00,72,0\n1970-01-01 00:33:20,0,97\n"
      "1970-01-01 00:16:40,60,96";
  const Mail csv{
      {},    "Veyla data", introduction, true, {{lines, "text/csv", "veyla-data-20231114.csv"}},
      black, black};
  Mail text = csv;
  text.body = "<p>" + introduction + "</p><p>" + replaced(lines, "\n", "<br>") + "</p>";
  text.attachments.clear();

  forget();
  screen_.clickShare();
  EXPECT_EQ(platform_.log.lines.back(), "click share");
  std::string actions;
  for (const SheetAction& action : view_.sheet->actions) {
    actions += action.title + (action.style == ActionStyle::cancel ? " (cancel), " : ", ");
    action.action();
    EXPECT_EQ(platform_.journal.lines().back(), "results dismiss sheet");
  }
  EXPECT_EQ(actions, "Cancel (cancel), Email (text), Email (csv), ");
  EXPECT_THAT(platform_.sharing.mails, ElementsAre(csv, text, csv));

  forget();
  using enum MailResult;
  for (const MailResult result : {cancelled, saved, sent, failed}) {
    platform_.sharing.mailFinished(result, "no network");
  }
  EXPECT_EQ(joined(platform_.log.lines),
            "Mail cancelled | Mail saved | Mail sent | Mail sent failure: no network");
}

TEST_F(ResultsViewControllerTest, AScreenThatHasGoneIsNotCalledByItsSheet) {
  auto screen = std::make_unique<ResultsViewController>(view_, nullptr);
  screen->clickShare();
  screen.reset();
  view_.sheet->actions.front().action();
  EXPECT_THAT(platform_.journal.lines(), IsEmpty());
}

// What others left.

TEST_F(ResultsViewControllerTest, ADamagedEntryShowsAndStaysAsItIsUntilItIsDeleted) {
  Utils::saveHeartrate(61, 97, Date{2}, std::nullopt);
  auto stored = *platform_.store.values["values"].array();
  const Value damaged = Value::Dictionary{{"hr", "sixty"}, {"note", 5}};
  stored.insert(stored.begin(), damaged);
  platform_.store.values["values"] = stored;
  load();
  EXPECT_EQ(screen_.listCell(1), (HistoryTableViewCell{"Damaged entry", "--", "--", ""}));
  tap("row1 label0 none");
  EXPECT_FALSE(screen_.chooserCell(0).isChecked);
  tap("row0 label0");
  EXPECT_EQ(storedLabels(1), flags("0"));
  EXPECT_EQ(platform_.store.values["values"].array()->front(), damaged);

  tap("edit row1 trash");
  EXPECT_THAT(*platform_.store.values["values"].array(), SizeIs(1));
}

TEST_F(ResultsViewControllerTest, WhatCouldNotBeStoredIsNotShown) {
  Utils::saveHeartrate(61, 97, Date{2}, std::nullopt);
  load();
  platform_.store.refuses = true;
  for (const char* taps : {"row0 label0", "row0 delete", "edit row0 trash"}) {
    platform_.journal.clear();
    tap(taps);
    EXPECT_THAT(platform_.journal.lines(),
                AllOf(Contains("results reload"), Not(Contains(HasSubstr("results delete")))))
        << taps;
    ASSERT_EQ(screen_.numberOfRows(ResultsViewController::listTag), 1U);
    EXPECT_EQ(screen_.listCell(0).labelNames, "");
  }
}

}  // namespace
}  // namespace veyla
