#pragma once

#include <cstdint>

namespace veyla {

/// One bin of a spectrum: its number and its magnitude.
struct FFTValue {
  std::int64_t index = 0;
  float value = 0;

  bool operator==(const FFTValue&) const = default;
};

}  // namespace veyla
