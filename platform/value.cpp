#include "platform/value.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "platform/format.h"

namespace veyla {

namespace {

template <class Integer>
Integer saturated(double value) {
  if (std::isnan(value)) return 0;
  // The largest 64-bit integer is no double; its successor 2^63 is, and lies outside the range.
  const double beyond = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
  if (value >= beyond) return std::numeric_limits<Integer>::max();
  if (value < -beyond) return std::numeric_limits<Integer>::min();
  return static_cast<Integer>(value);
}

}  // namespace

Value::Value(Array elements) : held_(std::move(elements)) {}
Value::Value(Dictionary entries) : held_(std::move(entries)) {}
Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;
// Written out: clang-tidy 14 does not survive the default.
bool Value::operator==(const Value& other) const { return held_ == other.held_; }

bool Value::isNumber() const {
  return std::holds_alternative<std::int64_t>(held_) || std::holds_alternative<float>(held_) ||
         std::holds_alternative<double>(held_);
}

double Value::doubleValue() const {
  if (const auto* value = std::get_if<double>(&held_)) return *value;
  if (const auto* value = std::get_if<float>(&held_)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<std::int64_t>(&held_)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<bool>(&held_)) return *value ? 1 : 0;
  return 0;
}

bool Value::boolValue() const { return doubleValue() != 0; }

std::int32_t Value::intValue() const {
  if (const auto* value = std::get_if<std::int64_t>(&held_)) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(*value, Limits::min(), Limits::max()));
  }
  return saturated<std::int32_t>(doubleValue());
}

std::int64_t Value::int64Value() const {
  if (const auto* value = std::get_if<std::int64_t>(&held_)) return *value;
  return saturated<std::int64_t>(doubleValue());
}

const Value& Value::operator[](std::string_view key) const {
  static const Value none;
  if (const Dictionary* entries = dictionary()) {
    for (const auto& [name, value] : *entries) {
      if (name == key) return value;
    }
  }
  return none;
}

namespace {

std::string describedDate(Date date) {
  using namespace std::chrono;
  if (!isInCalendar(date)) return std::to_string(date.secondsSince1970);
  const double seconds = std::floor(date.secondsSince1970);
  const sys_seconds moment{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
  const auto midnight = floor<days>(moment);
  const year_month_day day(midnight);
  const hh_mm_ss time(moment - midnight);
  return formatText("%04d-%02u-%02u %02d:%02d:%02d +0000", static_cast<int>(day.year()),
                    static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                    static_cast<int>(time.hours().count()),
                    static_cast<int>(time.minutes().count()),
                    static_cast<int>(time.seconds().count()));
}

}  // namespace

std::string described(const Value& value) {
  if (const auto* entries = value.dictionary()) {
    std::string text = "{";
    for (const auto& [key, entry] : *entries) {
      if (text.size() > 1) text += ", ";
      text += key + " = " + described(entry);
    }
    return text + "}";
  }
  if (const auto* elements = value.array()) {
    std::string text = "(";
    for (const Value& element : *elements) {
      if (text.size() > 1) text += ", ";
      text += described(element);
    }
    return text + ")";
  }
  if (const auto* text = value.text()) return *text;
  if (value.isNull()) return "null";
  if (const auto date = value.date()) return describedDate(*date);
  std::string number = std::to_string(value.doubleValue());
  number.erase(number.find_last_not_of('0') + 1);
  if (number.back() == '.') number.pop_back();
  return number;
}

}  // namespace veyla
