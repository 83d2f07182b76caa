#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/key_value_store.h"

namespace veyla {

/// The texts that the browser keeps for the page, each under its key.
class LocalItems {
 public:
  /// A key and its new text; none to remove it.
  using Change = std::pair<std::string, std::optional<std::string>>;

  virtual ~LocalItems() = default;

  virtual std::optional<std::string> read(const std::string& key) const = 0;
  /// Makes all changes or none; the reason for that, or an empty text.
  virtual std::string write(const std::vector<Change>& changes) = 0;
};

/// The key-value store in the browser's `localStorage`: an item a key, its value as `writeJson`
/// writes it.
///
/// A flush writes all changes or, where the browser refuses one, none. The changes within
/// `exclusively` are written at its end; where one is refused or they could not be written, all of
/// them are given up, so that the contents are what they were before. An item that cannot be read
/// is left as it is and its key refuses changes until the item is set aside.
/// Another tab's changes are seen by the next reading; the browser has no lock on them, but a list
/// that has changed since it was read here is not written over.
class LocalStore : public KeyValueStore {
 public:
  /// `items` must outlive the store.
  explicit LocalStore(LocalItems& items) : items_(items) {}

  /// Told of each thing that goes wrong: the key, empty where it is about all of them, and one line
  /// for the user. A damaged item is told of when it is first read and at each change it refuses.
  /// May be empty.
  std::function<void(const std::string& damagedKey, const std::string& line)> failed;

  /// Whether such a value may stand under a key; one that may not is damaged. May be empty.
  std::function<bool(std::string_view key, const Value& value)> understands;

  std::optional<Value> value(std::string_view key) override;
  void setValue(std::string_view key, const Value& value) override;
  void removeValue(std::string_view key) override;
  void synchronize() override;
  bool exclusively(const std::function<void()>& changes) override;

  /// The text of an item, as it is.
  std::optional<std::string> rawText(const std::string& key) const { return items_.read(key); }
  /// Keeps a damaged item under a name of its own, so that the key can be used anew.
  void setAside(const std::string& key, Date now);

 private:
  void change(std::string_view key, std::optional<std::string> text);
  bool write();
  void remember(const std::string& key, const std::string& text);
  bool hasChangedElsewhere(const std::string& key) const;
  void tellDamaged(const std::string& key) const;

  struct Read {
    std::string text;
    Value value;
  };

  LocalItems& items_;
  /// Not written yet; without a text, a removal.
  std::map<std::string, std::optional<std::string>, std::less<>> pending_;
  /// What was read last: the history is long and read often.
  std::map<std::string, Read, std::less<>> read_;
  /// Of lists, what was read or written last.
  std::map<std::string, std::string, std::less<>> lists_;
  std::set<std::string, std::less<>> unreadable_;
  bool isExclusive_ = false;
  /// A change within `exclusively` was refused.
  bool spoilt_ = false;
};

}  // namespace veyla
