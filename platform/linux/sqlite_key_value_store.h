#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/key_value_store.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/sqlite_file.h"
#include "platform/linux/sqlite_lists.h"

namespace veyla {

/// The key-value store in one SQLite file, `veyla.db` in the data folder.
///
/// A table `entries` has a row a key: `key`, `type` ("boolean", "integer", "float", "double",
/// "text", "date", "dictionary", "null", "parts") and `value`, a text that the sqlite3 program
/// shows readably and that keeps every bit of a number; dictionaries as `writeJson` writes them. An
/// array has the type "parts" and its elements in the table `parts`. The store's first version had
/// arrays as "array" in `entries`; one such is read as it is, and turned into this one within the
/// transaction that first writes an array.
///
/// A flush is one transaction. The file has a rollback journal and synchronous=EXTRA: a commit has
/// reached the disk, the journal's removal included, before `synchronize` (within `exclusively`,
/// the outermost one) returns. A write-ahead log would need two more files beside the store to be
/// whole, which a researcher who copies the one file would leave behind.
///
/// A transaction begins with the first thing that is read, appended or flushed within
/// `exclusively`. What fails in use is remembered in `failure`, and the transaction that it
/// happened in is undone.
class SqliteKeyValueStore final : public KeyValueStore {
 public:
  static constexpr std::string_view fileName = "veyla.db";
  using Use = SqliteFile::Use;

  /// Makes the folder and the file where they are missing, unless it is for reading. Throws
  /// `StoreError`.
  explicit SqliteKeyValueStore(const std::filesystem::path& folder, Use use = Use::readAndWrite,
                               std::chrono::milliseconds busyTimeout = patienceWithWriters);
  /// Flushes.
  ~SqliteKeyValueStore() override;

  /// Whether such a value may stand under a key; one that may not is damaged. May be empty.
  std::function<bool(std::string_view key, const Value& value)> understands;

  /// Nothing for a key that cannot be read; until it can be, changes of it are refused, so that
  /// what is there is not lost for what was taken for nothing.
  std::optional<Value> value(std::string_view key) override;
  /// Visible to `value` at once, durable from the next flush on.
  void setValue(std::string_view key, const Value& value) override;
  void removeValue(std::string_view key) override;
  /// Takes as long for a long array as for a short one within `exclusively`; without, it reads it.
  void append(std::string_view key, const Value& element) override;

  /// What could not be flushed outside `exclusively` stays to be flushed next time.
  void synchronize() override;

  /// When anything fails within, such as when another program holds the store for longer than the
  /// busy timeout, or `changes` throws, the contents are what they were before. May be nested: the
  /// outermost one commits.
  bool exclusively(const std::function<void()>& changes) override;

  /// From now on what is changed without reading waits for the next transaction, or for
  /// `synchronize` outside `exclusively`; where that transaction fails, it is given up with it.
  void gatherChanges() { gathers_ = true; }
  /// Called after each transaction that stored what was gathered, or could not. May be empty.
  std::function<void(bool areStored)> gathered;

  /// The first thing that went wrong in use, as one line.
  const std::optional<std::string>& failure() const { return failure_; }

 private:
  /// What a row holds beside its key.
  struct Row {
    std::string type;
    std::string text;
  };
  /// Changes that are not in the database yet; without a row, a removal.
  using Pending = std::map<std::string, std::optional<Row>, std::less<>>;

  static std::optional<Row> rowOf(const Value& value);
  static std::optional<Value> valueOf(std::string_view type, std::string_view text);

  void checkIdentity();
  void checkIntegrity();
  void create();

  bool hasLists();
  std::optional<Row> storedRow(std::string_view key);
  std::optional<Value> stored(std::string_view key);
  void change(std::string_view key, std::optional<Row> row);
  bool begin();
  bool isStoredAsWritten();
  bool isList(std::string_view key);
  void write(const std::string& key, const std::optional<Row>& row);
  void writeEntry(const std::string& key, std::optional<Row> row);
  void makeLists();
  void failToSave(std::string_view key);
  void fail(const std::string& line);

  SqliteFile file_;
  SqliteLists lists_;
  Pending pending_;
  /// The rows that the outermost `exclusively` under way has written.
  Pending written_;
  std::set<std::string, std::less<>> unreadable_;
  int nesting_ = 0;
  /// Whether the transaction of the outermost `exclusively` under way has begun.
  bool hasBegun_ = false;
  bool gathers_ = false;
  /// Something failed within the outermost `exclusively` under way.
  bool spoilt_ = false;
  std::optional<std::string> failure_;
};

}  // namespace veyla
