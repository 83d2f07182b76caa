#pragma once

#include <string_view>

namespace veyla {

/// A family with its weight behind a dash, such as "HelveticaNeue-Light". Where a machine lacks the
/// family, a sans-serif face of that weight stands in.
struct Font {
  std::string_view name;
  /// In points.
  float size = 0;

  /// As CSS and OpenType count: 300 light, 400 regular, 500 medium, 700 bold. Unknown ones are 400.
  int weight() const {
    if (name.ends_with("-Light")) return 300;
    if (name.ends_with("-Medium")) return 500;
    if (name.ends_with("-Bold")) return 700;
    return 400;
  }

  bool operator==(const Font&) const = default;
};

}  // namespace veyla
