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
  if (!text) return std::nullopt;
  Read& last = read_[name];
  if (last.text == *text && !text->empty()) return last.value;

  auto value = readJson(*text);
  if (!value) {
    read_.erase(name);
    if (unreadable_.insert(name).second) tellDamaged(name);
    return std::nullopt;
  }
  last = {*text, *value};
  return value;
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
    pending_.insert_or_assign(aside, writeJson(Value(*text)));
    pending_.insert_or_assign(key, std::nullopt);
    synchronize();
  }
  if (!rawText(key)) unreadable_.erase(key);
}

}  // namespace veyla
