#pragma once

#include <map>
#include <string>

#include "platform/key_value_store.h"
#include "tests/support/journal.h"

namespace veyla {

/// A store in memory, whose changes and flushes stand in the journal as "store …".
class MemoryStore : public KeyValueStore {
 public:
  explicit MemoryStore(Journal& journal) : journal_(journal) {}

  /// What is stored; a test may put anything there beforehand.
  std::map<std::string, Value, std::less<>> values;

  std::optional<Value> value(std::string_view key) override {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  void setValue(std::string_view key, const Value& value) override {
    values.insert_or_assign(std::string(key), value);
    journal_.add("store set " + std::string(key));
  }
  void removeValue(std::string_view key) override {
    values.erase(std::string(key));
    journal_.add("store remove " + std::string(key));
  }
  void synchronize() override { journal_.add("store flush"); }
  void exclusively(const std::function<void()>& changes) override {
    ++nesting_;
    changes();
    if (--nesting_ == 0) ++exclusivePieces;
  }

  /// How often changes were made durable in one piece, nested ones with the outermost.
  int exclusivePieces = 0;

 private:
  int nesting_ = 0;
  Journal& journal_;
};

}  // namespace veyla
