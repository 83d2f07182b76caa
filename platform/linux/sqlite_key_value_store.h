#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/key_value_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace veyla {

class TemporaryFolder;

/// The key-value store in one SQLite file, `veyla.db` in the data folder.
///
/// One table, `entries`, with a row a key: `key`, `type` ("boolean", "integer", "float", "double",
/// "text", "date", "array", "dictionary", "null") and `value`, a text that the sqlite3 program
/// shows readably and that keeps every bit of a number; arrays and dictionaries as `writeJson`
/// writes them.
///
/// A flush is one transaction. The file has a rollback journal and synchronous=EXTRA: a commit has
/// reached the disk, the journal's removal included, before `synchronize` (within `exclusively`,
/// the outermost one) returns. A write-ahead log would need two more files beside the store to be
/// whole, which a researcher who copies the one file would leave behind.
///
/// A transaction begins with the first thing that is read or flushed within `exclusively`. What
/// fails in use is remembered in `failure`, and the transaction that it happened in is undone.
class SqliteKeyValueStore final : public KeyValueStore {
 public:
  static constexpr std::string_view fileName = "veyla.db";
  /// How long to wait for another program that writes.
  static constexpr std::chrono::milliseconds patience{5000};

  /// What the store is opened for. A store for reading takes changes, too, where its file can be
  /// written; where it cannot, reading works all the same and changes are refused. What a killed
  /// program left undone is then undone in a copy.
  enum class Use { readAndWrite, read };

  /// Makes the folder and the file where they are missing, unless it is for reading. Throws
  /// `StoreError`.
  explicit SqliteKeyValueStore(const std::filesystem::path& folder, Use use = Use::readAndWrite,
                               std::chrono::milliseconds busyTimeout = patience);
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

  /// What could not be flushed outside `exclusively` stays to be flushed next time.
  void synchronize() override;

  /// When anything fails within, such as when another program holds the store for longer than the
  /// busy timeout, or `changes` throws, the contents are what they were before. May be nested: the
  /// outermost one commits.
  bool exclusively(const std::function<void()>& changes) override;

  /// From now on what is changed without reading waits for the next transaction, or for
  /// `synchronize` outside `exclusively`.
  void gatherChanges() { gathers_ = true; }
  /// Called after each transaction that stored what was gathered, or could not. May be empty.
  std::function<void(bool areStored)> gathered;

  /// The first thing that went wrong in use, as one line.
  const std::optional<std::string>& failure() const { return failure_; }

 private:
  /// What a row holds beside its key.
  struct Row {
    std::string_view type;
    std::string text;
  };
  struct Close {
    void operator()(sqlite3* database) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;
  /// Changes that are not in the database yet; without a row, a removal.
  using Pending = std::map<std::string, std::optional<Row>, std::less<>>;

  static std::optional<Row> rowOf(const Value& value);
  static std::optional<Value> valueOf(std::string_view type, std::string_view text);

  void makeFile();
  void open(Use use);
  void connect(const std::filesystem::path& file, int flags);
  bool canBeReadInPlace();
  void openCopy();
  void checkIdentity();
  void checkIntegrity();
  void create();

  /// These throw a `StoreError` about the last thing that SQLite refused.
  Statement prepare(const char* sql);
  bool step(sqlite3_stmt* statement);
  void run(const char* sql);
  std::int64_t number(const char* sql);
  [[noreturn]] void refuse(int code);

  std::optional<Value> stored(std::string_view key);
  void change(std::string_view key, std::optional<Row> row);
  bool begin();
  bool isStoredAsWritten();
  void writePending();
  void rollBack();
  void fail(const std::string& line);
  std::string aboutKey(std::string_view key, const char* what) const;

  std::filesystem::path file_;
  /// Where the copy lies that is read in the file's place; as a rule, none.
  std::unique_ptr<TemporaryFolder> copy_;
  std::unique_ptr<sqlite3, Close> database_;
  Statement read_;
  Statement write_;
  Statement remove_;
  Pending pending_;
  /// What the outermost `exclusively` under way has written.
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
