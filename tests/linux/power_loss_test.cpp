#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "platform/linux/sqlite_key_value_store.h"
#include "tests/linux/first_store.h"
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

using Histories = std::vector<Value::Array>;

/// Makes one history of another, with how long it is, by a program of its own, as by a command.
void keep(const std::filesystem::path& folder, const Value::Array& before,
          const Value::Array& history) {
  SqliteKeyValueStore store(folder);
  ASSERT_TRUE(store.exclusively([&] {
    if (history.size() == before.size() + 1) {
      store.append("values", history.back());
    } else {
      store.setValue("values", history);
    }
    store.setValue("count", static_cast<std::int64_t>(history.size()));
    store.synchronize();
  }));
}

/// A store of the first version.
void makeFirst(const std::filesystem::path& folder, const Value::Array& history) {
  sqlite3* database = nullptr;
  sqlite3_open((folder / SqliteKeyValueStore::fileName).c_str(), &database);
  const std::string sql = firstVersionOf(history) +
                          "; INSERT INTO entries VALUES ('count', 'integer', '" +
                          std::to_string(history.size()) + "')";
  ASSERT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
}

/// Lets the power go at every moment on the way from each history to the next. How often it went.
std::size_t losePower(Disk& disk, const std::filesystem::path& folder, const Histories& states) {
  struct Moment {
    Files files;
    std::size_t told;
  };
  std::vector<Moment> moments;
  std::size_t told = 0;
  disk.happens = [&] { moments.push_back({disk.files, told}); };
  while (told + 1 < states.size()) {
    keep(folder, states[told], states[told + 1]);
    ++told;
  }
  disk.happens();
  disk.happens = [] {};

  constexpr std::size_t variants = 12;
  std::mt19937 random(20);
  for (std::size_t i = 0; i < moments.size() * variants; ++i) {
    const Moment& moment = moments[i / variants];
    disk.files = afterPowerLoss(moment.files, random);
    SqliteKeyValueStore store(folder);
    const Value kept = store.value("values").value_or(Value::Array{});
    const auto count = static_cast<std::size_t>(store.value("count").value_or(0).int64Value());
    const auto next = std::min(moment.told + 1, states.size() - 1);
    EXPECT_TRUE(kept == Value(states[moment.told]) || kept == Value(states[next]))
        << kept.array()->size() << " entries at moment " << i / variants << " of " << moments.size()
        << " after " << moment.told << " changes";
    EXPECT_EQ(count, kept.array()->size()) << "half a change";
    if (testing::Test::HasFailure()) break;
  }
  return moments.size() * variants;
}

TEST(PowerLossTest, LosesNothingThatWasToldToBeSavedAndLeavesNothingHalf) {
  const ScratchFolder folder;
  Disk disk;
  const std::string entry(150, 'm');
  const auto measured = losePower(disk, folder.path(), {{}, {entry}, {entry, entry}});

  // A first version's is measured with, which makes it one of today's; restored, labelled, deleted
  // from, measured with.
  Histories states{Value::Array(60, entry), Value::Array(61, entry), Value::Array(200, entry)};
  states.push_back(states.back());
  states.back()[100] = "labelled";
  states.push_back(Value::Array(50, entry));
  states.push_back(Value::Array(51, entry));
  disk.files.clear();
  makeFirst(folder.path(), states.front());
  const auto changed = losePower(disk, folder.path(), states);
  EXPECT_GT(measured, 500U);
  EXPECT_GT(changed, 1500U);
  RecordProperty("losses", static_cast<int>(measured + changed));
}

}  // namespace
}  // namespace veyla
