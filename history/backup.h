#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/history_entry.h"
#include "measuring/usage_utils.h"

namespace veyla {

/// What of the user's is worth moving to another machine. As a file it is a JSON text that a person
/// can read:
///
///     {"veyla": "backup", "version": 1, "email": "a@b.org", "counters": {"total_finished": 3},
///      "entries": [{"date": 1709640427.25, "when": "2024-03-05 12:07:07 +0000",
///                   "hr": 70.3125, "spo2": 97.0, "labels": ["Resting"]}]}
///
/// with the entries oldest first, a date in seconds since 1970 (UTC), which "when" tells a reader
/// once more and nobody reads back, and 0 for what was not measured.
struct Backup {
  std::vector<HistoryEntry> entries;
  /// How many more there were that are damaged, and are left out.
  std::size_t damaged = 0;
  /// By the places of `UsageUtils::counterKeys`.
  std::array<std::int64_t, UsageUtils::counterKeys.size()> counters{};
  std::optional<std::string> email;
};

/// What is stored now.
Backup currentBackup();

/// Such as "2 damaged entries are left out of the backup"; empty where none is.
std::string leftOut(const Backup& backup);

/// The file's contents; nothing when something else has left in the store what JSON has no form
/// for.
std::optional<std::string> textOf(const Backup& backup);

/// Reads it back. Nothing, and one line in `fault` with the way out, for a text that is no backup
/// or not whole.
std::optional<Backup> readBackup(std::string_view text, std::string& fault);

struct RestoreCount {
  std::size_t added = 0;
  /// How many were there already.
  std::size_t present = 0;
};

/// Adds what is missing, each entry by its date, and takes nothing away: an entry that is there
/// keeps its labels, a counter the larger number, and an address that is there stays. All of it or,
/// where the store refuses, nothing, which gives nothing.
std::optional<RestoreCount> restore(const Backup& backup);

/// Such as "Restored 12 measurements; 3 were there already."
std::string told(const RestoreCount& count);

}  // namespace veyla
