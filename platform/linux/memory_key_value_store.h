#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/key_value_store.h"

namespace veyla {

/// A store that lasts as long as the program: for runs that save nothing.
class MemoryKeyValueStore : public KeyValueStore {
 public:
  std::map<std::string, Value, std::less<>> values;

  std::optional<Value> value(std::string_view key) override {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  void setValue(std::string_view key, const Value& value) override {
    values.insert_or_assign(std::string(key), value);
  }
  void removeValue(std::string_view key) override { values.erase(std::string(key)); }
  void synchronize() override {}
  bool exclusively(const std::function<void()>& changes) override {
    changes();
    return true;
  }
};

}  // namespace veyla
