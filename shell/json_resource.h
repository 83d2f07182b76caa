#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace veyla::Utils {

/// The contents of the local JSON resource; null when it is missing or broken.
inline Value jsonResource(std::string_view name) {
  const auto text = services().resources.read(name, "json");
  return text ? services().json.parse(*text).value_or(Value()) : Value();
}

/// Empty for what is no text.
inline std::string textOf(const Value& value) {
  return value.text() ? *value.text() : std::string();
}

}  // namespace veyla::Utils
