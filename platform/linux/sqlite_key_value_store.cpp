#include "platform/linux/sqlite_key_value_store.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/linux/data_folder.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

/// The letters VYLA, in the file's header.
constexpr std::int64_t applicationId = 0x56594C41;
/// The version of the tables' shape, and the first one that has lists in parts.
constexpr std::int64_t schemaVersion = 2;
constexpr std::int64_t versionWithLists = 2;

/// Of a row that is written, and of one that the first version wrote.
constexpr std::string_view arrayType = "array";
constexpr std::string_view partsType = "parts";

constexpr const char* createEntries =
    "CREATE TABLE entries (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value TEXT NOT NULL)";
/// What somebody else has put beside the tables: a trigger, for one, changes what is written.
constexpr const char* strangers =
    "SELECT count(*) FROM sqlite_schema WHERE tbl_name NOT IN ('entries', iif(?1, 'parts', '')) OR "
    "type NOT IN ('table', 'index') OR (type = 'index' AND name NOT LIKE 'sqlite_autoindex_%')";
constexpr const char* columns =
    "SELECT group_concat(name || ' ' || type || ' ' || \"notnull\" || ' ' || pk) "
    "FROM pragma_table_info(?1)";
constexpr std::string_view columnsOfEntries = "key TEXT 1 1,type TEXT 1 0,value TEXT 1 0";
constexpr std::string_view columnsOfParts = "key TEXT 1 1,number INTEGER 1 2,value TEXT 1 0";

/// SQLite does not write rows again that stay the same.
constexpr const char* writeRow =
    "INSERT INTO entries (key, type, value) VALUES (?1, ?2, ?3) "
    "ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value";

struct TypeName {
  std::string_view operator()(std::monostate) const { return "null"; }
  std::string_view operator()(bool) const { return "boolean"; }
  std::string_view operator()(std::int64_t) const { return "integer"; }
  std::string_view operator()(float) const { return "float"; }
  std::string_view operator()(double) const { return "double"; }
  std::string_view operator()(const std::string&) const { return "text"; }
  std::string_view operator()(Date) const { return "date"; }
  std::string_view operator()(const Value::Array&) const { return "array"; }
  std::string_view operator()(const Value::Dictionary&) const { return "dictionary"; }
};

std::string aboutKey(std::string_view key, const char* what) {
  return "the value of \"" + std::string(key) + "\" " + what;
}

std::filesystem::path fileIn(const std::filesystem::path& folder, SqliteFile::Use use) {
  if (use == SqliteFile::Use::readAndWrite) makeDataFolder(folder);
  return folder / SqliteKeyValueStore::fileName;
}

}  // namespace

SqliteKeyValueStore::SqliteKeyValueStore(const std::filesystem::path& folder, Use use,
                                         std::chrono::milliseconds busyTimeout)
    : file_(fileIn(folder, use), use, busyTimeout), lists_(file_) {
  checkIdentity();
  checkIntegrity();
  if (use == Use::readAndWrite) file_.run("PRAGMA journal_mode = DELETE");
  file_.run("PRAGMA synchronous = EXTRA");
}

SqliteKeyValueStore::~SqliteKeyValueStore() {
  // Whoever asked to be told may have gone.
  gathered = nullptr;
  synchronize();
}

void SqliteKeyValueStore::checkIdentity() {
  const auto isEmpty = [this] {
    return file_.number("PRAGMA application_id") == 0 && file_.number("PRAGMA user_version") == 0 &&
           file_.number("SELECT count(*) FROM sqlite_schema") == 0;
  };
  if (isEmpty()) {
    file_.run("BEGIN IMMEDIATE");
    // Another program may have come first.
    if (isEmpty()) create();
    file_.run("COMMIT");
  }
  const std::string name = file_.path().string();
  if (file_.number("PRAGMA application_id") != applicationId) {
    throw StoreError(name + ": not a Veyla store; move it away or choose another data folder");
  }
  const std::int64_t version = file_.number("PRAGMA user_version");
  if (version > schemaVersion) {
    throw StoreError(name + ": made by a newer Veyla (store version " + std::to_string(version) +
                     "); use that one or choose another data folder");
  }
}

void SqliteKeyValueStore::create() {
  file_.run(createEntries);
  file_.run(std::string(SqliteLists::createTable));
  file_.run("PRAGMA application_id = " + std::to_string(applicationId));
  file_.run("PRAGMA user_version = " + std::to_string(schemaVersion));
}

void SqliteKeyValueStore::checkIntegrity() {
  const SqliteSnapshot snapshot(file_);
  const bool withLists = hasLists();
  const auto hasShape = [this](std::string_view table, std::string_view expected) {
    SqliteStatement shape(file_, columns);
    return shape.bind(1, table).step() && shape.text(0) == expected;
  };
  if (!hasShape("entries", columnsOfEntries) || (withLists && !hasShape("parts", columnsOfParts))) {
    throw file_.damaged("its tables have another shape");
  }
  SqliteStatement others(file_, strangers);
  if (!others.bind(1, std::int64_t{withLists}).step() || others.number(0) != 0) {
    throw file_.damaged("holds more than its tables");
  }
  SqliteStatement check(file_, "PRAGMA integrity_check(1)");
  if (!check.step() || check.text(0) != "ok") {
    throw file_.damaged("its pages contradict each other");
  }
}

bool SqliteKeyValueStore::hasLists() {
  return file_.number("PRAGMA user_version") >= versionWithLists;
}

std::optional<SqliteKeyValueStore::Row> SqliteKeyValueStore::rowOf(const Value& value) {
  Row row{std::string(value.visit(TypeName{})), {}};
  if (const auto* text = value.text()) {
    if (!isUtf8(*text)) return std::nullopt;
    row.text = *text;
  } else if (const auto* date = value.date()) {
    row.text = numberText(date->secondsSince1970);
  } else if (row.type == "float") {
    row.text = numberText(value.floatValue());
  } else if (row.type == "double") {
    row.text = numberText(value.doubleValue());
  } else {
    auto json = writeJson(value);
    if (!json) return std::nullopt;
    row.text = std::move(*json);
  }
  return row;
}

std::optional<Value> SqliteKeyValueStore::valueOf(std::string_view type, std::string_view text) {
  if (type == "text") return std::string(text);
  if (type == "date") {
    const auto seconds = doubleFromText(text);
    return seconds ? std::optional<Value>(Date{*seconds}) : std::nullopt;
  }
  if (type == "float") return floatFromText(text);
  if (type == "double") return doubleFromText(text);
  auto value = readJson(text);
  if (!value || value->visit(TypeName{}) != type) return std::nullopt;
  return value;
}

std::optional<Value> SqliteKeyValueStore::value(std::string_view key) {
  if (nesting_ > 0 && !begin()) return std::nullopt;
  if (const auto change = pending_.find(key); change != pending_.end()) {
    const auto& row = change->second;
    return row ? valueOf(row->type, row->text) : std::nullopt;
  }
  try {
    auto value = stored(key);
    unreadable_.erase(std::string(key));
    return value;
  } catch (const StoreError& error) {
    unreadable_.emplace(key);
    fail(error.what());
    return std::nullopt;
  }
}

std::optional<Value> SqliteKeyValueStore::stored(std::string_view key) {
  const auto row = storedRow(key);
  if (!row) return std::nullopt;
  auto value = valueOf(row->type, row->text);
  if (!value || (understands && !understands(key, *value)))
    throw file_.damaged(aboutKey(key, "cannot be understood"));
  return value;
}

/// Of an array, with its JSON.
std::optional<SqliteKeyValueStore::Row> SqliteKeyValueStore::storedRow(std::string_view key) {
  const SqliteSnapshot snapshot(file_);
  SqliteStatement look(file_, "SELECT type, value FROM entries WHERE key = ?1");
  const bool isThere = look.bind(1, key).step();
  if (isThere && look.text(0) == partsType) return Row{std::string(arrayType), lists_.read(key)};
  if (hasLists() && lists_.has(key)) throw file_.damaged(aboutKey(key, "cannot be understood"));
  if (!isThere) return std::nullopt;
  return Row{std::string(look.text(0)), std::string(look.text(1))};
}

void SqliteKeyValueStore::setValue(std::string_view key, const Value& value) {
  auto row = rowOf(value);
  if (!row || !isUtf8(key)) {
    failToSave(key);
    return;
  }
  change(key, std::move(row));
}

void SqliteKeyValueStore::removeValue(std::string_view key) { change(key, std::nullopt); }

void SqliteKeyValueStore::append(std::string_view key, const Value& element) {
  if (nesting_ == 0 || pending_.contains(key) || !isList(key)) {
    KeyValueStore::append(key, element);
    return;
  }
  const auto json = writeJson(Value::Array{element});
  if (!json) {
    failToSave(key);
    return;
  }
  try {
    lists_.append(key, *json);
  } catch (const StoreError& error) {
    fail(error.what());
  }
}

/// Whether there is one that can be appended to without knowing it. Nothing can be after a failure.
bool SqliteKeyValueStore::isList(std::string_view key) {
  if (unreadable_.contains(key) || !begin()) return false;
  try {
    SqliteStatement look(file_, "SELECT 1 FROM entries WHERE key = ?1 AND type = ?2");
    return look.bind(1, key).bind(2, partsType).step();
  } catch (const StoreError& error) {
    fail(error.what());
    return false;
  }
}

void SqliteKeyValueStore::change(std::string_view key, std::optional<Row> row) {
  if (unreadable_.contains(key)) {
    fail(file_.damaged(aboutKey(key, "could not be read and is left as it is")).what());
    return;
  }
  pending_.insert_or_assign(std::string(key), std::move(row));
}

void SqliteKeyValueStore::synchronize() {
  if (pending_.empty()) return;
  if (nesting_ == 0) {
    exclusively([this] {
      if (begin()) synchronize();
    });
    return;
  }
  if (gathers_ && !hasBegun_) return;
  if (!begin()) return;
  try {
    for (const auto& [key, row] : pending_) write(key, row);
    pending_.clear();
  } catch (const StoreError& error) {
    fail(error.what());
  }
}

void SqliteKeyValueStore::write(const std::string& key, const std::optional<Row>& row) {
  if (row && row->type == arrayType) {
    makeLists();
    // First, so that the rows take the room of an array that stood there.
    writeEntry(key, Row{std::string(partsType), {}});
    lists_.write(key, row->text);
    return;
  }
  if (hasLists() && lists_.has(key)) lists_.remove(key);
  writeEntry(key, row);
}

void SqliteKeyValueStore::writeEntry(const std::string& key, std::optional<Row> row) {
  SqliteStatement write(file_, row ? writeRow : "DELETE FROM entries WHERE key = ?1");
  write.bind(1, key);
  if (row) write.bind(2, row->type).bind(3, row->text);
  write.step();
  written_.insert_or_assign(key, std::move(row));
}

/// A store of the first version becomes one of this.
void SqliteKeyValueStore::makeLists() {
  if (hasLists()) return;
  file_.run(std::string(SqliteLists::createTable));
  file_.run("PRAGMA user_version = " + std::to_string(schemaVersion));
}

/// False after a failure, which can have ended the transaction: what is written then would stand by
/// itself.
bool SqliteKeyValueStore::begin() {
  if (spoilt_ || hasBegun_) return !spoilt_;
  try {
    file_.run("BEGIN IMMEDIATE");
    hasBegun_ = true;
  } catch (const StoreError& error) {
    fail(error.what());
  }
  return hasBegun_;
}

bool SqliteKeyValueStore::exclusively(const std::function<void()>& changes) {
  if (nesting_ > 0) {
    changes();
    return !spoilt_;
  }
  const Pending before = pending_;
  spoilt_ = false;
  hasBegun_ = false;
  written_.clear();
  lists_.forgetWritten();
  nesting_ = 1;
  bool isCommitting = false;
  try {
    changes();
    isCommitting = !spoilt_ && hasBegun_;
    if (isCommitting) file_.run("COMMIT");
  } catch (const StoreError& error) {
    fail(error.what());
  } catch (...) {
    nesting_ = 0;
    file_.rollBack();
    pending_ = before;
    throw;
  }
  nesting_ = 0;
  if (spoilt_) file_.rollBack();
  // The last step of a commit, after which it stands, may fail as well.
  const bool areStored = !spoilt_ || (isCommitting && isStoredAsWritten());
  if (!areStored) pending_ = gathers_ ? Pending() : before;
  // Also of one that could not begin.
  if (gathers_ && (hasBegun_ || spoilt_) && gathered) gathered(areStored);
  return areStored;
}

bool SqliteKeyValueStore::isStoredAsWritten() {
  try {
    SqliteStatement look(file_, "SELECT type, value FROM entries WHERE key = ?1");
    const auto isThere = [&look](const auto& change) {
      const auto& [key, row] = change;
      look.reset();
      if (!look.bind(1, key).step()) return !row;
      return row && look.text(0) == row->type && look.text(1) == row->text;
    };
    return std::all_of(written_.begin(), written_.end(), isThere) && lists_.areAsWritten();
  } catch (const StoreError&) {
    return false;
  }
}

void SqliteKeyValueStore::fail(const std::string& line) {
  spoilt_ = true;
  if (!failure_) failure_ = line;
}

void SqliteKeyValueStore::failToSave(std::string_view key) {
  fail(file_.path().string() + ": " +
       aboutKey(key,
                "is not saved: a text in it is not UTF-8, or it nests too deep; report this "
                "to the developers"));
}

}  // namespace veyla
