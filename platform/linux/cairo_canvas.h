#pragma once

#include <cairo/cairo.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/pictures.h"

namespace veyla {

/// Texts are set in Inter where the machine has it, else in its own sans-serif; hinting is off, so
/// that a picture is the same at every density.
class CairoCanvas : public Picture {
 public:
  /// As `Pictures::make`.
  CairoCanvas(Size size, double density);

  std::string png() const override;

  /// In pixels.
  int width() const;
  int height() const;

  void save() override;
  void restore() override;
  void translate(double x, double y) override;
  void rotate(double radians) override;
  void scale(double x, double y) override;
  void multiplyAlpha(double alpha) override;
  void beginPath() override;
  void moveTo(double x, double y) override;
  void lineTo(double x, double y) override;
  void arc(Point center, double radius, double from, double to) override;
  void arcNegative(Point center, double radius, double from, double to) override;
  void closePath() override;
  void fill(const Paint& paint) override;
  void stroke(const Stroke& stroke) override;
  void clip() override;
  void drawText(const std::string& text, Point at, TextAlign align, const Font& font,
                const Color& color) override;
  TextExtents measureText(const std::string& text, const Font& font) override;

 private:
  struct Release {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_font_face_t* face) const { cairo_font_face_destroy(face); }
  };

  void setSource(const Color& color);
  void setSource(const LinearGradient& gradient);
  void setSource(const RadialGradient& gradient);
  void setSource(cairo_pattern_t* pattern, const std::vector<GradientStop>& stops);
  void selectFont(const Font& font);

  std::unique_ptr<cairo_surface_t, Release> surface_;
  std::unique_ptr<cairo_t, Release> context_;
  /// By weight.
  std::map<int, std::unique_ptr<cairo_font_face_t, Release>> faces_;
  /// The present one last, the ones kept before it.
  std::vector<double> alphas_{1};
};

}  // namespace veyla
