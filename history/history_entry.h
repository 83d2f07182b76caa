#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/date.h"
#include "platform/value.h"

namespace veyla {

/// The activity labels, in the order in which an entry's flags stand. A new one comes last: stored
/// flags mean labels by their places, and an entry from before it came reads as one without it.
inline constexpr std::array<std::string_view, 7> labelNames{
    "Resting",          "Active",         "Working",      "Training (Before)",
    "Training (After)", "Sleep (Before)", "Sleep (After)"};

/// The label before something and the one after it, by their places: an entry has one of them at
/// most. Setting either takes the other off.
struct LabelPair {
  std::size_t before;
  std::size_t after;
};
inline constexpr std::array<LabelPair, 2> exclusiveLabels{{{3, 4}, {5, 6}}};

/// Stands where a value was not measured.
inline constexpr const char* noValue = "--";

/// One flag per label.
using Labels = std::array<bool, labelNames.size()>;

/// As many flags as the first entries have; no stored entry has fewer.
inline constexpr std::size_t fewestFlags = 7;
static_assert(labelNames.size() >= fewestFlags);

/// One finished measurement. A value of 0 was not measured.
struct HistoryEntry {
  /// Beats per minute, unrounded.
  double hr = 0;
  /// Per cent, unrounded.
  double spo2 = 0;
  /// When the measurement finished.
  Date date;
  Labels labels{};
  /// A stored element that is no entry, as something else left it in the store: kept as it is and
  /// written back as it is. The other fields then mean nothing.
  std::optional<Value> damaged;
  /// What something else has put into the stored entry under keys of its own: written back as it
  /// is.
  Value::Dictionary others = {};
  /// The key of its day while charts are made; never stored.
  std::string ddmm = {};

  bool operator==(const HistoryEntry&) const = default;
};

/// The stored form, a dictionary with the keys "hr", "spo2", "date" and "labels", and back. An
/// entry with flags beyond those of `labelNames`, as a newer program may have left it, is kept as
/// damaged.
Value valueOf(const HistoryEntry& entry);
HistoryEntry historyEntryOf(const Value& stored);

/// What keeps a stored element from being an entry, such as "its \"hr\" is no number"; empty when
/// nothing does.
std::string faultOf(const Value& stored);

/// An entry of the layout before the current one: everything a text but the labels, which the
/// oldest entries lack.
struct OldHistoryEntry {
  std::string date;
  std::string heartrate;
  std::string spo2;
  std::optional<Labels> labels;

  bool operator==(const OldHistoryEntry&) const = default;
};

/// The stored form, an array of three or four elements, and back; nothing for anything else.
Value valueOf(const OldHistoryEntry& entry);
std::optional<OldHistoryEntry> oldHistoryEntryOf(const Value& stored);

}  // namespace veyla
