#include "history/history_store.h"

#include <algorithm>
#include <cstdlib>

#include "platform/format.h"
#include "platform/platform.h"

namespace veyla::Utils {

namespace {

constexpr std::string_view oldValuesKey = "history";
constexpr std::string_view finishedIntroKey = "finishedIntro";
constexpr std::string_view pleaseNoteShownKey = "pleaseNoteShown";
constexpr std::string_view emailKey = "email";
constexpr std::string_view lastHeartrateKey = "last_heartrate";
constexpr std::string_view lastSpo2Key = "last_spo2";
constexpr std::string_view userIdKey = "UUID";

/// The addresses of RFC 5322: a dot-atom or a quoted local part, then a dotted name or a bracketed
/// literal. The range \x21-\x5a\x53-\x7f overlaps itself; the pattern is kept to the letter.
constexpr std::string_view emailPattern =
    R"pattern((?:[a-z0-9!#$%\&'*+/=?\^_`{|}~-]+(?:\.[a-z0-9!#$%\&'*+/=?\^_`{|}~-]+)*|"(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21\x23-\x5b\x5d-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])*")@(?:(?:[a-z0-9](?:[a-z0-9-]*[a-z0-9])?\.)+[a-z0-9](?:[a-z0-9-]*[a-z0-9])?|\[(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\.){3}(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?|[a-z0-9-]*[a-z0-9]:(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21-\x5a\x53-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])+)\]))pattern";
static_assert(emailPattern.size() == 430);

constexpr double largestRandom = 2147483647.0;

KeyValueStore& store() { return services().store; }

bool storeAndFlush(std::string_view key, const Value& value) {
  return store().exclusively([&] {
    store().setValue(key, value);
    store().synchronize();
  });
}

void removeAndFlush(std::string_view key) {
  store().exclusively([&] {
    store().removeValue(key);
    store().synchronize();
  });
}

std::optional<std::string> textUnder(std::string_view key) {
  const auto value = store().value(key);
  if (!value || !value->text()) return std::nullopt;
  return *value->text();
}

std::optional<Value::Array> arrayUnder(std::string_view key) {
  const auto value = store().value(key);
  if (!value || !value->array()) return std::nullopt;
  return *value->array();
}

/// Uniform in 0 to 1.
double randomUnit() { return std::rand() / largestRandom; }

Date daysBeforeNow(std::int32_t daysAgo) {
  // The product wraps like a 32-bit one.
  const auto offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(daysAgo) *
                                                static_cast<std::uint32_t>(-secondsPerDay));
  return {services().clock.now().secondsSince1970 + offset};
}

/// The number at the start of the text, such as 72 in "72 bpm"; 0 where there is none.
double leadingNumber(const std::string& text) {
  // Only decimal numbers count: what strtod also takes, "infinity" or "0x1f", is cut away first.
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  if (start == std::string::npos) return 0;
  const std::size_t end = std::min(text.find_first_not_of("+-.0123456789eE", start), text.size());
  return std::strtod(text.substr(start, end - start).c_str(), nullptr);
}

void migrate(const OldHistoryEntry& old, Date date) {
  saveHeartrate(leadingNumber(old.heartrate), leadingNumber(old.spo2), date, old.labels);
}

}  // namespace

std::optional<std::vector<HistoryEntry>> getValues() {
  const auto stored = store().value(valuesKey);
  // Not copied: a history may be long.
  const Value::Array* elements = stored ? stored->array() : nullptr;
  if (!elements) return std::nullopt;
  std::vector<HistoryEntry> entries;
  entries.reserve(elements->size());
  for (const Value& element : *elements) entries.push_back(historyEntryOf(element));
  return entries;
}

bool setValues(const std::vector<HistoryEntry>& values) {
  Value::Array elements;
  elements.reserve(values.size());
  for (const HistoryEntry& entry : values) elements.push_back(valueOf(entry));
  return storeAndFlush(valuesKey, elements);
}

HistoryEntry saveHeartrate(double heartrate, double spo2, Date date,
                           const std::optional<Labels>& labels) {
  HistoryEntry entry{heartrate, spo2, date, labels.value_or(Labels{}), std::nullopt};
  store().exclusively([&] {
    store().append(valuesKey, valueOf(entry));
    store().synchronize();
  });
  return entry;
}

void clearValues() { removeAndFlush(valuesKey); }

std::optional<std::vector<OldHistoryEntry>> getValuesOLD() {
  const auto stored = arrayUnder(oldValuesKey);
  if (!stored) return std::nullopt;
  std::vector<OldHistoryEntry> entries;
  for (const Value& element : *stored) {
    if (auto entry = oldHistoryEntryOf(element)) entries.push_back(std::move(*entry));
  }
  return entries;
}

void setValuesOLD(const std::vector<OldHistoryEntry>& values) {
  Value::Array elements;
  for (const OldHistoryEntry& entry : values) elements.push_back(valueOf(entry));
  storeAndFlush(oldValuesKey, elements);
}

OldHistoryEntry saveHeartrateOLD(float heartrate, float spo2, Date date,
                                 const std::optional<Labels>& labels) {
  OldHistoryEntry entry{
      services().dates.mediumDateShortTime(date),
      heartrate < 1.0F ? noValue : formatText("%.0f bpm", static_cast<double>(heartrate)),
      spo2 < 1.0F ? noValue : formatText("%.0f%%", static_cast<double>(spo2)),
      labels.value_or(Labels{})};
  store().exclusively([&] {
    auto elements = arrayUnder(oldValuesKey);
    if (!elements) {
      logLine("no data in history....");
      elements.emplace();
    }
    elements->insert(elements->begin(), valueOf(entry));
    store().setValue(oldValuesKey, std::move(*elements));
    store().synchronize();
  });
  return entry;
}

void clearValuesOLD() { removeAndFlush(oldValuesKey); }

void convertOldValuesToNew() {
  const auto stored = arrayUnder(oldValuesKey);
  if (!stored) return;
  std::vector<OldHistoryEntry> undated;
  for (auto element = stored->rbegin(); element != stored->rend(); ++element) {
    const auto old = oldHistoryEntryOf(*element);
    if (!old) {
      logLine("an old history entry holds no measurement and is left out");
    } else if (const auto date = services().dates.parseMediumDateShortTime(old->date)) {
      migrate(*old, *date);
    } else {
      undated.push_back(*old);
    }
  }
  // The measurements outlive a change of the locale that wrote their dates. Dated now, they belong
  // at the end: the history stays in order.
  for (const OldHistoryEntry& old : undated) {
    logLine("the date \"%s\" of an old history entry cannot be read; the entry is dated now",
            old.date.c_str());
    migrate(old, services().clock.now());
  }
}

bool makeRandomBool(double probability) { return randomUnit() <= probability; }

HistoryEntry makeAndSaveRandomValue(std::int32_t daysAgo, bool isHeartrateEmpty, bool isSpo2Empty) {
  const Date date = daysBeforeNow(daysAgo);
  const double heartrate = isHeartrateEmpty ? 0 : 60 + 30 * randomUnit();
  const double spo2 = isSpo2Empty ? 0 : 90 + 10 * randomUnit();
  Labels labels{};
  for (bool& label : labels) label = makeRandomBool(0.5);
  return saveHeartrate(heartrate, spo2, date, labels);
}

OldHistoryEntry makeAndSaveRandomValueOLD(std::int32_t daysAgo, bool isHeartrateEmpty,
                                          bool isSpo2Empty) {
  const Date date = daysBeforeNow(daysAgo);
  const auto heartrate = static_cast<float>(isHeartrateEmpty ? 0 : 60 + 30 * randomUnit());
  const auto spo2 = static_cast<float>(isSpo2Empty ? 0 : 90 + 10 * randomUnit());
  Labels labels{};
  for (bool& label : labels) label = randomUnit() < 0.1;
  return saveHeartrateOLD(heartrate, spo2, date, labels);
}

bool hasLastHeartrate() { return doesValueExist(lastHeartrateKey); }
float getLastHeartrate() { return store().value(lastHeartrateKey).value_or(Value()).floatValue(); }
void setLastHeartrate(float heartrate) { storeAndFlush(lastHeartrateKey, heartrate); }

bool hasLastSpo2() { return doesValueExist(lastSpo2Key); }
float getLastSpo2() { return store().value(lastSpo2Key).value_or(Value()).floatValue(); }
void setLastSpo2(float spo2) { storeAndFlush(lastSpo2Key, spo2); }

bool hasShownIntro() { return doesValueExist(finishedIntroKey); }
void setShownIntro() { storeAndFlush(finishedIntroKey, true); }
bool hasFirstTimeNotePopup() { return doesValueExist(pleaseNoteShownKey); }
void setFirstTimeNotePopup() { storeAndFlush(pleaseNoteShownKey, true); }

void setEmail(const std::string& email) { storeAndFlush(emailKey, email); }
bool hasEmail() { return doesValueExist(emailKey); }
std::optional<std::string> getEmail() { return textUnder(emailKey); }
void removeEmail() { removeAndFlush(emailKey); }
bool validateEmail(const std::string& email) {
  return services().regularExpressions.matchesWholeIgnoringCase(emailPattern, email);
}

std::string createUserID() { return services().uuids.randomUuid(); }
bool hasUserID() { return doesValueExist(userIdKey); }
void setUserID(const std::string& userID) { store().setValue(userIdKey, userID); }
std::optional<std::string> getUserID() { return textUnder(userIdKey); }

bool doesValueExist(std::string_view key) { return store().value(key).has_value(); }

}  // namespace veyla::Utils
