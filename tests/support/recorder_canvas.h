#pragma once

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <variant>
#include <vector>

#include "platform/canvas.h"

namespace veyla {

inline constexpr double degree = std::numbers::pi / 180;

/// Remembers what is drawn, in the coordinates of the whole canvas, with alphas multiplied in. A
/// letter is half as wide as its font and seven tenths as high.
class RecorderCanvas : public Canvas {
 public:
  struct Arc {
    Point center;
    double radius = 0;
    double from = 0;
    double to = 0;
    bool negative = false;
  };
  /// A path that was filled or stroked: the corners it goes through, and its arcs.
  struct Shape {
    std::vector<Point> points;
    std::vector<Arc> arcs;
    std::variant<Paint, Stroke> with;
    double alpha = 1;

    bool isStroke() const { return std::holds_alternative<Stroke>(with); }
    /// Of a gradient, the first.
    Color color() const {
      if (isStroke()) return std::get<Stroke>(with).color;
      const auto& paint = std::get<Paint>(with);
      const auto* gradient = std::get_if<LinearGradient>(&paint);
      return gradient ? gradient->stops.front().color : std::get<Color>(paint);
    }
  };
  struct Text {
    std::string text;
    Point at;
    Font font;
    Color color;
  };

  std::vector<Shape> shapes;
  std::vector<Text> texts;

  const Text* find(const std::string& text) const {
    for (const Text& each : texts) {
      if (each.text == text) return &each;
    }
    return nullptr;
  }

  void save() override { kept_.push_back(now_); }
  void restore() override {
    now_ = kept_.back();
    kept_.pop_back();
  }
  void translate(double x, double y) override { now_.origin = placed(x, y); }
  void rotate(double radians) override { now_.angle += radians; }
  void scale(double x, double /*y*/) override { now_.scale *= x; }
  void multiplyAlpha(double alpha) override { now_.alpha *= alpha; }

  void beginPath() override { path_ = {}; }
  void moveTo(double x, double y) override { path_.points.push_back(placed(x, y)); }
  void lineTo(double x, double y) override { path_.points.push_back(placed(x, y)); }
  void arc(Point center, double radius, double from, double to) override {
    addArc(center, radius, from, to, false);
  }
  void arcNegative(Point center, double radius, double from, double to) override {
    addArc(center, radius, from, to, true);
  }
  void closePath() override {}
  void fill(const Paint& paint) override { add(paint); }
  void stroke(const Stroke& stroke) override { add(stroke); }
  void clip() override {}

  void drawText(const std::string& text, Point at, TextAlign /*align*/, const Font& font,
                const Color& color) override {
    texts.push_back({text, placed(at.x, at.y), font, color});
  }
  TextExtents measureText(const std::string& text, const Font& font) override {
    const auto size = static_cast<double>(font.size);
    return {size / 2 * static_cast<double>(text.size()), 0.7 * size, 0};
  }

 private:
  struct State {
    Point origin;
    double angle = 0;
    double scale = 1;
    double alpha = 1;
  };

  Point placed(double x, double y) const {
    const double sine = std::sin(now_.angle) * now_.scale;
    const double cosine = std::cos(now_.angle) * now_.scale;
    return {now_.origin.x + cosine * x - sine * y, now_.origin.y + sine * x + cosine * y};
  }
  void addArc(Point center, double radius, double from, double to, bool negative) {
    path_.arcs.push_back({placed(center.x, center.y), radius * now_.scale, from + now_.angle,
                          to + now_.angle, negative});
  }
  void add(std::variant<Paint, Stroke> with) {
    shapes.push_back(path_);
    shapes.back().with = std::move(with);
    shapes.back().alpha = now_.alpha;
  }

  State now_;
  std::vector<State> kept_;
  Shape path_;
};

}  // namespace veyla
