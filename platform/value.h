#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/date.h"

namespace veyla {

/// A keyed value as resources and the key-value store hold it: null, a boolean, a number (a 64-bit
/// integer, a single- or a double-precision float, told apart), a text, a date, an array, or a
/// dictionary in insertion order.
///
/// Readings never fail: a number converts to the asked type, anything else reads as 0, false or
/// empty, so that a missing key behaves as required of it without a test at every caller.
class Value {
 public:
  using Array = std::vector<Value>;
  using Dictionary = std::vector<std::pair<std::string, Value>>;

  Value() = default;
  Value(bool value) : held_(value) {}
  Value(int value) : held_(std::int64_t{value}) {}
  Value(std::int64_t value) : held_(value) {}
  Value(float value) : held_(value) {}
  Value(double value) : held_(value) {}
  Value(const char* text) : held_(std::string(text)) {}
  Value(std::string text) : held_(std::move(text)) {}
  Value(Date date) : held_(date) {}
  Value(Array elements);
  Value(Dictionary entries);

  // Out of line: what copying and dropping nine alternatives costs to compile is paid once.
  Value(const Value&);
  Value(Value&&) noexcept;
  Value& operator=(const Value&);
  Value& operator=(Value&&) noexcept;
  ~Value();

  bool isNull() const { return std::holds_alternative<std::monostate>(held_); }
  bool isNumber() const;
  bool isBoolean() const { return std::holds_alternative<bool>(held_); }

  /// Numbers and booleans; false for everything else and for 0.
  bool boolValue() const;
  /// Truncates toward zero and stops at the ends of the range; not-a-number and non-numbers give 0.
  std::int32_t intValue() const;
  std::int64_t int64Value() const;
  float floatValue() const { return static_cast<float>(doubleValue()); }
  double doubleValue() const;

  /// The held alternative, or null when another one is held.
  const std::string* text() const { return std::get_if<std::string>(&held_); }
  const Date* date() const { return std::get_if<Date>(&held_); }
  const Array* array() const { return std::get_if<Array>(&held_); }
  const Dictionary* dictionary() const { return std::get_if<Dictionary>(&held_); }

  /// The value under `key`, or null when there is none or this is no dictionary.
  const Value& operator[](std::string_view key) const;

  /// Calls `visitor` with the held alternative (`std::monostate` for null).
  template <class Visitor>
  decltype(auto) visit(Visitor&& visitor) const {
    return std::visit(std::forward<Visitor>(visitor), held_);
  }

  bool operator==(const Value&) const;

 private:
  std::variant<std::monostate, bool, std::int64_t, float, double, std::string, Date, Array,
               Dictionary>
      held_;
};

/// A log text of the value: keys and values in their order, dates as "2024-03-05 11:00:00 +0000",
/// whatever the machine's time zone and locale.
std::string described(const Value& value);

}  // namespace veyla
