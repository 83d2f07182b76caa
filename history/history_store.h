#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/history_entry.h"

/// The finished measurements and the small pieces of user state, in the platform's key-value store.
/// Nothing is cached: every call reads or writes the store, and a write is flushed at once unless
/// stated.
namespace veyla::Utils {

/// The key of the history, an array of entries, oldest first.
inline constexpr std::string_view valuesKey = "values";

// The history, oldest entry first.

/// Nothing when there is no history.
std::optional<std::vector<HistoryEntry>> getValues();
/// Whether the store has taken them.
bool setValues(const std::vector<HistoryEntry>& values);
/// Whether such a value may stand in the store under a key: the history is a list.
inline bool mayStand(std::string_view key, const Value& value) {
  return key != valuesKey || value.array();
}
/// Appends and returns one entry; without labels all flags are off.
HistoryEntry saveHeartrate(double heartrate, double spo2, Date date,
                           const std::optional<Labels>& labels);
void clearValues();

// The layout before the current one, newest entry first.

std::optional<std::vector<OldHistoryEntry>> getValuesOLD();
void setValuesOLD(const std::vector<OldHistoryEntry>& values);
OldHistoryEntry saveHeartrateOLD(float heartrate, float spo2, Date date,
                                 const std::optional<Labels>& labels);
void clearValuesOLD();
/// Appends every old entry to the history, oldest first. An entry without labels gets all
/// flags off; entries whose date no longer reads come last and are dated now, which the log tells.
void convertOldValuesToNew();

// Random entries, for trying charts and lists.

/// True with the given probability.
bool makeRandomBool(double probability);
/// Saves and returns an entry of `daysAgo` days before now: a heart rate in 60 to 90, an SpO2 in 90
/// to 100, and any labels.
HistoryEntry makeAndSaveRandomValue(std::int32_t daysAgo, bool isHeartrateEmpty, bool isSpo2Empty);
OldHistoryEntry makeAndSaveRandomValueOLD(std::int32_t daysAgo, bool isHeartrateEmpty,
                                          bool isSpo2Empty);

// The values of the last measurement; 0 when there is none.

bool hasLastHeartrate();
float getLastHeartrate();
void setLastHeartrate(float heartrate);
bool hasLastSpo2();
float getLastSpo2();
void setLastSpo2(float spo2);

// What the user has been shown. Any stored value counts, be it false.

bool hasShownIntro();
void setShownIntro();
bool hasFirstTimeNotePopup();
void setFirstTimeNotePopup();

// The user's e-mail address.

void setEmail(const std::string& email);
bool hasEmail();
std::optional<std::string> getEmail();
void removeEmail();
/// Whether the whole text is an address in the form of RFC 5322, regardless of case. Offered to
/// programs: what the user types in the options is checked by `UsageUtils::isEmailWithEmail`.
bool validateEmail(const std::string& email);

// The anonymous user identifier.

/// A new random one, which is not stored.
std::string createUserID();
bool hasUserID();
/// Not flushed.
void setUserID(const std::string& userID);
std::optional<std::string> getUserID();

/// Whether the store holds anything under `key`.
bool doesValueExist(std::string_view key);

}  // namespace veyla::Utils
