#include "platform/linux/sqlite_file.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/data_folder.h"
#include "platform/linux/file_problem.h"
#include "platform/linux/temporary_folder.h"

namespace veyla {

namespace {

constexpr const char* damagedWayOut =
    "; the store is damaged; move the file away to start a new one, or restore a copy of it";

}  // namespace

void SqliteFile::Close::operator()(sqlite3* database) const { sqlite3_close(database); }
void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteFile::SqliteFile(std::filesystem::path file, Use use, std::chrono::milliseconds busyTimeout)
    : path_(std::move(file)) {
  open(use);
  sqlite3_busy_timeout(database_.get(), static_cast<int>(busyTimeout.count()));
  if (use == Use::read && !canBeReadInPlace()) openCopy();
}

SqliteFile::~SqliteFile() = default;

void SqliteFile::open(Use use) {
  if (use == Use::readAndWrite) make();
  const FilePlace place = use == Use::read ? FilePlace::dataToRead : FilePlace::dataFolder;
  const auto refuseFile = [&](int error) {
    throw StoreError(fileProblem(path_.string(), error, place));
  };
  struct stat found {};
  if (stat(path_.c_str(), &found) != 0) refuseFile(errno);
  if (S_ISDIR(found.st_mode)) refuseFile(EISDIR);
  if (!S_ISREG(found.st_mode)) throw StoreError(notRegular(path_));
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    const std::string beside = path_.string() + ending;
    if (stat(beside.c_str(), &found) == 0 && !S_ISREG(found.st_mode)) {
      throw StoreError(notRegular(beside));
    }
  }
  const auto allows = [this](int access) {
    return faccessat(AT_FDCWD, path_.c_str(), access, AT_EACCESS) == 0;
  };
  const bool isWritable = allows(R_OK | W_OK);
  if (!isWritable && (use == Use::readAndWrite || !allows(R_OK))) refuseFile(errno);

  connect(path_, isWritable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY);
}

void SqliteFile::connect(const std::filesystem::path& file, int flags) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
  database_.reset(database);
  if (code != SQLITE_OK) refuse(code);
  sqlite3_extended_result_codes(database, 1);
}

bool SqliteFile::canBeReadInPlace() {
  const char* look = "SELECT count(*) FROM sqlite_schema";
  const int code = sqlite3_exec(database_.get(), look, nullptr, nullptr, nullptr) & 0xff;
  // Whoever asks again waits again.
  if (code == SQLITE_BUSY) refuse(code);
  return code != SQLITE_READONLY && code != SQLITE_CANTOPEN;
}

void SqliteFile::openCopy() {
  namespace fs = std::filesystem;
  try {
    copy_ = std::make_unique<TemporaryFolder>();
    for (const char* part : {"", "-journal", "-wal"}) {
      const fs::path from = path_.string() + part;
      if (fs::exists(from)) fs::copy_file(from, copy_->path() / from.filename());
    }
  } catch (const fs::filesystem_error& error) {
    throw StoreError(dataProblem(path_, error.code().value()));
  }
  const fs::path copied = copy_->path() / path_.filename();
  fs::permissions(copied, fs::perms::owner_write, fs::perm_options::add);
  connect(copied, SQLITE_OPEN_READWRITE);
  run("PRAGMA query_only = ON");
}

void SqliteFile::make() {
  // The measurements are the user's own: nobody else reads them, whatever the folder allows. Only a
  // new file is touched here, since closing a store's file undoes its locks.
  const int created = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (created >= 0) {
    close(created);
  } else if (errno != EEXIST) {
    throw StoreError(dataProblem(path_, errno));
  }
}

void SqliteFile::run(const std::string& sql) {
  SqliteStatement statement(*this, sql.c_str());
  while (statement.step()) {
  }
}

std::int64_t SqliteFile::number(const char* sql) {
  SqliteStatement statement(*this, sql);
  return statement.step() ? statement.number(0) : 0;
}

bool SqliteFile::isInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }

void SqliteFile::rollBack() {
  if (isInTransaction()) sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

StoreError SqliteFile::damaged(const std::string& what) const {
  return StoreError(path_.string() + ": " + what + damagedWayOut);
}

void SqliteFile::refuse(int code) const {
  const std::string name = path_.string();
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw StoreError(name + ": locked by another program; end that program or try again later");
    case SQLITE_FULL:
      throw StoreError(dataProblem(path_, ENOSPC));
    case SQLITE_NOTADB:
      throw StoreError(name +
                       ": not a Veyla store, or damaged at its start; move it away or choose "
                       "another data folder");
    case SQLITE_CORRUPT:
      throw damaged(sqlite3_errstr(code));
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      throw StoreError(name +
                       ": cannot be written; allow this user to write it and its folder, or choose "
                       "another data folder");
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
      if (database_ && sqlite3_system_errno(database_.get()) != 0) {
        throw StoreError(dataProblem(path_, sqlite3_system_errno(database_.get())));
      }
      break;
    default:
      break;
  }
  throw StoreError(name + ": " + (database_ ? sqlite3_errmsg(database_.get()) : "out of memory") +
                   "; check the disk or choose another data folder");
}

SqliteStatement::SqliteStatement(const SqliteFile& file, const char* sql) : file_(file) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(file.database_.get(), sql, -1, &statement, nullptr);
  if (code != SQLITE_OK) file.refuse(code);
  statement_.reset(statement);
}

SqliteStatement& SqliteStatement::bind(int parameter, std::string_view text) {
  // Without a pointer it would be NULL and not empty.
  const char* bytes = text.empty() ? "" : text.data();
  sqlite3_bind_text64(statement_.get(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
  return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, std::int64_t number) {
  sqlite3_bind_int64(statement_.get(), parameter, number);
  return *this;
}

bool SqliteStatement::step() {
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) file_.refuse(code);
  return code == SQLITE_ROW;
}

void SqliteStatement::reset() { sqlite3_reset(statement_.get()); }

std::string_view SqliteStatement::text(int column) const {
  const void* bytes = sqlite3_column_blob(statement_.get(), column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
  return {static_cast<const char*>(bytes), bytes ? size : 0};
}

std::int64_t SqliteStatement::number(int column) const {
  sqlite3_stmt* statement = statement_.get();
  const bool isInteger = sqlite3_column_type(statement, column) == SQLITE_INTEGER;
  return isInteger ? sqlite3_column_int64(statement, column) : 0;
}

SqliteSnapshot::SqliteSnapshot(SqliteFile& file) : file_(file), isOwn_(!file.isInTransaction()) {
  if (isOwn_) file_.run("BEGIN");
}

SqliteSnapshot::~SqliteSnapshot() {
  if (isOwn_) file_.rollBack();
}

}  // namespace veyla
