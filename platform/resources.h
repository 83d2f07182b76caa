#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/value.h"

namespace veyla {

/// The files that come with the application.
class Resources {
 public:
  virtual ~Resources() = default;

  /// The whole file `name`.`type`, or nothing when it is missing or cannot be read.
  virtual std::optional<std::string> read(std::string_view name, std::string_view type) const = 0;
};

class JsonParser {
 public:
  virtual ~JsonParser() = default;

  /// Nothing when `text` is no JSON.
  virtual std::optional<Value> parse(std::string_view text) const = 0;
};

class JsonWriter {
 public:
  virtual ~JsonWriter() = default;

  /// Indented JSON, the entries of dictionaries in their order. Nothing when the value holds what
  /// JSON has no form for: a number that is not finite, a date, a text that is not UTF-8.
  virtual std::optional<std::string> prettyPrinted(const Value& value) const = 0;
};

}  // namespace veyla
