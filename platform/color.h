#pragma once

namespace veyla {

/// A colour in sRGB; each component in 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  bool operator==(const Color&) const = default;
};

inline constexpr Color black{0, 0, 0, 1};
inline constexpr Color white{1, 1, 1, 1};
inline constexpr Color pureRed{1, 0, 0, 1};
inline constexpr Color transparent{0, 0, 0, 0};

/// The red of alerts, rings and the page indicator.
inline constexpr Color accentRed{200.0 / 255, 2.0 / 255, 0, 1};

}  // namespace veyla
