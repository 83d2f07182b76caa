#include "platform/linux/sqlite_key_value_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

#include "platform/linux/data_folder.h"
#include "platform/linux/store_error.h"
#include "platform/portable/json.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using Array = Value::Array;
using Dictionary = Value::Dictionary;

Value entry(double hr) {
  return Dictionary{
      {"hr", hr}, {"date", Date{1709640427.123 + hr}}, {"labels", Array{false, true}}};
}

Value history(int count) {
  Array entries;
  for (int i = 0; i < count; ++i) entries.push_back(entry(i));
  return entries;
}

void append(KeyValueStore& store, const Value& added) {
  store.exclusively([&] {
    store.append("values", added);
    store.synchronize();
  });
}

std::size_t entryCount(KeyValueStore& store) {
  const auto stored = store.value("values");
  return stored && stored->array() ? stored->array()->size() : 0;
}

class SqliteKeyValueStoreTest : public testing::Test {
 protected:
  std::filesystem::path folder() const { return scratch_.path(); }
  std::filesystem::path file() const { return folder() / SqliteKeyValueStore::fileName; }

  /// Works on the file as another program does.
  std::string other(const std::string& sql) const {
    sqlite3* database = nullptr;
    sqlite3_open(file().c_str(), &database);
    std::string result;
    const auto collect = [](void* text, int count, char** columns, char**) {
      for (int i = 0; i < count; ++i) {
        *static_cast<std::string*>(text) += std::string(columns[i] ? columns[i] : "NULL") + ";";
      }
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), collect, &result, nullptr), SQLITE_OK) << sql;
    sqlite3_close(database);
    return result;
  }

  void make() const { append(*std::make_unique<SqliteKeyValueStore>(folder()), entry(72)); }

  static constexpr auto readAndWrite = SqliteKeyValueStore::Use::readAndWrite;
  std::string refusal(const std::filesystem::path& of) const {
    try {
      SqliteKeyValueStore store(of, readAndWrite, 50ms);
    } catch (const StoreError& error) {
      EXPECT_THAT(error.what(), HasSubstr(folder().string()));
      return error.what();
    }
    return "opened";
  }
  std::string refusal() const { return refusal(folder()); }

  ScratchFolder scratch_;
};

TEST_F(SqliteKeyValueStoreTest, EveryTypeComesBackFromTheFile) {
  const Dictionary values{{"a", true},
                          {"b", std::numeric_limits<std::int64_t>::min()},
                          {"c", 97.1F},
                          {"d", 72.0},
                          {"e", "Zoë's \"mail\"\n"},
                          {"f", Date{1709640427.0625}},
                          {"g", history(3)},
                          {"h", Dictionary{{"$date", 1}}},
                          {"i", Value()},
                          {"j", -std::numeric_limits<double>::infinity()}};
  auto store = std::make_unique<SqliteKeyValueStore>(folder());
  for (const auto& [key, value] : values) store->setValue(key, value);
  // Closing flushes.
  store = std::make_unique<SqliteKeyValueStore>(folder());
  for (const auto& [key, value] : values) EXPECT_EQ(store->value(key), value) << key;
  EXPECT_EQ(store->value("k"), std::nullopt);
  store->removeValue("a");
  store->synchronize();
  EXPECT_EQ(store->failure(), std::nullopt);
  EXPECT_EQ(other("SELECT key, type, value FROM entries WHERE key IN ('a', 'c', 'd', 'f')"),
            "c;float;97.1;d;double;72.0;f;date;1709640427.0625;");
}

// Any changes in any order: tests/fuzz/store.cpp.
TEST_F(SqliteKeyValueStoreTest, AListIsWhatChangesAtItsEndsAndAtOnePlaceHaveMadeOfIt) {
  SqliteKeyValueStore store(folder());
  const auto becomes = [&](const Array& next) {
    store.setValue("values", next);
    store.synchronize();
    return store.value("values") == Value(next);
  };
  // The end of one is the other.
  for (const int number : {2, 12, 21, 1}) EXPECT_TRUE(becomes({number})) << number;
  // At one place until there is no number left between the rows.
  Array list;
  for (int i = 0; i < 16; ++i) {
    list.insert(list.begin() + (i > 0), std::string(3000, static_cast<char>('a' + i)));
    EXPECT_TRUE(becomes(list)) << i;
  }

  store.setValue("values", 5);
  store.synchronize();
  EXPECT_EQ(store.value("values"), 5);
  EXPECT_EQ(other("SELECT count(*) FROM parts"), "0;");
}

TEST_F(SqliteKeyValueStoreTest, ALocalChangeOfALongListChangesFewPages) {
  SqliteKeyValueStore store(folder());
  Array list = *history(20000).array();
  const auto pagesChangedBy = [&](const std::function<void()>& change) {
    const std::string before = contentsOf(file());
    change();
    store.setValue("values", list);
    store.synchronize();
    const std::string after = contentsOf(file());
    std::size_t changed = 0;
    for (std::size_t at = 0; at < after.size(); at += 4096) {
      changed += before.compare(std::min(at, before.size()), 4096, after, at, 4096) != 0;
    }
    return changed;
  };
  EXPECT_GT(pagesChangedBy([] {}), 300U);
  const auto middle = list.begin() + 10000;
  EXPECT_LT(pagesChangedBy([&] { *middle = entry(7); }), 3U) << "and the head of the file";
  EXPECT_LT(pagesChangedBy([&] { *middle = std::string(3000, 'x'); }), 8U) << "a row becomes two";
  EXPECT_LT(pagesChangedBy([&] { list.erase(middle, middle + 2); }), 8U);
  EXPECT_LT(pagesChangedBy([&] { append(store, list.emplace_back(entry(8))); }), 5U);
}

TEST_F(SqliteKeyValueStoreTest, AStoreOfTheFirstVersionIsReadAsItIsAndBecomesOneOfToday) {
  other(
      "CREATE TABLE entries (key TEXT PRIMARY KEY NOT NULL, type TEXT NOT NULL, value TEXT NOT "
      "NULL); PRAGMA application_id = 0x56594C41; PRAGMA user_version = 1; "
      "INSERT INTO entries VALUES ('values', 'array', '" +
      writeJson(history(20000)).value_or("") + "')");
  const std::string before = contentsOf(file());
  SqliteKeyValueStore reading(folder(), SqliteKeyValueStore::Use::read);
  EXPECT_TRUE(reading.value("values") == history(20000));
  SqliteKeyValueStore store(folder());
  EXPECT_EQ(entryCount(store), 20000U);
  store.setValue("email", "a@b.c");
  store.synchronize();
  EXPECT_EQ(other("PRAGMA user_version"), "1;") << "as long as no list is written";

  append(store, entry(20000));
  EXPECT_EQ(other("PRAGMA user_version"), "2;");
  for (SqliteKeyValueStore* opened : {&store, &reading}) {
    EXPECT_TRUE(opened->value("values") == history(20001));
    EXPECT_EQ(opened->failure(), std::nullopt);
  }
  EXPECT_LT(contentsOf(file()).size(), before.size() * 11 / 10) << "takes no more room";
}

TEST_F(SqliteKeyValueStoreTest, WhatOthersHaveDoneToAListIsReadOrToldAndNotWrittenOver) {
  const std::pair<const char*, const char*> cases[] = {
      // A row that is missing, or another's, is what there is.
      {"DELETE FROM parts WHERE number = 2048", "60 entries, then 61"},
      {"UPDATE parts SET value = CAST(value AS BLOB) WHERE number = 2048", "100 entries, then 101"},
      // A damaged row has damaged elements.
      {"UPDATE parts SET value = '}' || value WHERE number = 2048", "100 entries, then 101"},
      {"UPDATE parts SET value = '' WHERE number = 2048", "are empty or not"},
      {"UPDATE parts SET number = number || 'x' WHERE number = 2048", "not numbered in order"},
      {"DELETE FROM entries", "cannot be understood"},
      {"UPDATE entries SET type = 'integer', value = 5", "cannot be understood"},
  };
  for (const auto& [sql, expected] : cases) {
    SCOPED_TRACE(sql);
    std::make_unique<SqliteKeyValueStore>(folder())->setValue("values", history(100));
    other(sql);
    const std::string before = other("SELECT * FROM parts");
    SqliteKeyValueStore store(folder());
    const auto first = std::to_string(entryCount(store));
    append(store, entry(1));
    append(store, entry(1));
    const auto then = std::to_string(entryCount(store) - 1);
    EXPECT_THAT(store.failure().value_or(first + " entries, then " + then), HasSubstr(expected));
    EXPECT_EQ(other("SELECT * FROM parts") == before, store.failure().has_value());
    std::filesystem::remove(file());
  }
}

TEST_F(SqliteKeyValueStoreTest, AFlushOrWhatBelongsTogetherIsOneTransaction) {
  SqliteKeyValueStore store(folder());
  SqliteKeyValueStore elsewhere(folder(), readAndWrite, 50ms);
  store.setValue("UUID", "A");
  EXPECT_EQ(store.value("UUID"), "A");
  EXPECT_EQ(elsewhere.value("UUID"), std::nullopt);
  store.synchronize();
  EXPECT_EQ(elsewhere.value("UUID"), "A");

  store.exclusively([&] {
    append(store, entry(1));
    // Not even read what will not be so any more when it writes.
    EXPECT_FALSE(elsewhere.exclusively([&] { entryCount(elsewhere); }));
    EXPECT_EQ(entryCount(store), 1U);
    EXPECT_EQ(entryCount(elsewhere), 0U);
    append(store, entry(2));
  });
  EXPECT_EQ(entryCount(elsewhere), 2U);
  const auto changeItsMind = [&] {
    append(store, entry(3));
    throw std::runtime_error("changed its mind");
  };
  EXPECT_THROW(store.exclusively(changeItsMind), std::runtime_error);
  EXPECT_EQ(entryCount(store), 2U);
  append(store, entry(4));
  EXPECT_EQ(entryCount(elsewhere), 3U);
}

TEST_F(SqliteKeyValueStoreTest, AStoreThatIsLockedIsNamedAndLeftAlone) {
  make();
  SqliteKeyValueStore store(folder(), readAndWrite, 50ms);
  sqlite3* holder = nullptr;
  sqlite3_open(file().c_str(), &holder);
  EXPECT_EQ(sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_THAT(refusal(), HasSubstr("locked by another program"));
  EXPECT_EQ(store.value("values"), std::nullopt);
  EXPECT_THAT(store.failure().value_or(""), HasSubstr("locked by another program"));
  append(store, entry(2));
  sqlite3_close(holder);

  // What could not be read was taken for nothing: it must not be overwritten by that.
  store.setValue("values", Array{});
  store.synchronize();
  EXPECT_EQ(entryCount(store), 1U);
  append(store, entry(3));
  EXPECT_EQ(entryCount(store), 2U) << "and can be written once it has been read";
}

TEST_F(SqliteKeyValueStoreTest, WhatWasGatheredIsGivenUpWithItsTransaction) {
  make();
  SqliteKeyValueStore store(folder(), readAndWrite, 50ms);
  std::vector<bool> told;
  store.gatherChanges();
  store.gathered = [&](bool areStored) { told.push_back(areStored); };
  const auto put = [&](const char* key) {
    store.setValue(key, 72);
    store.synchronize();
  };
  store.exclusively([&] { put("last"); });
  sqlite3* holder = nullptr;
  sqlite3_open(file().c_str(), &holder);
  EXPECT_EQ(sqlite3_exec(holder, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  append(store, entry(2));
  sqlite3_close(holder);
  store.exclusively([&] { store.value("uses"), put("uses"); });
  EXPECT_EQ(store.value("last"), std::nullopt);
  store.exclusively([&] { put("last"); });
  append(store, entry(3));
  EXPECT_EQ(store.value("last"), 72);
  EXPECT_EQ(told, (std::vector<bool>{false, true, true}));
}

TEST_F(SqliteKeyValueStoreTest, EveryKindOfWrongFileIsNamed) {
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"a folder stands where a file must be", [&] { std::filesystem::create_directory(file()); }},
      {"not a Veyla store", [&] { writeFile(file(), std::string(5000, 'x')); }},
      {"not a Veyla store",
       [&] { other("CREATE TABLE entries (key TEXT); PRAGMA application_id = 7"); }},
      {"newer Veyla", [&] { make(), other("PRAGMA user_version = 3"); }},
      {"another shape", [&] { make(), other("ALTER TABLE entries ADD COLUMN extra TEXT"); }},
      {"more than its tables", [&] { make(), other("PRAGMA user_version = 1"); }},
      {"more than its tables",
       [&] {
         make();
         other("CREATE TRIGGER t AFTER UPDATE ON entries BEGIN DELETE FROM entries; END");
       }},
      {"damaged", [&] { make(), std::filesystem::resize_file(file(), 4096); }},
      {"damaged", [&] {
         std::make_unique<SqliteKeyValueStore>(folder())->setValue("values", history(2000));
         std::fstream stream(file(), std::ios::in | std::ios::out | std::ios::binary);
         stream.seekp(4096);
         for (int i = 0; i < 3 * 4096; ++i) stream.put(static_cast<char>(i * 37));
       }}};
  for (const auto& [reason, spoil] : cases) {
    spoil();
    EXPECT_THAT(refusal(), HasSubstr(reason));
    std::filesystem::remove(file());
  }
  other("PRAGMA journal_mode = WAL; CREATE TABLE entries (key TEXT); PRAGMA application_id = 7");
  refusal();
  EXPECT_EQ(other("PRAGMA journal_mode"), "wal;") << "another program's file is left as it is";
  EXPECT_THAT(refusal(file() / "veyla"), HasSubstr("veyla.db: a file stands where"));
}

TEST_F(SqliteKeyValueStoreTest, AReadOnlyDiskIsNamed) {
  const std::string result = inChild([&]() -> std::string {
    if (!mountDisk(folder(), "size=1m")) return noMounts;
    make();
    if (!makeReadOnly(folder())) return noMounts;
    SqliteKeyValueStore store(folder(), SqliteKeyValueStore::Use::read);
    const auto count = entryCount(store);
    append(store, entry(2));
    return refusal() + "; read: " + std::to_string(count) + "; " + store.failure().value_or("");
  });
  if (result == noMounts) GTEST_SKIP() << noMounts;
  EXPECT_THAT(result, testing::ContainsRegex("Read-only file system; choose a data folder.*; "
                                             "read: 1; .*veyla.db: cannot be written; allow"));
}

TEST_F(SqliteKeyValueStoreTest, AFullDiskLeavesTheOldContents) {
  const auto fill = [&] {
    SqliteKeyValueStore store(folder());
    append(store, entry(1));
    store.exclusively([&] {
      // More than is kept in memory until the end.
      store.setValue("values", history(40000));
      store.synchronize();
      // Also what would fit goes with the rest.
      store.setValue("values", history(3));
      store.synchronize();
    });
    const auto count = std::to_string(entryCount(store));
    append(store, entry(2));
    return store.failure().value_or("") + " " + count + " " + std::to_string(entryCount(store));
  };
  EXPECT_THAT(onSmallDisk(262144, fill),
              HasSubstr("veyla.db: larger than the system allows; raise the limit on a file's size "
                        "or choose another data folder 1 2"));
  std::filesystem::remove(file());
  const std::string result =
      inChild([&] { return mountDisk(folder(), "size=256k") ? fill() : noMounts; });
  if (result == noMounts) GTEST_SKIP() << noMounts;
  EXPECT_THAT(result, HasSubstr("the disk is full; free some space and try again 1 2"));
}

}  // namespace
}  // namespace veyla
