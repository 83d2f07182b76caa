#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/canvas.h"

namespace veyla {

/// Writes drawings down for the page, which plays them on a Canvas 2D: one crossing a drawing and
/// not one a line.
///
/// A drawing is a list of numbers, each command followed by its arguments in the order of the
/// interface, and a list of texts. Colours are four numbers; a paint and the enumerations begin
/// with the number of their kind; a list begins with its length; a font is its size and its weight;
/// a text is its place in the list of texts.
class CommandCanvas : public Canvas {
 public:
  enum class Command {
    save,
    restore,
    translate,
    rotate,
    scale,
    multiplyAlpha,
    beginPath,
    moveTo,
    lineTo,
    arc,
    arcNegative,
    closePath,
    fill,
    stroke,
    clip,
    drawText,
  };

  using MeasureText = std::function<TextExtents(const std::string& text, const Font& font)>;

  explicit CommandCanvas(MeasureText measure) : measure_(std::move(measure)) {}

  /// Begins an empty drawing.
  void clear();
  const std::vector<double>& numbers() const { return numbers_; }
  const std::vector<std::string>& texts() const { return texts_; }

  void save() override { write(Command::save); }
  void restore() override { write(Command::restore); }
  void translate(double x, double y) override { write(Command::translate, x, y); }
  void rotate(double radians) override { write(Command::rotate, radians); }
  void scale(double x, double y) override { write(Command::scale, x, y); }
  void multiplyAlpha(double alpha) override { write(Command::multiplyAlpha, alpha); }
  void beginPath() override { write(Command::beginPath); }
  void moveTo(double x, double y) override { write(Command::moveTo, x, y); }
  void lineTo(double x, double y) override { write(Command::lineTo, x, y); }
  void arc(Point center, double radius, double from, double to) override {
    write(Command::arc, center.x, center.y, radius, from, to);
  }
  void arcNegative(Point center, double radius, double from, double to) override {
    write(Command::arcNegative, center.x, center.y, radius, from, to);
  }
  void closePath() override { write(Command::closePath); }
  void fill(const Paint& paint) override;
  void stroke(const Stroke& stroke) override;
  void clip() override { write(Command::clip); }
  void drawText(const std::string& text, Point at, TextAlign align, const Font& font,
                const Color& color) override;
  TextExtents measureText(const std::string& text, const Font& font) override;

 private:
  template <class... Numbers>
  void write(Command command, Numbers... numbers) {
    numbers_.push_back(static_cast<double>(command));
    (numbers_.push_back(numbers), ...);
  }
  void write(const Color& color);
  void write(const std::vector<GradientStop>& stops);

  MeasureText measure_;
  std::vector<double> numbers_;
  std::vector<std::string> texts_;
  /// A dial asks for the same few texts at every redraw.
  std::map<std::pair<std::string, std::pair<float, int>>, TextExtents> measured_;
};

}  // namespace veyla
