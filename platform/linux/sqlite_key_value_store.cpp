#include "platform/linux/sqlite_key_value_store.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <utility>

#include "platform/linux/data_folder.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/store_error.h"
#include "platform/linux/temporary_folder.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

/// The letters VYLA, in the file's header.
constexpr std::int64_t applicationId = 0x56594C41;
/// The version of the table's shape.
constexpr std::int64_t schemaVersion = 1;

/// What somebody else has put beside the table: a trigger, for one, changes what is written.
constexpr const char* strangers =
    "SELECT count(*) FROM sqlite_schema WHERE tbl_name != 'entries' OR type NOT IN ('table', "
    "'index') OR (type = 'index' AND name NOT LIKE 'sqlite_autoindex_%')";
constexpr const char* createTable =
    "CREATE TABLE entries (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value TEXT NOT NULL)";
constexpr const char* columns =
    "SELECT group_concat(name || ' ' || type || ' ' || \"notnull\" || ' ' || pk) "
    "FROM pragma_table_info('entries')";
constexpr std::string_view expectedColumns = "key TEXT 1 1,type TEXT 1 0,value TEXT 1 0";

/// SQLite does not write rows again that stay the same.
constexpr const char* writeRow =
    "INSERT INTO entries (key, type, value) VALUES (?1, ?2, ?3) "
    "ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value";

constexpr const char* damagedWayOut =
    "the store is damaged; move the file away to start a new one, or restore a copy of it";

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

std::string_view columnText(sqlite3_stmt* statement, int column) {
  const void* bytes = sqlite3_column_blob(statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return {static_cast<const char*>(bytes), bytes ? size : 0};
}

/// The text must live until the statement has run.
void bindText(sqlite3_stmt* statement, int parameter, std::string_view text) {
  // Without a pointer it would be NULL and not empty.
  const char* bytes = text.empty() ? "" : text.data();
  sqlite3_bind_text64(statement, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

/// Ready to run again whatever becomes of this run: a statement under way would keep its lock.
class Resetting {
 public:
  explicit Resetting(sqlite3_stmt* statement) : statement_(statement) {}
  ~Resetting() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }
  Resetting(const Resetting&) = delete;
  Resetting& operator=(const Resetting&) = delete;

 private:
  sqlite3_stmt* statement_;
};

}  // namespace

void SqliteKeyValueStore::Close::operator()(sqlite3* database) const { sqlite3_close(database); }
void SqliteKeyValueStore::Close::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteKeyValueStore::SqliteKeyValueStore(const std::filesystem::path& folder, Use use,
                                         std::chrono::milliseconds busyTimeout)
    : file_(folder / fileName) {
  if (use == Use::readAndWrite) makeDataFolder(folder);
  open(use);
  sqlite3_busy_timeout(database_.get(), static_cast<int>(busyTimeout.count()));
  if (use == Use::read && !canBeReadInPlace()) openCopy();
  checkIdentity();
  checkIntegrity();
  if (use == Use::readAndWrite) run("PRAGMA journal_mode = DELETE");
  run("PRAGMA synchronous = EXTRA");
  read_ = prepare("SELECT type, value FROM entries WHERE key = ?1");
  write_ = prepare(writeRow);
  remove_ = prepare("DELETE FROM entries WHERE key = ?1");
}

SqliteKeyValueStore::~SqliteKeyValueStore() {
  // Whoever asked to be told may have gone.
  gathered = nullptr;
  synchronize();
}

void SqliteKeyValueStore::open(Use use) {
  if (use == Use::readAndWrite) makeFile();
  const FilePlace place = use == Use::read ? FilePlace::dataToRead : FilePlace::dataFolder;
  const auto refuseFile = [&](int error) {
    throw StoreError(fileProblem(file_.string(), error, place));
  };
  struct stat found {};
  if (stat(file_.c_str(), &found) != 0) refuseFile(errno);
  if (S_ISDIR(found.st_mode)) refuseFile(EISDIR);
  if (!S_ISREG(found.st_mode)) throw StoreError(notRegular(file_));
  const auto allows = [this](int access) {
    return faccessat(AT_FDCWD, file_.c_str(), access, AT_EACCESS) == 0;
  };
  const bool isWritable = allows(R_OK | W_OK);
  if (!isWritable && (use == Use::readAndWrite || !allows(R_OK))) refuseFile(errno);

  connect(file_, isWritable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY);
}

void SqliteKeyValueStore::connect(const std::filesystem::path& file, int flags) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
  database_.reset(database);
  if (code != SQLITE_OK) refuse(code);
  sqlite3_extended_result_codes(database, 1);
}

bool SqliteKeyValueStore::canBeReadInPlace() {
  const char* look = "SELECT count(*) FROM sqlite_schema";
  const int code = sqlite3_exec(database_.get(), look, nullptr, nullptr, nullptr) & 0xff;
  return code != SQLITE_READONLY && code != SQLITE_CANTOPEN;
}

void SqliteKeyValueStore::openCopy() {
  namespace fs = std::filesystem;
  try {
    copy_ = std::make_unique<TemporaryFolder>();
    for (const char* part : {"", "-journal", "-wal"}) {
      const fs::path from = file_.string() + part;
      if (fs::exists(from)) fs::copy_file(from, copy_->path() / from.filename());
    }
  } catch (const fs::filesystem_error& error) {
    throw StoreError(dataProblem(file_, error.code().value()));
  }
  const fs::path copied = copy_->path() / fileName;
  fs::permissions(copied, fs::perms::owner_write, fs::perm_options::add);
  connect(copied, SQLITE_OPEN_READWRITE);
  run("PRAGMA query_only = ON");
}

void SqliteKeyValueStore::makeFile() {
  // The measurements are the user's own: nobody else reads them, whatever the folder allows. Only a
  // new file is touched here, since closing a store's file undoes its locks.
  const int created = ::open(file_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (created >= 0) {
    close(created);
  } else if (errno != EEXIST) {
    throw StoreError(dataProblem(file_, errno));
  }
}

void SqliteKeyValueStore::checkIdentity() {
  const auto isEmpty = [this] {
    return number("PRAGMA application_id") == 0 && number("PRAGMA user_version") == 0 &&
           number("SELECT count(*) FROM sqlite_schema") == 0;
  };
  if (isEmpty()) {
    run("BEGIN IMMEDIATE");
    // Another program may have come first.
    if (isEmpty()) create();
    run("COMMIT");
  }
  if (number("PRAGMA application_id") != applicationId) {
    throw StoreError(file_.string() +
                     ": not a Veyla store; move it away or choose another data folder");
  }
  const std::int64_t version = number("PRAGMA user_version");
  if (version > schemaVersion) {
    throw StoreError(file_.string() + ": made by a newer Veyla (store version " +
                     std::to_string(version) + "); use that one or choose another data folder");
  }
}

void SqliteKeyValueStore::create() {
  run(createTable);
  run(("PRAGMA application_id = " + std::to_string(applicationId)).c_str());
  run(("PRAGMA user_version = " + std::to_string(schemaVersion)).c_str());
}

void SqliteKeyValueStore::checkIntegrity() {
  const Statement shape = prepare(columns);
  if (!step(shape.get()) || columnText(shape.get(), 0) != expectedColumns) {
    throw StoreError(file_.string() + ": its table has another shape; " + damagedWayOut);
  }
  if (number(strangers) != 0) {
    throw StoreError(file_.string() + ": holds more than its table; " + damagedWayOut);
  }
  const Statement check = prepare("PRAGMA quick_check(1)");
  if (!step(check.get()) || columnText(check.get(), 0) != "ok") {
    throw StoreError(file_.string() + ": its pages contradict each other; " + damagedWayOut);
  }
}

SqliteKeyValueStore::Statement SqliteKeyValueStore::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(database_.get(), sql, -1, &statement, nullptr);
  if (code != SQLITE_OK) refuse(code);
  return Statement(statement);
}

bool SqliteKeyValueStore::step(sqlite3_stmt* statement) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) refuse(code);
  return code == SQLITE_ROW;
}

void SqliteKeyValueStore::run(const char* sql) {
  const Statement statement = prepare(sql);
  while (step(statement.get())) {
  }
}

std::int64_t SqliteKeyValueStore::number(const char* sql) {
  const Statement statement = prepare(sql);
  return step(statement.get()) ? sqlite3_column_int64(statement.get(), 0) : 0;
}

void SqliteKeyValueStore::refuse(int code) {
  const std::string name = file_.string();
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw StoreError(name + ": locked by another program; end that program or try again later");
    case SQLITE_FULL:
      throw StoreError(dataProblem(file_, ENOSPC));
    case SQLITE_NOTADB:
      throw StoreError(name +
                       ": not a Veyla store, or damaged at its start; move it away or choose "
                       "another data folder");
    case SQLITE_CORRUPT:
      throw StoreError(name + ": " + sqlite3_errstr(code) + "; " + damagedWayOut);
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      throw StoreError(name +
                       ": cannot be written; allow this user to write it and its folder, or choose "
                       "another data folder");
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
      if (database_ && sqlite3_system_errno(database_.get()) != 0) {
        throw StoreError(dataProblem(file_, sqlite3_system_errno(database_.get())));
      }
      break;
    default:
      break;
  }
  throw StoreError(name + ": " + (database_ ? sqlite3_errmsg(database_.get()) : "out of memory") +
                   "; check the disk or choose another data folder");
}

std::optional<SqliteKeyValueStore::Row> SqliteKeyValueStore::rowOf(const Value& value) {
  Row row{value.visit(TypeName{}), {}};
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
  const Resetting resetting(read_.get());
  bindText(read_.get(), 1, key);
  if (!step(read_.get())) return std::nullopt;
  auto value = valueOf(columnText(read_.get(), 0), columnText(read_.get(), 1));
  if (!value || (understands && !understands(key, *value))) {
    throw StoreError(aboutKey(key, "cannot be understood") + damagedWayOut);
  }
  return value;
}

void SqliteKeyValueStore::setValue(std::string_view key, const Value& value) {
  auto row = rowOf(value);
  if (!row || !isUtf8(key)) {
    fail(aboutKey(key, "is not saved: a text in it is not UTF-8, or it nests too deep") +
         "report this to the developers");
    return;
  }
  change(key, std::move(row));
}

void SqliteKeyValueStore::removeValue(std::string_view key) { change(key, std::nullopt); }

void SqliteKeyValueStore::change(std::string_view key, std::optional<Row> row) {
  if (unreadable_.contains(key)) {
    fail(aboutKey(key, "could not be read and is left as it is") + damagedWayOut);
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
    writePending();
    for (auto& [key, row] : pending_) written_.insert_or_assign(key, std::move(row));
    pending_.clear();
  } catch (const StoreError& error) {
    fail(error.what());
  }
}

void SqliteKeyValueStore::writePending() {
  for (const auto& [key, row] : pending_) {
    sqlite3_stmt* statement = row ? write_.get() : remove_.get();
    const Resetting resetting(statement);
    bindText(statement, 1, key);
    if (row) {
      bindText(statement, 2, row->type);
      bindText(statement, 3, row->text);
    }
    step(statement);
  }
}

/// False after a failure, which can have ended the transaction: what is written then would stand by
/// itself.
bool SqliteKeyValueStore::begin() {
  if (spoilt_ || hasBegun_) return !spoilt_;
  try {
    run("BEGIN IMMEDIATE");
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
  const auto undo = [&] {
    rollBack();
    pending_ = before;
  };
  spoilt_ = false;
  hasBegun_ = false;
  written_.clear();
  nesting_ = 1;
  bool isCommitting = false;
  try {
    changes();
    isCommitting = !spoilt_ && hasBegun_;
    if (isCommitting) run("COMMIT");
  } catch (const StoreError& error) {
    fail(error.what());
  } catch (...) {
    nesting_ = 0;
    undo();
    throw;
  }
  nesting_ = 0;
  if (spoilt_) undo();
  // The last step of a commit, after which it stands, may fail as well.
  const bool areStored = !spoilt_ || (isCommitting && isStoredAsWritten());
  if (gathers_ && hasBegun_ && gathered) gathered(areStored);
  return areStored;
}

bool SqliteKeyValueStore::isStoredAsWritten() {
  try {
    return std::all_of(written_.begin(), written_.end(), [this](const auto& change) {
      const auto& [key, row] = change;
      const Resetting resetting(read_.get());
      bindText(read_.get(), 1, key);
      if (!step(read_.get())) return !row;
      return row && columnText(read_.get(), 0) == row->type &&
             columnText(read_.get(), 1) == row->text;
    });
  } catch (const StoreError&) {
    return false;
  }
}

void SqliteKeyValueStore::rollBack() {
  // After some failures SQLite has done it already.
  if (sqlite3_get_autocommit(database_.get()) == 0) {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void SqliteKeyValueStore::fail(const std::string& line) {
  spoilt_ = true;
  if (!failure_) failure_ = line;
}

std::string SqliteKeyValueStore::aboutKey(std::string_view key, const char* what) const {
  return file_.string() + ": the value of \"" + std::string(key) + "\" " + what + "; ";
}

}  // namespace veyla
