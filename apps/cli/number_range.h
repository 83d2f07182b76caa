#pragma once

#include <string>

#include "apps/cli/decimal.h"

namespace veyla {

/// What an option's number may be, both ends included.
struct NumberRange {
  double least;
  double most;

  /// False for not-a-number.
  bool holds(double value) const { return value >= least && value <= most; }

  /// "20 to 300".
  std::string text() const {
    std::string text;
    appendDecimal(text, least);
    text += " to ";
    appendDecimal(text, most);
    return text;
  }
};

}  // namespace veyla
