#include "apps/cli/demo_history_command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <random>
#include <string_view>
#include <system_error>
#include <vector>

#include "apps/cli/history_platform.h"
#include "apps/cli/tell.h"
#include "history/history_store.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/output_file.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/platform.h"

namespace veyla {

namespace {

/// What somebody was doing, its labels together and the heart rates that go with it.
struct Activity {
  double leastHeartrate;
  double mostHeartrate;
  std::array<std::string_view, 2> labels;
};

constexpr std::array<Activity, 8> activities{{{58, 68, {"Resting"}},
                                              {60, 70, {"Resting", "Sleep (Before)"}},
                                              {54, 62, {"Resting", "Sleep (After)"}},
                                              {66, 78, {"Working"}},
                                              {74, 88, {"Active"}},
                                              {64, 74, {"Training (Before)"}},
                                              {86, 98, {"Active", "Training (After)"}},
                                              {62, 74, {}}}};

/// The same entries at every run, but for their dates.
class RandomEntries {
 public:
  /// Most days with one entry, some with two or none, a few of the values not measured; oldest
  /// first.
  std::vector<HistoryEntry> upTo(Date now, std::int32_t days) {
    constexpr double secondsApart = 2700;
    std::vector<HistoryEntry> entries;
    for (std::int32_t daysAgo = days - 1; daysAgo >= 0; --daysAgo) {
      const Date last{now.secondsSince1970 - daysAgo * double{secondsPerDay}};
      if (happens(0.4)) entries.push_back(entryAt({last.secondsSince1970 - secondsApart}));
      if (happens(0.85)) entries.push_back(entryAt(last));
    }
    return entries;
  }

 private:
  HistoryEntry entryAt(Date date) {
    const Activity& activity = activities[random_() % activities.size()];
    HistoryEntry entry;
    entry.date = date;
    entry.hr = around(activity.leastHeartrate, activity.mostHeartrate);
    entry.spo2 = around(95, 99.4);
    if (happens(0.1)) (happens(0.5) ? entry.hr : entry.spo2) = 0;
    for (std::size_t i = 0; i < labelNames.size(); ++i) {
      entry.labels[i] = std::find(activity.labels.begin(), activity.labels.end(), labelNames[i]) !=
                        activity.labels.end();
    }
    return entry;
  }

  double between(double least, double most) {
    const double share = static_cast<double>(random_()) / static_cast<double>(random_.max());
    return least + (most - least) * share;
  }
  /// Most often near the middle.
  double around(double least, double most) {
    return (between(least, most) + between(least, most)) / 2;
  }
  bool happens(double probability) { return between(0, 1) < probability; }

  std::mt19937 random_;
};

/// Throws a `UsageError` for a folder of other things, among which a history would be lost.
void requireOwnFolder(const std::filesystem::path& folder) {
  std::error_code unreadable;
  const bool isUsed = std::filesystem::is_directory(folder, unreadable) &&
                      !std::filesystem::is_empty(folder, unreadable);
  if (!isUsed || unreadable || mayExist(folder / SqliteKeyValueStore::fileName)) return;
  throw UsageError("--data: " + folder.string() +
                   " holds other things; name a new or an empty folder");
}

ExitStatus demoHistory(const DemoHistoryOptions& options) {
  const std::filesystem::path folder = options.dataFolder.empty()
                                           ? defaultDataFolder() += "-demo"
                                           : std::filesystem::path(options.dataFolder);
  requireOwnFolder(folder);
  SqliteKeyValueStore store(folder);
  const HistoryPlatform platform(store);
  const auto entries = RandomEntries().upTo(services().clock.now(), options.days);
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
  tell("Saved " + std::to_string(entries.size()) + " random entries in " +
       printable(folder.string()) + "; see veyla chart --data " + shellWord(folder.string()));
  return ExitStatus::done;
}

}  // namespace

ExitStatus runDemoHistory(const DemoHistoryOptions& options) {
  return exitStatusOf([&] { return demoHistory(options); });
}

}  // namespace veyla
