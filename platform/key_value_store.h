#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/value.h"

namespace veyla {

/// The user's persistent store of typed values under string keys.
///
/// A binding that cannot read or write reports it to its app by its own means; the core goes on.
class KeyValueStore {
 public:
  virtual ~KeyValueStore() = default;

  virtual std::optional<Value> value(std::string_view key) = 0;
  virtual void setValue(std::string_view key, const Value& value) = 0;
  virtual void removeValue(std::string_view key) = 0;
  /// Puts an element at the end of the array under `key`, which is made where there is none. To be
  /// called within `exclusively`.
  virtual void append(std::string_view key, const Value& element) {
    const auto stored = value(key);
    auto elements = stored && stored->array() ? *stored->array() : Value::Array{};
    elements.push_back(element);
    setValue(key, std::move(elements));
  }

  /// Makes every change so far durable, all of them or none.
  virtual void synchronize() = 0;

  /// Runs `changes`, which read, write and end with `synchronize`, while no other program writes:
  /// what they read cannot have changed when they write. Whether what they changed stays.
  virtual bool exclusively(const std::function<void()>& changes) = 0;
};

}  // namespace veyla
