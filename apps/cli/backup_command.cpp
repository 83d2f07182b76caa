#include "apps/cli/backup_command.h"

#include "apps/cli/complain.h"
#include "apps/cli/history_platform.h"
#include "apps/cli/kept_store.h"
#include "history/backup.h"
#include "history/history_store.h"
#include "platform/linux/input_file.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/store_error.h"

namespace veyla {

namespace {

void requireNoFailure(const SqliteKeyValueStore& store, const char* before = "") {
  if (store.failure()) throw StoreError(before + *store.failure());
}

ExitStatus backUp(const HistoryOptions& options) {
  const auto stored = openKeptStore(options.dataFolder, SqliteKeyValueStore::Use::read);
  // A history that is no list is no empty one.
  if (stored) stored->understands = Utils::mayStand;
  MemoryKeyValueStore empty;
  const HistoryPlatform platform(stored ? static_cast<KeyValueStore&>(*stored) : empty);
  const Backup backup = currentBackup();
  if (stored) requireNoFailure(*stored);
  const auto text = textOf(backup);
  if (!text) {
    throw StoreError((dataFolderOf(options.dataFolder) / SqliteKeyValueStore::fileName).string() +
                     ": an entry holds what no backup can; copy the file itself");
  }
  OutputFile output(options.output, Readers::ownerAlone);
  output.write(*text + "\n");
  output.commit();
  if (backup.damaged > 0) {
    complain(leftOut(backup) + "; veyla history tells which");
    return ExitStatus::unreadableInput;
  }
  if (backup.entries.empty()) complain("no measurements yet: the backup holds none");
  return ExitStatus::done;
}

/// From a file, or from standard input as "-". Throws `InputError` for what is no backup.
Backup readFrom(const std::string& path) {
  const bool isPiped = path == "-";
  if (!isPiped) requireInputFile(path);
  const std::string text = readInputFile(isPiped ? "/dev/stdin" : path);
  MemoryKeyValueStore empty;
  const HistoryPlatform platform(empty);
  std::string fault;
  auto backup = readBackup(text, fault);
  if (!backup) throw InputError((isPiped ? "standard input" : path) + ": " + fault);
  return *std::move(backup);
}

ExitStatus bringBack(const HistoryOptions& options) {
  const Backup backup = readFrom(options.input);
  SqliteKeyValueStore store(dataFolderOf(options.dataFolder));
  store.understands = Utils::mayStand;
  const HistoryPlatform platform(store);
  const auto count = restore(backup);
  if (!count) requireNoFailure(store);
  const auto written = [&] { printOut(told(count.value()) + "\n"); };
  const bool isTold = writes(written, "done, but ");
  // The last step of what stands may fail as well.
  requireNoFailure(store, "done, but ");
  return isTold ? ExitStatus::done : ExitStatus::unwritableData;
}

}  // namespace

ExitStatus runHistoryBackup(const HistoryOptions& options) {
  return exitStatusOf([&] { return backUp(options); });
}
ExitStatus runHistoryRestore(const HistoryOptions& options) {
  return exitStatusOf([&] { return bringBack(options); });
}

}  // namespace veyla
