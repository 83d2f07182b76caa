#include "history/backup.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "history/history_store.h"
#include "platform/format.h"
#include "platform/platform.h"

namespace veyla {

namespace {

constexpr std::int64_t version = 1;
constexpr const char* wayOut = "; take another copy of the backup";

Value valueIn(const HistoryEntry& entry) {
  Value::Array labels;
  for (std::size_t i = 0; i < labelNames.size(); ++i) {
    if (entry.labels[i]) labels.emplace_back(std::string(labelNames[i]));
  }
  Value::Dictionary fields{{"date", entry.date.secondsSince1970},
                           {"when", described(entry.date)},
                           {"hr", entry.hr},
                           {"spo2", entry.spo2},
                           {"labels", std::move(labels)}};
  fields.insert(fields.end(), entry.others.begin(), entry.others.end());
  return fields;
}

/// The entry's labels; nothing unless they are a list of names that there are.
std::optional<Labels> labelsIn(const Value& names) {
  if (!names.array()) return std::nullopt;
  Labels labels{};
  for (const Value& name : *names.array()) {
    const auto place = name.text() ? std::find(labelNames.begin(), labelNames.end(), *name.text())
                                   : labelNames.end();
    if (place == labelNames.end()) return std::nullopt;
    labels[static_cast<std::size_t>(place - labelNames.begin())] = true;
  }
  return labels;
}

/// As stored, so that it is judged by the history's own rule.
Value storedForm(const Value& fields) {
  const auto labels = labelsIn(fields["labels"]);
  const Value& date = fields["date"];
  Value::Array flags;
  for (std::size_t i = 0; labels && i < labels->size(); ++i) flags.emplace_back((*labels)[i]);
  Value::Dictionary stored{{"hr", fields["hr"]},
                           {"spo2", fields["spo2"]},
                           {"date", date.isNumber() ? Value(Date{date.doubleValue()}) : Value()},
                           {"labels", std::move(flags)}};
  static constexpr std::array<std::string_view, 5> ownKeys{"date", "when", "hr", "spo2", "labels"};
  for (const auto& [key, value] : *fields.dictionary()) {
    if (std::find(ownKeys.begin(), ownKeys.end(), key) == ownKeys.end()) {
      stored.emplace_back(key, value);
    }
  }
  return stored;
}

/// What makes two entries the same measurement.
std::tuple<double, double, double> identityOf(const HistoryEntry& entry) {
  return {entry.date.secondsSince1970, entry.hr, entry.spo2};
}

/// Each of `added` before the first entry that is later; both oldest first.
std::vector<HistoryEntry> merged(std::vector<HistoryEntry> there, std::vector<HistoryEntry> added) {
  const auto isEarlier = [](const HistoryEntry& a, const HistoryEntry& b) {
    return a.date.secondsSince1970 < b.date.secondsSince1970;
  };
  std::stable_sort(added.begin(), added.end(), isEarlier);
  std::vector<HistoryEntry> all;
  all.reserve(there.size() + added.size());
  auto next = added.begin();
  for (HistoryEntry& entry : there) {
    while (next != added.end() && !entry.damaged && isEarlier(*next, entry)) {
      all.push_back(std::move(*next++));
    }
    all.push_back(std::move(entry));
  }
  std::move(next, added.end(), std::back_inserter(all));
  return all;
}

}  // namespace

Backup currentBackup() {
  Backup backup;
  backup.entries = Utils::getValues().value_or(std::vector<HistoryEntry>());
  backup.damaged =
      std::erase_if(backup.entries, [](const auto& entry) { return entry.damaged.has_value(); });
  for (std::size_t i = 0; i < backup.counters.size(); ++i) {
    backup.counters[i] = UsageUtils::counter(UsageUtils::counterKeys[i]);
  }
  backup.email = Utils::getEmail();
  return backup;
}

std::optional<std::string> textOf(const Backup& backup) {
  Value::Dictionary counters;
  for (std::size_t i = 0; i < backup.counters.size(); ++i) {
    if (backup.counters[i] != 0) {
      counters.emplace_back(std::string(UsageUtils::counterKeys[i]), backup.counters[i]);
    }
  }
  Value::Array entries;
  entries.reserve(backup.entries.size());
  for (const HistoryEntry& entry : backup.entries) entries.push_back(valueIn(entry));
  Value::Dictionary file{{"veyla", "backup"}, {"version", version}};
  if (backup.email) file.emplace_back("email", *backup.email);
  file.emplace_back("counters", std::move(counters));
  file.emplace_back("entries", std::move(entries));
  return services().jsonWriter.prettyPrinted(file);
}

std::optional<Backup> readBackup(std::string_view text, std::string& fault) {
  const auto refuse = [&](std::string reason) {
    fault = std::move(reason);
    return std::nullopt;
  };
  const Value file = services().json.parse(text).value_or(Value());
  const std::string* mark = file["veyla"].text();
  if (!mark || *mark != "backup") {
    return refuse("no backup of Veyla's, or not all of one; choose a file that a backup has made");
  }
  if (!file["version"].isNumber() || file["version"].int64Value() > version) {
    return refuse("made by a newer version of Veyla; update this one");
  }
  const Value::Array* entries = file["entries"].array();
  if (!entries) return refuse(std::string("its \"entries\" are no list") + wayOut);

  Backup backup;
  backup.entries.reserve(entries->size());
  for (const Value& fields : *entries) {
    const std::size_t number = backup.entries.size() + 1;
    const Value stored = fields.dictionary() ? storedForm(fields) : Value();
    if (const std::string wrong = faultOf(stored); !wrong.empty()) {
      return refuse(formatText("entry %zu: %s%s", number, wrong.c_str(), wayOut));
    }
    backup.entries.push_back(historyEntryOf(stored));
  }
  const Value& counters = file["counters"];
  bool areCounters = counters.isNull() || counters.dictionary();
  for (std::size_t i = 0; i < backup.counters.size(); ++i) {
    const Value& counter = counters[UsageUtils::counterKeys[i]];
    areCounters = areCounters && (counter.isNull() || counter.isNumber());
    backup.counters[i] = counter.int64Value();
  }
  if (!areCounters) return refuse(std::string("its \"counters\" are no numbers") + wayOut);
  const Value& email = file["email"];
  if (!email.isNull() && !email.text()) {
    return refuse(std::string("its \"email\" is no text") + wayOut);
  }
  if (email.text()) backup.email = *email.text();
  return backup;
}

std::optional<RestoreCount> restore(const Backup& backup) {
  RestoreCount count;
  const bool isKept = services().store.exclusively([&] {
    std::vector<HistoryEntry> there = Utils::getValues().value_or(std::vector<HistoryEntry>());
    std::map<std::tuple<double, double, double>, std::size_t> unmatched;
    for (const HistoryEntry& entry : there) {
      if (!entry.damaged) ++unmatched[identityOf(entry)];
    }
    std::vector<HistoryEntry> missing;
    for (const HistoryEntry& entry : backup.entries) {
      const auto same = unmatched.find(identityOf(entry));
      if (same == unmatched.end() || same->second == 0) {
        missing.push_back(entry);
      } else {
        --same->second;
      }
    }
    count = {missing.size(), backup.entries.size() - missing.size()};
    if (!missing.empty()) Utils::setValues(merged(std::move(there), std::move(missing)));
    for (std::size_t i = 0; i < backup.counters.size(); ++i) {
      const auto key = UsageUtils::counterKeys[i];
      if (backup.counters[i] > UsageUtils::counter(key)) {
        UsageUtils::setCounter(key, backup.counters[i]);
      }
    }
    if (backup.email && !Utils::hasEmail()) Utils::setEmail(*backup.email);
  });
  return isKept ? std::optional(count) : std::nullopt;
}

std::string leftOut(const Backup& backup) {
  if (backup.damaged == 0) return "";
  return formatText("%zu damaged %s left out of the backup", backup.damaged,
                    backup.damaged == 1 ? "entry is" : "entries are");
}

std::string told(const RestoreCount& count) {
  return formatText("Restored %zu measurement%s; %zu %s there already.", count.added,
                    count.added == 1 ? "" : "s", count.present,
                    count.present == 1 ? "was" : "were");
}

}  // namespace veyla
