#include "apps/cli/demo_history_command.h"

#include <vector>

#include "apps/cli/history_platform.h"
#include "history/history_store.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/no_sharing.h"
#include "platform/linux/output_file.h"
#include "platform/linux/sqlite_key_value_store.h"

namespace veyla {

namespace {

/// Most days with one entry, some with two or none, a few of the values not measured.
std::vector<HistoryEntry> randomEntries(std::int32_t days) {
  MemoryKeyValueStore store;
  NoSharing sharing;
  const HistoryPlatform platform(store, sharing);
  std::vector<HistoryEntry> entries;
  for (std::int32_t daysAgo = days - 1; daysAgo >= 0; --daysAgo) {
    for (const double probability : {0.85, 0.4}) {
      if (!Utils::makeRandomBool(probability)) continue;
      const bool oneValueAlone = Utils::makeRandomBool(0.1);
      const bool isHeartrateEmpty = oneValueAlone && Utils::makeRandomBool(0.5);
      entries.push_back(Utils::makeAndSaveRandomValue(daysAgo, isHeartrateEmpty,
                                                      oneValueAlone && !isHeartrateEmpty));
      // What one entry costs does not grow with those before it.
      Utils::clearValues();
    }
  }
  return entries;
}

ExitStatus demoHistory(const DemoHistoryOptions& options) {
  const std::filesystem::path folder = options.dataFolder.empty()
                                           ? defaultDataFolder() += "-demo"
                                           : std::filesystem::path(options.dataFolder);
  SqliteKeyValueStore store(folder);
  const auto entries = randomEntries(options.days);
  NoSharing sharing;
  const HistoryPlatform platform(store, sharing);
  bool isEmpty = false;
  store.exclusively([&] {
    isEmpty = !store.value(Utils::valuesKey);
    if (isEmpty) Utils::setValues(entries);
  });
  if (store.failure()) throw StoreError(*store.failure());
  if (!isEmpty) {
    throw UsageError("--data: " + (folder / SqliteKeyValueStore::fileName).string() +
                     " has a history already, which random entries would spoil; name a new folder");
  }
  printOut("Saved " + std::to_string(entries.size()) + " random entries in " + folder.string() +
           "; see veyla chart --data " + folder.string() + "\n");
  return ExitStatus::done;
}

}  // namespace

ExitStatus runDemoHistory(const DemoHistoryOptions& options) {
  return exitStatusOf([&] { return demoHistory(options); });
}

}  // namespace veyla
