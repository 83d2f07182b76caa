#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <vector>

#include "apps/cli/backup_command.h"
#include "apps/cli/demo_history_command.h"
#include "apps/cli/health_command.h"
#include "apps/cli/history_command.h"
#include "apps/cli/measure_command.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

/// A change of a file that nobody has synchronized: bytes at a place, or without any a new size.
struct Change {
  std::size_t at;
  std::string bytes;
};

void apply(std::string& contents, const Change& change) {
  if (change.bytes.empty()) return contents.resize(change.at);
  contents.resize(std::max(contents.size(), change.at + change.bytes.size()));
  contents.replace(change.at, change.bytes.size(), change.bytes);
}

struct File {
  std::string seen;
  std::string onDisk;
  std::vector<Change> unsynced;
  /// Whether the folder on the disk knows its name.
  bool isNamed = false;
  /// The folder on the disk may still know it.
  bool isDeleted = false;
};
using Files = std::map<std::string, File>;

/// What a power loss leaves: of what was not synchronized anything, in any order and torn.
Files afterPowerLoss(const Files& files, std::mt19937& random) {
  const auto oneIn = [&](unsigned count) { return random() % count == 0; };
  const bool losesAll = oneIn(4);
  const bool losesNone = !losesAll && oneIn(3);
  const auto isLost = [&] { return losesAll || (!losesNone && oneIn(2)); };
  Files left;
  for (const auto& [name, file] : files) {
    if (file.isDeleted ? !isLost() : !file.isNamed && isLost()) continue;
    std::vector<Change> changes;
    for (const Change& change : file.unsynced) {
      constexpr std::size_t sector = 512;
      for (std::size_t at = 0; at == 0 || at < change.bytes.size(); at += sector) {
        if (!isLost()) changes.push_back({change.at + at, change.bytes.substr(at, sector)});
      }
    }
    if (!losesNone) std::shuffle(changes.begin(), changes.end(), random);
    std::string contents = file.onDisk;
    for (const Change& change : changes) apply(contents, change);
    left[name] = {contents, contents, {}, true, false};
  }
  return left;
}

/// SQLite's way to the disk, in whose place is one in memory. Everything that reaches it is a
/// moment at which the power may go.
class Disk {
 public:
  Disk() {
    system_ = sqlite3_vfs_find(nullptr);
    vfs_ = *system_;
    vfs_.zName = "power_loss";
    vfs_.szOsFile = sizeof(Handle);
    vfs_.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* file, int, int* flags) {
      current->files[name].isDeleted = false;
      if (flags) *flags = SQLITE_OPEN_READWRITE;
      auto* handle = reinterpret_cast<Handle*>(file);
      handle->base.pMethods = &methods;
      handle->name = name;
      return SQLITE_OK;
    };
    vfs_.xDelete = [](sqlite3_vfs*, const char* name, int syncsFolder) {
      current->happens();
      File& file = current->files[name];
      file.isDeleted = true;
      file.seen.clear();
      if (syncsFolder != 0) current->synchronizeFolder();
      return SQLITE_OK;
    };
    vfs_.xAccess = [](sqlite3_vfs*, const char* name, int, int* exists) {
      const auto found = current->files.find(name);
      *exists = found != current->files.end() && !found->second.isDeleted;
      return SQLITE_OK;
    };
    sqlite3_vfs_register(&vfs_, 1);
    current = this;
  }
  ~Disk() {
    sqlite3_vfs_unregister(&vfs_);
    sqlite3_vfs_register(system_, 1);
  }

  Files files;
  std::function<void()> happens = [] {};

 private:
  struct Handle {
    sqlite3_file base;
    const char* name;
  };

  static File& fileOf(sqlite3_file* handle) {
    return current->files[reinterpret_cast<Handle*>(handle)->name];
  }
  static void change(sqlite3_file* handle, const Change& change) {
    current->happens();
    File& file = fileOf(handle);
    apply(file.seen, change);
    file.unsynced.push_back(change);
  }
  void synchronizeFolder() {
    std::erase_if(files, [](const auto& file) { return file.second.isDeleted; });
    for (auto& [name, file] : files) file.isNamed = true;
  }
  static sqlite3_io_methods makeMethods();

  static inline Disk* current = nullptr;
  static const sqlite3_io_methods methods;
  sqlite3_vfs* system_;
  sqlite3_vfs vfs_;
};

sqlite3_io_methods Disk::makeMethods() {
  sqlite3_io_methods made{};
  made.iVersion = 1;
  made.xClose = [](sqlite3_file*) { return SQLITE_OK; };
  made.xRead = [](sqlite3_file* handle, void* to, int count, sqlite3_int64 at) {
    const std::string& seen = fileOf(handle).seen;
    const auto start = std::min(seen.size(), static_cast<std::size_t>(at));
    const auto size = static_cast<std::size_t>(count);
    const std::string bytes = seen.substr(start, size);
    std::fill_n(std::copy(bytes.begin(), bytes.end(), static_cast<char*>(to)), size - bytes.size(),
                '\0');
    return bytes.size() == size ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
  };
  made.xWrite = [](sqlite3_file* handle, const void* bytes, int count, sqlite3_int64 at) {
    change(handle, {static_cast<std::size_t>(at),
                    std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count))});
    return SQLITE_OK;
  };
  made.xTruncate = [](sqlite3_file* handle, sqlite3_int64 size) {
    change(handle, {static_cast<std::size_t>(size), {}});
    return SQLITE_OK;
  };
  made.xSync = [](sqlite3_file* handle, int) {
    current->happens();
    File& file = fileOf(handle);
    file.onDisk = file.seen;
    file.unsynced.clear();
    // As on this system: with a new file's first synchronization its folder's comes.
    if (!file.isNamed) current->synchronizeFolder();
    return SQLITE_OK;
  };
  made.xFileSize = [](sqlite3_file* handle, sqlite3_int64* size) {
    *size = static_cast<sqlite3_int64>(fileOf(handle).seen.size());
    return SQLITE_OK;
  };
  made.xLock = made.xUnlock = [](sqlite3_file*, int) { return SQLITE_OK; };
  made.xCheckReservedLock = [](sqlite3_file*, int* isReserved) {
    *isReserved = 0;
    return SQLITE_OK;
  };
  made.xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; };
  made.xSectorSize = [](sqlite3_file*) { return 4096; };
  made.xDeviceCharacteristics = [](sqlite3_file*) { return SQLITE_IOCAP_POWERSAFE_OVERWRITE; };
  return made;
}
const sqlite3_io_methods Disk::methods = makeMethods();

/// What was measured, as SQLite itself reads it. How often the program was used is counted by
/// itself, so that no measurement hangs on it.
std::string contents(SqliteFile& file) {
  std::string contents;
  SqliteStatement tables(file, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY 1");
  while (tables.step()) {
    const std::string all =
        "SELECT * FROM " + std::string(tables.text(0)) +
        " WHERE key NOT LIKE 'rating%' AND key NOT LIKE '%version' ORDER BY 1, 2";
    SqliteStatement rows(file, all.c_str());
    while (rows.step()) {
      for (int column : {0, 1, 2}) contents.append(rows.text(column)).append("|");
    }
  }
  return contents;
}

class PowerLossTest : public testing::Test {
 protected:
  using Command = std::function<ExitStatus()>;

  PowerLossTest() {
    // An empty file would pass for a store that nobody has written yet.
    writeFile(store_, "what it holds is on the disk in memory");
  }

  static void run(const Command& command) {
    testing::internal::CaptureStdout();
    const ExitStatus status = command();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, ExitStatus::done);
  }

  std::string contentsOnDisk() const {
    SqliteFile file(store_, SqliteFile::Use::readAndWrite, std::chrono::seconds{1});
    return contents(file);
  }

  HistoryOptions history() const {
    HistoryOptions options;
    options.dataFolder = folder_.path().string();
    return options;
  }
  ExitStatus measure() const {
    MeasureOptions options;
    options.dataFolder = folder_.path().string();
    return runMeasure(options);
  }
  /// The history in one row, as the first version had it.
  void turnIntoFirstVersion() const {
    SqliteFile file(store_, SqliteFile::Use::readAndWrite, std::chrono::seconds{1});
    for (const char* sql :
         {"PRAGMA synchronous = EXTRA", "BEGIN",
          "UPDATE entries SET type = 'array', value = (SELECT '[' || group_concat(value, ',' || "
          "char(10)) || ']' FROM parts) WHERE key = 'values'",
          "DROP TABLE parts", "PRAGMA user_version = 1", "COMMIT"}) {
      file.run(sql);
    }
  }

  /// Lets the power go at every moment of each command, and once more at every moment at which
  /// what it left is mended. How often it went.
  std::size_t losePower(const std::vector<Command>& commands) {
    struct Moment {
      Files files;
      std::size_t done;
    };
    std::vector<Moment> moments;
    std::vector<std::string> states{contentsOnDisk()};
    for (const Command& command : commands) {
      disk_.happens = [&] { moments.push_back({disk_.files, states.size() - 1}); };
      run(command);
      disk_.happens = [] {};
      states.push_back(contentsOnDisk());
      EXPECT_NE(states.back(), states[states.size() - 2]);
    }
    moments.push_back({disk_.files, commands.size()});

    constexpr std::size_t variants = 6;
    std::mt19937 random(20);
    std::size_t losses = 0;
    const auto look = [&](const Moment& moment, const char* when) {
      ++losses;
      disk_.files = afterPowerLoss(moment.files, random);
      const std::string kept = contentsOnDisk();
      const std::string& next = states[std::min(moment.done + 1, commands.size())];
      EXPECT_TRUE(kept == states[moment.done] || kept == next)
          << when << ", after " << moment.done << " commands: " << kept;
    };
    for (std::size_t i = 0; i < moments.size() * variants && !HasFailure(); ++i) {
      std::vector<Moment> mending;
      disk_.happens = [&] { mending.push_back({disk_.files, moments[i / variants].done}); };
      look(moments[i / variants], "lost within");
      disk_.happens = [] {};
      for (const Moment& moment : mending) look(moment, "lost once more while it was mended");
    }
    return losses;
  }

  const ScratchFolder folder_;
  const std::string store_ = folder_.file(std::string(SqliteKeyValueStore::fileName));
  Disk disk_;
};

TEST_F(PowerLossTest, EachCommandIsDoneOrNotAndStaysDoneOnceItHasTold) {
  HealthOptions spo2;
  spo2.dataFolder = folder_.path().string();
  spo2.type = "spo2";
  const auto measured =
      losePower({[&] { return runHealthAllow(spo2, true); }, [&] { return measure(); },
                 [&] { return measure(); }, [&] { return runHealthAllow(spo2, false); }});

  disk_.files.clear();
  DemoHistoryOptions demo;
  demo.dataFolder = folder_.path().string();
  EXPECT_GT(losePower({[&] { return runDemoHistory(demo); }}), 50U);
  HistoryOptions backup = history();
  backup.output = backup.input = folder_.file("backup.json");
  run([&] { return runHistoryBackup(backup); });
  turnIntoFirstVersion();
  HistoryOptions label = history();
  label.number = 1;
  label.label = "Working";
  HistoryOptions some = history();
  some.numbers = {1, 50, 51, 52, 90};
  const auto changed =
      losePower({[&] { return measure(); }, [&] { return runHistoryLabel(label); },
                 [&] { return runHistoryDelete(some); }, [&] { return runHistoryRestore(backup); },
                 [&] { return measure(); }});
  EXPECT_GT(measured, 700U);
  EXPECT_GT(changed, 2000U);
  RecordProperty("losses", static_cast<int>(measured + changed));
}

}  // namespace
}  // namespace veyla
