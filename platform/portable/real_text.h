#pragma once

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

/// Real numbers as texts that read back as the same number, and those texts alone: decimal ones
/// within the type's range, and "inf". Not-a-number has none.
namespace veyla {

/// Whether a conversion may look at the text: they take more than such texts, and not all the same.
inline bool mayBeReal(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  if (text == "inf") return true;
  const bool hasStart =
      text.starts_with('.') || (!text.empty() && text[0] >= '0' && text[0] <= '9');
  return hasStart && text.find_first_not_of(".0123456789eE+-") == std::string_view::npos;
}

/// By the conversions of C, which are all that WebAssembly's library has.
struct RealTextByC {
  template <class Real>
  static std::string shortest(Real value) {
    char digits[40];
    for (int precision = std::numeric_limits<Real>::digits10;; ++precision) {
      std::snprintf(digits, sizeof digits, "%.*g", precision, static_cast<double>(value));
      const bool isLast = precision >= std::numeric_limits<Real>::max_digits10;
      if (isLast || numberAt(digits, nullptr, value) == value) return digits;
    }
  }

  /// Whether the whole text is such a number; else the value stays as it is.
  template <class Real>
  static bool read(std::string_view text, Real& value) {
    if (!mayBeReal(text)) return false;
    const std::string terminated(text);
    char* end = nullptr;
    errno = 0;
    const Real read = numberAt(terminated.c_str(), &end, value);
    // Small numbers of few digits are told as out of range, too.
    const bool isBeyondRange = errno == ERANGE && (std::isinf(read) || read == 0);
    if (end != terminated.c_str() + terminated.size() || isBeyondRange) return false;
    value = read;
    return true;
  }

 private:
  static float numberAt(const char* text, char** end, float) { return std::strtof(text, end); }
  static double numberAt(const char* text, char** end, double) { return std::strtod(text, end); }
};

#ifdef __cpp_lib_to_chars
/// By those of C++, ten times as fast.
struct RealTextByCpp {
  template <class Real>
  static std::string shortest(Real value) {
    char digits[40];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
  }

  template <class Real>
  static bool read(std::string_view text, Real& value) {
    if (!mayBeReal(text)) return false;
    Real read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    value = read;
    return true;
  }
};
using RealText = RealTextByCpp;
#else
using RealText = RealTextByC;
#endif

}  // namespace veyla
