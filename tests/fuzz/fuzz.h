#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "tests/linux/scratch.h"

/// What the fuzzed programs share.
namespace veyla {

/// States what must hold whatever the input is. Each program has its own.
void fuzz(std::string_view input);

/// What ends the run, and leaves the input to be looked at.
inline void must(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what.c_str());
  std::abort();
}

/// The bytes as a row of choices; zeros at the end.
class Choices {
 public:
  explicit Choices(std::string_view bytes) : bytes_(bytes) {}

  std::size_t left() const { return bytes_.size(); }
  /// One of at most 256.
  std::size_t pick(std::size_t count) { return next<std::uint8_t>() % count; }
  template <class Number>
  Number next() {
    Number number{};
    const std::size_t size = std::min(bytes_.size(), sizeof number);
    std::memcpy(&number, bytes_.data(), size);
    bytes_.remove_prefix(size);
    return number;
  }

 private:
  std::string_view bytes_;
};

/// A file of these contents; there is one at a time.
inline std::string fileOf(std::string_view contents) {
  static const ScratchFolder folder;
  return folder.write("input", std::string(contents));
}

}  // namespace veyla
