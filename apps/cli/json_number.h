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

}  // namespace veyla
