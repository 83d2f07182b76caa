#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/format.h"

namespace veyla {

/// With the seven digits that a single-precision value has; null for what is not finite.
inline nlohmann::ordered_json jsonNumber(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::stod(formatText("%.7g", value));
}

/// As text, indented by so many blanks or in one line. What is not UTF-8, as a file's name need not
/// be, becomes U+FFFD.
inline std::string jsonText(const nlohmann::ordered_json& json, int indentation = -1) {
  return json.dump(indentation, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
         '\n';
}

}  // namespace veyla
