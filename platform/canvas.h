#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/color.h"
#include "platform/font.h"

namespace veyla {

/// Lengths are in points, whatever the density of the pixels. x grows to the right, y downward.
struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  Point center() const { return {x + width / 2, y + height / 2}; }
  bool operator==(const Rect&) const = default;
};

struct GradientStop {
  /// 0 to 1, ascending.
  double offset = 0;
  Color color;

  bool operator==(const GradientStop&) const = default;
};

/// Outside the stops the nearest one's colour goes on.
struct LinearGradient {
  Point from;
  Point to;
  std::vector<GradientStop> stops;

  bool operator==(const LinearGradient&) const = default;
};

/// From the centre outward.
struct RadialGradient {
  Point center;
  double radius = 0;
  std::vector<GradientStop> stops;

  bool operator==(const RadialGradient&) const = default;
};

using Paint = std::variant<Color, LinearGradient, RadialGradient>;

enum class LineCap { butt, round };
enum class LineJoin { miter, round };

struct Stroke {
  Color color;
  double width = 1;
  LineCap cap = LineCap::butt;
  LineJoin join = LineJoin::miter;

  bool operator==(const Stroke&) const = default;
};

/// Which part of a text stands at the given point.
enum class TextAlign { left, center, right };

struct TextExtents {
  /// How far the text moves on.
  double width = 0;
  /// How far its ink reaches above and below the baseline; both are positive there.
  double ascent = 0;
  double descent = 0;
};

/// A surface that the widgets draw themselves on.
///
/// Angles are in radians, from the direction of x toward that of y: clockwise as seen, 0 to the
/// right. Transformations apply to what follows, the innermost last. Paths are filled by the
/// non-zero rule.
class Canvas {
 public:
  virtual ~Canvas() = default;

  /// Keeps the transformation, the clip and the alpha, and brings the last ones kept back.
  virtual void save() = 0;
  virtual void restore() = 0;

  virtual void translate(double x, double y) = 0;
  virtual void rotate(double radians) = 0;
  virtual void scale(double x, double y) = 0;
  /// Makes what follows more transparent by this factor, 0 to 1. It applies to each shape alone.
  virtual void multiplyAlpha(double alpha) = 0;

  /// A path begins empty and stays until the next begins; filling or stroking leaves it.
  virtual void beginPath() = 0;
  virtual void moveTo(double x, double y) = 0;
  virtual void lineTo(double x, double y) = 0;
  /// Clockwise from one angle to another that is not smaller; a line leads there from where the
  /// path stands.
  virtual void arc(Point center, double radius, double from, double to) = 0;
  /// The same counter-clockwise to an angle that is not larger.
  virtual void arcNegative(Point center, double radius, double from, double to) = 0;
  virtual void closePath() = 0;

  virtual void fill(const Paint& paint) = 0;
  virtual void stroke(const Stroke& stroke) = 0;
  /// What follows shows inside the path alone, until the restore.
  virtual void clip() = 0;

  /// `at` is on the baseline. The text is UTF-8, one line.
  virtual void drawText(const std::string& text, Point at, TextAlign align, const Font& font,
                        const Color& color) = 0;
  virtual TextExtents measureText(const std::string& text, const Font& font) = 0;
};

}  // namespace veyla
