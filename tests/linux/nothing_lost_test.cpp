#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <future>

#include "platform/linux/fhir_health_store.h"
#include "platform/linux/input_file.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/store_error.h"
#include "platform/linux/uuid.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

using Use = SqliteKeyValueStore::Use;

const ScratchFolder& scratch() {
  static const ScratchFolder folder;
  return folder;
}

/// The folder of a store whose last writer was killed in the middle of a change, as `journalMode`
/// leaves it; the change had not been made, or with a write-ahead log it had.
std::string killedWriter(const std::string& journalMode) {
  const std::string folder = scratch().file(journalMode);
  inChild([&]() -> std::string {
    std::make_unique<SqliteKeyValueStore>(folder)->setValue("email", "old");
    sqlite3* database = nullptr;
    sqlite3_open((folder + "/veyla.db").c_str(), &database);
    const std::string changes =
        "PRAGMA journal_mode = " + journalMode +
        "; PRAGMA cache_size = 1; BEGIN; UPDATE entries SET value = 'new'; " +
        (journalMode == "WAL" ? "COMMIT"
                              : "INSERT INTO entries SELECT value || 'x', 'text', "
                                "hex(zeroblob(100000)) FROM entries");
    sqlite3_exec(database, changes.c_str(), nullptr, nullptr, nullptr);
    raise(SIGKILL);
    return {};
  });
  return folder;
}

TEST(NothingLostTest, WhatAKilledWriterLeftIsReadWithoutPermissionToWrite) {
  for (const auto& [mode, kept] : {std::pair("DELETE", "old"), std::pair("WAL", "new")}) {
    SCOPED_TRACE(mode);
    const std::string folder = killedWriter(mode);
    const auto left = std::distance(fs::directory_iterator(folder), {});
    EXPECT_GT(left, 1) << "a journal beside the store";
    const std::string result = inChild([&]() -> std::string {
      const std::string disk = scratch().file("disk");
      fs::create_directory(disk);
      if (!mountDisk(disk, "size=4m")) return noMounts;
      for (const auto& file : fs::directory_iterator(folder)) {
        fs::copy_file(file, disk / file.path().filename());
      }
      if (!makeReadOnly(disk)) return noMounts;
      SqliteKeyValueStore store(disk, Use::read);
      const auto email = store.value("email");
      return email ? *email->text() : store.failure().value_or("nothing");
    });
    if (result == noMounts) GTEST_SKIP() << noMounts;
    EXPECT_EQ(result, kept);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), left);
  }
}

TEST(NothingLostTest, APipeInAFilesPlaceAndALockThatStaysAreToldInsteadOfWaitedFor) {
  const fs::path folder = scratch().file("piped");
  fs::create_directory(folder);
  const auto refusal = [&](const std::function<void()>& use) -> std::string {
    try {
      use();
    } catch (const StoreError& error) {
      return error.what();
    }
    return "done";
  };
  const auto readRecords = [&] {
    FhirHealthStore::contentsIn(folder, std::chrono::milliseconds(50));
  };
  const fs::path records = folder / FhirHealthStore::fileName;
  mkfifo(records.c_str(), 0600);
  EXPECT_THAT(refusal(readRecords), HasSubstr("Observations.ndjson: not a regular file; move"));
  const std::string store = folder / SqliteKeyValueStore::fileName;
  const auto openStore = [&] { SqliteKeyValueStore{folder}; };
  openStore();
  mkfifo((store + "-journal").c_str(), 0600);
  EXPECT_THAT(refusal(openStore), HasSubstr("veyla.db-journal: not a regular file; move"));
  fs::remove(store);
  mkfifo(store.c_str(), 0600);
  EXPECT_THAT(refusal(openStore), HasSubstr("veyla.db: not a regular file; move"));

  const std::string pipe = (folder / "pipe").string();
  mkfifo(pipe.c_str(), 0600);
  auto written = std::async(std::launch::async, [&]() -> std::string {
    try {
      OutputFile output(pipe);
    } catch (const OutputError& error) {
      return error.what();
    }
    return "done";
  });

  fs::remove(records);
  fs::remove(store);
  writeFile(records, "{\"broken");
  const fs::path aside = records.string() + FhirHealthStore::asideSuffix;
  const std::string foreign = scratch().write("foreign", "a letter");
  const auto mendRecords = [&] {
    MemoryKeyValueStore permissions;
    LibUuid uuids;
    FhirHealthStore health(folder, permissions, uuids, {});
  };
  mkfifo(aside.c_str(), 0600);
  EXPECT_THAT(refusal(mendRecords), HasSubstr(".damaged: not a regular file; move"));
  fs::remove(aside);
  fs::create_symlink(foreign, aside);
  EXPECT_THAT(refusal(mendRecords), HasSubstr(".damaged: not a regular file; move"));
  EXPECT_EQ(contentsOf(foreign), "a letter");
  EXPECT_EQ(contentsOf(records), "{\"broken");
  writeFile(records, "{}\n");
  const int holder = open(records.c_str(), O_RDONLY);
  flock(holder, LOCK_EX);
  EXPECT_THAT(refusal(readRecords), HasSubstr("locked by another program; end that program"));
  close(holder);
  EXPECT_EQ(refusal(readRecords), "done");
  EXPECT_EQ(written.get(), pipe + ": nobody reads this pipe; start what does first");
}

TEST(NothingLostTest, ARecordingIsNotBlamedForTooManyOpenFiles) {
  const std::string file = scratch().write("finger.csv", "time,R,G,B\n");
  const std::string reason = inChild([&]() -> std::string {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    try {
      requireInputFile(file);
    } catch (const InputError& error) {
      // The sanitizers open files of their own.
      setrlimit(RLIMIT_NOFILE, &files);
      return error.what();
    }
    return "read";
  });
  EXPECT_THAT(reason, HasSubstr("Too many open files; close other programs or raise the limit"));
}

TEST(NothingLostTest, AnOutputTakesNoOthersFileByALinkAndRemovesWhatTheKilledLeft) {
  const fs::path folder = scratch().file("outputs");
  fs::create_directory(folder);
  const std::string dead = inChild([] { return std::to_string(getpid()); });
  for (const std::string& name :
       {"a.csv.part" + dead, "a.csv.part" + dead + "-1", "a.csv.part" + std::to_string(getpid()),
        std::string("a.csv.party")}) {
    writeFile(folder / name, "half");
  }
  OutputFile output((folder / "a.csv").string());
  output.write("whole");
  output.commit();
  fs::remove(folder / ("a.csv.part" + std::to_string(getpid())));
  std::vector<std::string> names;
  for (const auto& file : fs::directory_iterator(folder)) names.push_back(file.path().filename());
  EXPECT_THAT(names, UnorderedElementsAre("a.csv", "a.csv.party"));

  // As root, of somebody else; as anybody else, of root.
  fs::path others = "/etc/passwd";
  if (geteuid() == 0) {
    others = folder / "others";
    writeFile(others, "theirs");
    ASSERT_EQ(chown(others.c_str(), 3, 3), 0);
  }
  fs::create_symlink(others, folder / "link");
  try {
    OutputFile file((folder / "link").string());
    ADD_FAILURE() << "followed the link";
  } catch (const OutputError& error) {
    EXPECT_THAT(error.what(), HasSubstr("link: a link to another user's file; name that file"));
  }
}

}  // namespace
}  // namespace veyla
