#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/store_error.h"

struct sqlite3;
struct sqlite3_stmt;

namespace veyla {

class TemporaryFolder;

/// One SQLite file that is open. What SQLite refuses is thrown as a `StoreError`.
class SqliteFile {
 public:
  /// What a file is opened for. One for reading takes changes, too, where it can be written; where
  /// it cannot, reading works all the same and changes are refused. What a killed program left
  /// undone is then undone in a copy.
  enum class Use { readAndWrite, read };

  /// Makes the file where it is missing, unless it is for reading.
  SqliteFile(std::filesystem::path file, Use use, std::chrono::milliseconds busyTimeout);
  ~SqliteFile();

  const std::filesystem::path& path() const { return path_; }

  void run(const std::string& sql);
  /// The first column of the first row; 0 without any.
  std::int64_t number(const char* sql);

  bool isInTransaction() const;
  /// After some failures SQLite has done it already.
  void rollBack();

  /// The one line for what cannot be so in a store.
  StoreError damaged(const std::string& what) const;

 private:
  friend class SqliteStatement;
  struct Close {
    void operator()(sqlite3* database) const;
  };

  void make();
  void open(Use use);
  void connect(const std::filesystem::path& file, int flags);
  bool canBeReadInPlace();
  void openCopy();
  [[noreturn]] void refuse(int code) const;

  std::filesystem::path path_;
  /// Where the copy lies that is read in the file's place; as a rule, none.
  std::unique_ptr<TemporaryFolder> copy_;
  std::unique_ptr<sqlite3, Close> database_;
};

/// A statement over a file, which must outlive it. It holds its lock until it has run to its end or
/// goes.
class SqliteStatement {
 public:
  SqliteStatement(const SqliteFile& file, const char* sql);

  /// Parameters count from 1. A text must live until the statement has run.
  SqliteStatement& bind(int parameter, std::string_view text);
  SqliteStatement& bind(int parameter, std::int64_t number);

  /// Whether there is another row.
  bool step();
  void reset();

  /// Columns count from 0. A text lives until the next step.
  std::string_view text(int column) const;
  /// 0 for what is no integer.
  std::int64_t number(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  const SqliteFile& file_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// While it lives, all that is read is of one moment: as a transaction of its own, unless one is
/// under way.
class SqliteSnapshot {
 public:
  explicit SqliteSnapshot(SqliteFile& file);
  ~SqliteSnapshot();
  SqliteSnapshot(const SqliteSnapshot&) = delete;
  SqliteSnapshot& operator=(const SqliteSnapshot&) = delete;

 private:
  SqliteFile& file_;
  bool isOwn_;
};

}  // namespace veyla
