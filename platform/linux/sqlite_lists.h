#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/sqlite_file.h"

namespace veyla {

/// The lists of a store, in its table `parts`: the lines of a list's JSON, cut into rows of about a
/// page, in the order of `number`. Appending writes one row, and changing an element few, however
/// long the list is; a row an element would cost more of the disk, and more time at each reading.
///
/// Every operation throws a `StoreError` for what SQLite refuses, and for rows that are
/// empty or not numbered as rows are.
class SqliteLists {
 public:
  static constexpr std::string_view createTable =
      "CREATE TABLE parts (key TEXT NOT NULL, number INTEGER NOT NULL, value TEXT NOT NULL, "
      "PRIMARY KEY (key, number))";

  /// `file` must outlive it, and have the table.
  explicit SqliteLists(SqliteFile& file) : file_(file) {}

  /// Whether a list of that key has any row.
  bool has(std::string_view key) const;
  /// The JSON of the list, which has no element without rows.
  std::string read(std::string_view key) const;

  // What is written belongs to the transaction under way.

  /// `json` is an array as `writeJson` writes it. Rows that stay the same are not written; rows
  /// that it would not write are replaced.
  void write(std::string_view key, std::string_view json);
  /// The same of an array with what is new.
  void append(std::string_view key, std::string_view json);
  void remove(std::string_view key);

  /// Whether all that was written since `forgetWritten` is there.
  bool areAsWritten() const;
  void forgetWritten() { written_.clear(); }

 private:
  struct Part {
    std::int64_t number;
    std::string value;
  };

  std::vector<Part> partsOf(std::string_view key) const;
  StoreError foreignRows(std::string_view key) const;
  void writePart(std::string_view key, const Part& part);
  void removePart(std::string_view key, std::int64_t number);

  SqliteFile& file_;
  /// By key and number; nothing for a row that was removed.
  std::map<std::pair<std::string, std::int64_t>, std::optional<std::string>> written_;
};

}  // namespace veyla
