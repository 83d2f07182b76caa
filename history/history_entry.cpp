#include "history/history_entry.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veyla {

namespace {

Value valueOf(const Labels& labels) {
  Value::Array flags;
  for (const bool flag : labels) flags.emplace_back(flag);
  return flags;
}

std::optional<Labels> labelsOf(const Value& stored) {
  const auto* flags = stored.array();
  if (!flags || flags->size() < fewestFlags || flags->size() > labelNames.size()) {
    return std::nullopt;
  }
  Labels labels{};
  for (std::size_t i = 0; i < flags->size(); ++i) {
    const Value& flag = (*flags)[i];
    if (!flag.isBoolean() && !flag.isNumber()) return std::nullopt;
    labels[i] = flag.boolValue();
  }
  return labels;
}

constexpr std::array<std::string_view, 4> ownKeys{"hr", "spo2", "date", "labels"};

/// What something else has put into an entry.
Value::Dictionary othersIn(const Value::Dictionary& stored) {
  Value::Dictionary others;
  if (stored.size() == ownKeys.size()) return others;
  for (const auto& [key, value] : stored) {
    if (std::find(ownKeys.begin(), ownKeys.end(), key) == ownKeys.end()) {
      others.emplace_back(key, value);
    }
  }
  return others;
}

/// What a measurement can give, or 0 for none.
constexpr double largestHeartrate = 450;
constexpr double largestSpo2 = 100;

std::string faultOfNumber(const char* name, const Value& value, double largest) {
  const auto its = [name](const char* what) {
    return std::string("its \"").append(name).append("\" is ").append(what);
  };
  if (!value.isNumber() || !std::isfinite(value.doubleValue())) return its("no number");
  const bool isPossible = value.doubleValue() >= 0 && value.doubleValue() <= largest;
  return isPossible ? std::string() : its("nothing that is measured");
}

/// Reads into an empty entry what is stored. Returns what is wrong with it; nothing of a whole one.
std::string read(const Value& stored, HistoryEntry& entry) {
  if (!stored.dictionary()) return "it is no dictionary";
  const Value& hr = stored["hr"];
  if (auto fault = faultOfNumber("hr", hr, largestHeartrate); !fault.empty()) return fault;
  const Value& spo2 = stored["spo2"];
  if (auto fault = faultOfNumber("spo2", spo2, largestSpo2); !fault.empty()) return fault;
  const Date* date = stored["date"].date();
  if (!date || !isInCalendar(*date)) return "its \"date\" is no date";
  const auto labels = labelsOf(stored["labels"]);
  if (!labels) return "its \"labels\" are not a flag for each label";
  entry.hr = hr.doubleValue();
  entry.spo2 = spo2.doubleValue();
  entry.date = *date;
  entry.labels = *labels;
  entry.others = othersIn(*stored.dictionary());
  return {};
}

}  // namespace

Value valueOf(const HistoryEntry& entry) {
  if (entry.damaged) return *entry.damaged;
  Value::Dictionary stored{{"hr", entry.hr},
                           {"spo2", entry.spo2},
                           {"date", entry.date},
                           {"labels", valueOf(entry.labels)}};
  stored.insert(stored.end(), entry.others.begin(), entry.others.end());
  return stored;
}

HistoryEntry historyEntryOf(const Value& stored) {
  HistoryEntry entry;
  if (!read(stored, entry).empty()) entry.damaged = stored;
  return entry;
}

std::string faultOf(const Value& stored) {
  HistoryEntry unused;
  return read(stored, unused);
}

Value valueOf(const OldHistoryEntry& entry) {
  Value::Array elements{entry.date, entry.heartrate, entry.spo2};
  if (entry.labels) elements.push_back(valueOf(*entry.labels));
  return elements;
}

std::optional<OldHistoryEntry> oldHistoryEntryOf(const Value& stored) {
  const auto* elements = stored.array();
  if (!elements || elements->size() < 3) return std::nullopt;
  const auto* date = (*elements)[0].text();
  const auto* heartrate = (*elements)[1].text();
  const auto* spo2 = (*elements)[2].text();
  if (!date || !heartrate || !spo2) return std::nullopt;

  OldHistoryEntry entry{*date, *heartrate, *spo2, std::nullopt};
  if (elements->size() > 3) entry.labels = labelsOf((*elements)[3]);
  return entry;
}

}  // namespace veyla
