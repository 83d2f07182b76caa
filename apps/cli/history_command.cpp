#include "apps/cli/history_command.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "apps/cli/choices.h"
#include "apps/cli/complain.h"
#include "apps/cli/history_platform.h"
#include "apps/cli/json_number.h"
#include "apps/cli/kept_mail.h"
#include "apps/cli/kept_store.h"
#include "apps/cli/tell.h"
#include "apps/cli/terminal.h"
#include "history/results_view_controller.h"
#include "platform/format.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/desktop.h"
#include "platform/linux/mails.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/text_columns.h"

namespace veyla {

namespace {

using Json = nlohmann::ordered_json;

/// Answers the results screen's sheet as soon as it comes.
class AnsweringView : public ResultsView {
 public:
  std::string answer;

  void presentSheet(const ActionSheet& sheet) override {
    for (const SheetAction& action : sheet.actions) {
      if (action.title == answer) return action.action();
    }
  }
};

/// The results screen over the history of a data folder; empty before the user's first
/// measurement, which makes the folder.
class History {
 public:
  explicit History(const HistoryOptions& options,
                   SqliteKeyValueStore::Use use = SqliteKeyValueStore::Use::read)
      : folder_(dataFolderOf(options.dataFolder)),
        stored_(openKeptStore(options.dataFolder, use)) {}

  ResultsViewController& screen() { return screen_; }
  const std::filesystem::path& folder() const { return folder_; }
  const std::vector<HistoryEntry>& entries() const { return screen_.data(); }

  /// Throws `InputError` when what is stored is no history.
  void load() {
    screen_.viewDidLoad();
    throwFailure();
    // Looked at again only where there is little to read.
    const auto values = entries().empty() ? store().value(Utils::valuesKey) : std::nullopt;
    if (values && !values->array()) {
      throw InputError(file() +
                       ": its history, \"values\", is no list; move the file away to start a new "
                       "one, or restore a copy of it");
    }
  }

  /// Loads the history and changes it while no other program can.
  void change(const std::function<void()>& changes) {
    const bool stands = store().exclusively([&] {
      load();
      changes();
    });
    if (!stands) throwFailure();
  }

  /// After a change that stands: whoever reads of a failure in its last step must not repeat it.
  void throwFailureOfWhatIsDone() const { throwFailure("done, but "); }

  /// The row of an entry's number. Throws `UsageError` for a number outside the history.
  std::size_t rowOf(std::size_t number) const {
    const std::size_t count = entries().size();
    if (number >= 1 && number <= count) return number - 1;
    if (count == 0) {
      throw UsageError(formatText("N: there is no entry %zu, the history in %s is empty", number,
                                  folder_.c_str()));
    }
    throw UsageError(
        formatText("N: there is no entry %zu, the history has %zu; veyla history lists "
                   "them",
                   number, count));
  }

  /// Selects the rows of these numbers, or all when there are none.
  void select(const std::vector<std::size_t>& numbers) {
    screen_.setEditing(true, false);
    if (numbers.empty()) screen_.clickAllAndNone();
    for (const std::size_t number : numbers) {
      screen_.didSelectRow(rowOf(number), ResultsViewController::listTag);
    }
  }

  /// Shares what is selected by this action of the sheet.
  Mail share(const char* action) {
    view_.answer = action;
    screen_.clickShare();
    return kept_.mail.value_or(Mail());
  }

  /// Tells, in one line, which of the entries are damaged; the status of a command that covered
  /// them.
  ExitStatus tellDamaged(const std::vector<std::size_t>& rows) const {
    std::vector<std::size_t> damaged;
    for (const std::size_t row : rows) {
      if (entries()[row].damaged) damaged.push_back(row);
    }
    if (damaged.empty()) return ExitStatus::done;
    const std::size_t number = damaged.front() + 1;
    std::string others;
    if (damaged.size() > 1) others = formatText(" (and %zu more)", damaged.size() - 1);
    complain(formatText(
        "%s: entry %zu of the history is damaged%s: %s; delete it with veyla history delete %zu, "
        "or restore a copy of the file",
        file().c_str(), number, others.c_str(),
        faultOf(*entries()[damaged.front()].damaged).c_str(), number));
    return ExitStatus::unreadableInput;
  }

  /// What there is to say of an empty one.
  std::string nothingThere() const {
    return "no measurements in " + folder_.string() + " yet: veyla measure saves them there";
  }

  /// Every row.
  std::vector<std::size_t> rows() const {
    std::vector<std::size_t> all(entries().size());
    for (std::size_t row = 0; row < all.size(); ++row) all[row] = row;
    return all;
  }
  std::vector<std::size_t> selectedRows() const {
    return {screen_.selectedRows().begin(), screen_.selectedRows().end()};
  }

 private:
  std::string file() const { return (folder_ / SqliteKeyValueStore::fileName).string(); }

  KeyValueStore& store() { return stored_ ? static_cast<KeyValueStore&>(*stored_) : empty_; }

  void throwFailure(const char* before = "") const {
    if (stored_ && stored_->failure()) throw StoreError(before + *stored_->failure());
  }

  std::filesystem::path folder_;
  MemoryKeyValueStore empty_;
  std::unique_ptr<SqliteKeyValueStore> stored_;
  KeptMail kept_;
  HistoryPlatform platform_{store(), kept_};
  AnsweringView view_;
  ResultsViewController screen_{view_, {}};
};

/// The rows as the list shows them, numbered, in columns.
std::string table(const ResultsViewController& screen, const std::vector<std::size_t>& rows) {
  std::vector<HistoryTableViewCell> cells;
  cells.reserve(rows.size());
  std::vector<std::size_t> dateColumns;
  std::size_t widestDate = 0;
  std::size_t widestHeartrate = 0;
  std::size_t widestSpo2 = 0;
  for (const std::size_t row : rows) {
    const HistoryTableViewCell& cell = cells.emplace_back(screen.listCell(row));
    dateColumns.push_back(columnsOf(cell.dateLabel));
    widestDate = std::max(widestDate, dateColumns.back());
    widestHeartrate = std::max(widestHeartrate, cell.heartrateLabel.size());
    widestSpo2 = std::max(widestSpo2, cell.spo2Label.size());
  }
  const std::size_t widestNumber = rows.empty() ? 0 : std::to_string(rows.back() + 1).size();
  std::string text;
  const auto appendRight = [&](const std::string& value, std::size_t columns) {
    text.append(columns - value.size(), ' ').append(value);
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const HistoryTableViewCell& cell = cells[i];
    appendRight(std::to_string(rows[i] + 1), widestNumber);
    text.append("  ").append(cell.dateLabel).append(widestDate - dateColumns[i] + 2, ' ');
    appendRight(cell.heartrateLabel, widestHeartrate);
    text += "  ";
    appendRight(cell.spo2Label, widestSpo2);
    if (!cell.labelNames.empty()) text.append("  ").append(cell.labelNames);
    text += '\n';
  }
  return terminalBehind(STDOUT_FILENO).unicode ? text : withAsciiSpaces(text);
}

/// In UTC.
std::string dateOf(Date date) {
  const double seconds = std::floor(date.secondsSince1970);
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  gmtime_r(&time, &parts);
  return formatText("%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                    parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                    static_cast<int>((date.secondsSince1970 - seconds) * 1000));
}

Json valueOf(double value) { return value == 0 ? Json() : jsonNumber(value); }

std::string asJson(const std::vector<HistoryEntry>& entries) {
  Json list = Json::array();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const HistoryEntry& entry = entries[i];
    if (entry.damaged) {
      list.push_back({{"number", i + 1}, {"damaged", faultOf(*entry.damaged)}});
      continue;
    }
    Json labels = Json::array();
    for (std::size_t label = 0; label < labelNames.size(); ++label) {
      if (entry.labels[label]) labels.push_back(labelNames[label]);
    }
    list.push_back({{"number", i + 1},
                    {"date", dateOf(entry.date)},
                    {"heartrate", valueOf(entry.hr)},
                    {"spo2", valueOf(entry.spo2)},
                    {"labels", labels}});
  }
  return jsonText(list, 2);
}

/// Nothing for "none".
std::optional<std::size_t> labelCalled(const std::string& name) {
  const std::size_t choice = indexIn(labelChoices(), "NAME", name);
  return choice < labelNames.size() ? std::optional(choice) : std::nullopt;
}

/// Of a change that is made: whoever reads of a failure must not repeat it.
void printDone(const std::string& text) {
  try {
    printOut(text);
  } catch (const OutputError& error) {
    throw OutputError(std::string("done, but ") + error.what());
  }
}

ExitStatus list(const HistoryOptions& options) {
  History history(options);
  history.load();
  if (options.json) {
    printOut(asJson(history.entries()));
  } else if (history.entries().empty()) {
    tell("No measurements in " + history.folder().string() +
         " yet: veyla measure saves them there.");
  } else {
    // Columns; behind the number of an entry.
    constexpr std::size_t indent = 5;
    printOut(
        wrapped(table(history.screen(), history.rows()), terminalBehind(STDOUT_FILENO), indent));
  }
  return history.tellDamaged(history.rows());
}

ExitStatus label(const HistoryOptions& options) {
  const auto wanted = labelCalled(options.label);
  if (!wanted && options.off) {
    throw UsageError("--off: \"none\" takes every label off already; name one label or leave it");
  }
  History history(options, SqliteKeyValueStore::Use::readAndWrite);
  ResultsViewController& screen = history.screen();
  std::size_t row = 0;
  ExitStatus status = ExitStatus::done;
  history.change([&] {
    row = history.rowOf(options.number);
    status = history.tellDamaged({row});
    if (status != ExitStatus::done) return;
    screen.didSelectRow(row, ResultsViewController::listTag);
    if (!wanted) {
      screen.tapNoLabels();
    } else if (screen.chooserCell(*wanted).isChecked == options.off) {
      screen.didSelectRow(*wanted, ResultsViewController::chooserTag);
    }
    screen.clickCloseResultsLabelsView();
  });
  if (status == ExitStatus::done) printDone(table(screen, {row}));
  history.throwFailureOfWhatIsDone();
  return status;
}

ExitStatus remove(const HistoryOptions& options) {
  History history(options, SqliteKeyValueStore::Use::readAndWrite);
  std::string deleted;
  history.change([&] {
    history.select(options.numbers);
    deleted = "Deleted:\n" + table(history.screen(), history.selectedRows());
    history.screen().clickTrash();
  });
  printDone(deleted);
  history.throwFailureOfWhatIsDone();
  return ExitStatus::done;
}

ExitStatus exportCsv(const HistoryOptions& options) {
  History history(options);
  history.load();
  history.select(options.numbers);
  if (history.entries().empty()) complain(history.nothingThere());
  const ExitStatus status = history.tellDamaged(history.selectedRows());
  const Mail mail = history.share("Email (csv)");
  OutputFile output(options.output, Readers::ownerAlone);
  output.write(mail.attachments.front().data);
  // The last line has no end, which programs that read lines would miss.
  if (options.output == "-") output.write("\n");
  output.commit();
  return status;
}

/// Where a draft goes that was given no name.
std::string draftFile(const std::filesystem::path& folder) {
  const LocalTime now = services().dates.localTime(services().clock.now());
  const std::filesystem::path drafts = folder / "drafts";
  makeDataFolder(drafts);
  const std::string name = formatText("veyla-data-%04d%02d%02d-%02d%02d%02d", now.year, now.month,
                                      now.day, now.hour, now.minute, now.second);
  std::filesystem::path file = drafts / (name + ".eml");
  for (int more = 2; std::filesystem::exists(file); ++more) {
    file = drafts / (name + formatText("-%i.eml", more));
  }
  return file;
}

ExitStatus mail(const HistoryOptions& options) {
  History history(options);
  history.load();
  if (history.entries().empty()) throw UsageError("nothing to mail, " + history.nothingThere());
  history.select(options.numbers);
  const ExitStatus status = history.tellDamaged(history.selectedRows());
  const Mail mail = history.share(options.text ? "Email (text)" : "Email (csv)");
  const bool handsOver = options.output.empty();
  const std::string file = handsOver ? draftFile(history.folder()) : options.output;
  OutputFile output(file, Readers::ownerAlone);
  output.write(mails().mailDraft(mail, mails().mailSender(), services().clock.now()));
  output.commit();
  if (handsOver) {
    tell(!desktopHasMailProgram()
             ? "There is no mail program to open it in; the draft lies in " + file + "."
         : openMailInDesktop(file)
             ? "Opened in the mail program; the draft lies in " + file + "."
             : "The mail program did not start; the draft lies in " + file + ".");
  }
  return status;
}

}  // namespace

ExitStatus runHistoryList(const HistoryOptions& options) {
  return exitStatusOf([&] { return list(options); });
}
ExitStatus runHistoryLabel(const HistoryOptions& options) {
  return exitStatusOf([&] { return label(options); });
}
ExitStatus runHistoryDelete(const HistoryOptions& options) {
  return exitStatusOf([&] { return remove(options); });
}
ExitStatus runHistoryExport(const HistoryOptions& options) {
  return exitStatusOf([&] { return exportCsv(options); });
}
ExitStatus runHistoryMail(const HistoryOptions& options) {
  return exitStatusOf([&] { return mail(options); });
}

}  // namespace veyla
