#include "platform/web/local_store.h"

#include "platform/format.h"
#include "platform/portable/json.h"

namespace veyla {

std::optional<Value> LocalStore::value(std::string_view key) {
  const auto changed = pending_.find(key);
  if (changed != pending_.end()) {
    return changed->second ? readJson(*changed->second) : std::nullopt;
  }
  const std::string name(key);
  const auto text = rawText(name);
  if (!text) {
    lists_.erase(name);
    return std::nullopt;
  }
  Read& last = read_[name];
  if (last.text == *text && !text->empty()) {
    remember(name, *text);
    return last.value;
  }

  auto value = readJson(*text);
  if (!value || (understands && !understands(key, *value))) {
    read_.erase(name);
    if (unreadable_.insert(name).second) tellDamaged(name);
    return std::nullopt;
  }
  last = {*text, *value};
  remember(name, *text);
  return value;
}

void LocalStore::remember(const std::string& key, const std::string& text) {
  if (text.starts_with('[')) {
    lists_[key] = text;
  } else {
    lists_.erase(key);
  }
}

void LocalStore::setValue(std::string_view key, const Value& value) {
  auto text = writeJson(value);
  if (!text) {
    if (failed) failed("", "\"" + std::string(key) + "\" holds a text that cannot be stored.");
    return;
  }
  change(key, std::move(text));
}

void LocalStore::removeValue(std::string_view key) { change(key, std::nullopt); }

void LocalStore::change(std::string_view key, std::optional<std::string> text) {
  if (hasChangedElsewhere(std::string(key))) {
    spoilt_ = true;
    if (failed) {
      failed("",
             "What is shown here is not what is stored any more: another tab or window, or the "
             "browser, has changed it. The last change was not saved.");
    }
    return;
  }
  // An item that nobody has read may be damaged as well.
  const bool isTold = unreadable_.contains(key);
  if (!pending_.contains(key)) value(key);
  if (unreadable_.contains(key)) {
    if (isTold) tellDamaged(std::string(key));
    spoilt_ = true;
    return;
  }
  pending_.insert_or_assign(std::string(key), std::move(text));
}

/// What replaces a list has to know all of it; other values stand for themselves.
bool LocalStore::hasChangedElsewhere(const std::string& key) const {
  const auto last = lists_.find(key);
  return last != lists_.end() && !pending_.contains(key) && rawText(key) != last->second;
}

void LocalStore::tellDamaged(const std::string& key) const {
  if (!failed) return;
  failed(key,
         "What this browser stores under \"" + key +
             "\" is damaged. It is left as it is, and nothing new is stored there. Save a copy, "
             "then set it aside to go on.");
}

void LocalStore::synchronize() {
  // What is changed exclusively is written at its end.
  if (!isExclusive_) write();
}

bool LocalStore::write() {
  if (pending_.empty()) return true;
  const std::string reason = items_.write({pending_.begin(), pending_.end()});
  if (reason.empty()) {
    for (const auto& [key, text] : pending_) remember(key, text.value_or(""));
    pending_.clear();
  } else if (failed) {
    failed("", reason);
  }
  return reason.empty();
}

bool LocalStore::exclusively(const std::function<void()>& changes) {
  if (isExclusive_) {
    changes();
    return !spoilt_;
  }
  const auto before = pending_;
  isExclusive_ = true;
  spoilt_ = false;
  changes();
  isExclusive_ = false;
  const bool stays = !spoilt_ && write();
  if (!stays) pending_ = before;
  return stays;
}

void LocalStore::setAside(const std::string& key, Date now) {
  const auto text = rawText(key);
  if (text) {
    const std::string aside = "damaged " + key + " " + formatText("%.0f", now.secondsSince1970);
    // As it is: the more there is of it, the less room is left for quotes.
    pending_.insert_or_assign(aside, *text);
    pending_.insert_or_assign(key, std::nullopt);
    synchronize();
  }
  if (!rawText(key)) unreadable_.erase(key);
}

}  // namespace veyla
