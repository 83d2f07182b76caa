#include "platform/linux/cairo_canvas.h"

#include <cairo/cairo-ft.h>
#include <fontconfig/fontconfig.h>

#include <cmath>
#include <new>

namespace veyla {

namespace {

void require(cairo_status_t status) {
  // Sizes are the caller's own and texts the program's, so only memory can be short.
  if (status != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
}

cairo_status_t append(void* png, const unsigned char* data, unsigned length) {
  try {
    static_cast<std::string*>(png)->append(data, data + length);
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
  return CAIRO_STATUS_SUCCESS;
}

cairo_font_face_t* makeFace(int weight) {
  FcPattern* pattern = FcPatternCreate();
  if (!pattern) throw std::bad_alloc();
  for (const char* family : {"Inter", "sans-serif"}) {
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
  }
  FcPatternAddInteger(pattern, FC_WEIGHT, FcWeightFromOpenType(weight));
  cairo_font_face_t* face = cairo_ft_font_face_create_for_pattern(pattern);
  FcPatternDestroy(pattern);
  require(cairo_font_face_status(face));
  return face;
}

}  // namespace

CairoCanvas::CairoCanvas(Size size, double density)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32,
                                          static_cast<int>(std::lround(size.width * density)),
                                          static_cast<int>(std::lround(size.height * density)))) {
  require(cairo_surface_status(surface_.get()));
  context_.reset(cairo_create(surface_.get()));
  require(cairo_status(context_.get()));
  cairo_scale(context_.get(), density, density);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_set_font_options(context_.get(), options);
  cairo_font_options_destroy(options);
}

std::string CairoCanvas::png() const {
  require(cairo_status(context_.get()));
  std::string png;
  require(cairo_surface_write_to_png_stream(surface_.get(), append, &png));
  return png;
}

int CairoCanvas::width() const { return cairo_image_surface_get_width(surface_.get()); }
int CairoCanvas::height() const { return cairo_image_surface_get_height(surface_.get()); }

void CairoCanvas::save() {
  cairo_save(context_.get());
  alphas_.push_back(alphas_.back());
}

void CairoCanvas::restore() {
  cairo_restore(context_.get());
  alphas_.pop_back();
}

void CairoCanvas::translate(double x, double y) { cairo_translate(context_.get(), x, y); }
void CairoCanvas::rotate(double radians) { cairo_rotate(context_.get(), radians); }
void CairoCanvas::scale(double x, double y) { cairo_scale(context_.get(), x, y); }
void CairoCanvas::multiplyAlpha(double alpha) { alphas_.back() *= alpha; }

void CairoCanvas::beginPath() { cairo_new_path(context_.get()); }
void CairoCanvas::moveTo(double x, double y) { cairo_move_to(context_.get(), x, y); }
void CairoCanvas::lineTo(double x, double y) { cairo_line_to(context_.get(), x, y); }

void CairoCanvas::arc(Point center, double radius, double from, double to) {
  cairo_arc(context_.get(), center.x, center.y, radius, from, to);
}

void CairoCanvas::arcNegative(Point center, double radius, double from, double to) {
  cairo_arc_negative(context_.get(), center.x, center.y, radius, from, to);
}

void CairoCanvas::closePath() { cairo_close_path(context_.get()); }

void CairoCanvas::fill(const Paint& paint) {
  std::visit([this](const auto& source) { setSource(source); }, paint);
  cairo_fill_preserve(context_.get());
}

void CairoCanvas::stroke(const Stroke& stroke) {
  setSource(stroke.color);
  cairo_set_line_width(context_.get(), stroke.width);
  cairo_set_line_cap(context_.get(),
                     stroke.cap == LineCap::round ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
  cairo_set_line_join(context_.get(), stroke.join == LineJoin::round ? CAIRO_LINE_JOIN_ROUND
                                                                     : CAIRO_LINE_JOIN_MITER);
  cairo_stroke_preserve(context_.get());
}

void CairoCanvas::clip() { cairo_clip_preserve(context_.get()); }

void CairoCanvas::drawText(const std::string& text, Point at, TextAlign align, const Font& font,
                           const Color& color) {
  const double width = measureText(text, font).width;
  const double before = align == TextAlign::left     ? 0
                        : align == TextAlign::center ? width / 2
                                                     : width;
  cairo_path_t* path = cairo_copy_path(context_.get());
  setSource(color);
  cairo_new_path(context_.get());
  cairo_move_to(context_.get(), at.x - before, at.y);
  // As outlines: shown as letters they would be moved to whole pixels, each its own way.
  cairo_text_path(context_.get(), text.c_str());
  cairo_fill(context_.get());
  cairo_append_path(context_.get(), path);
  cairo_path_destroy(path);
}

TextExtents CairoCanvas::measureText(const std::string& text, const Font& font) {
  selectFont(font);
  cairo_text_extents_t extents;
  cairo_text_extents(context_.get(), text.c_str(), &extents);
  return {.width = extents.x_advance,
          .ascent = -extents.y_bearing,
          .descent = extents.height + extents.y_bearing};
}

void CairoCanvas::setSource(const Color& color) {
  cairo_set_source_rgba(context_.get(), color.red, color.green, color.blue,
                        color.alpha * alphas_.back());
}

void CairoCanvas::setSource(const LinearGradient& gradient) {
  setSource(
      cairo_pattern_create_linear(gradient.from.x, gradient.from.y, gradient.to.x, gradient.to.y),
      gradient.stops);
}

void CairoCanvas::setSource(const RadialGradient& gradient) {
  const auto [x, y] = gradient.center;
  setSource(cairo_pattern_create_radial(x, y, 0, x, y, gradient.radius), gradient.stops);
}

void CairoCanvas::setSource(cairo_pattern_t* pattern, const std::vector<GradientStop>& stops) {
  for (const auto& [offset, color] : stops) {
    cairo_pattern_add_color_stop_rgba(pattern, offset, color.red, color.green, color.blue,
                                      color.alpha * alphas_.back());
  }
  cairo_set_source(context_.get(), pattern);
  cairo_pattern_destroy(pattern);
}

void CairoCanvas::selectFont(const Font& font) {
  auto& face = faces_[font.weight()];
  if (!face) face.reset(makeFace(font.weight()));
  cairo_set_font_face(context_.get(), face.get());
  cairo_set_font_size(context_.get(), static_cast<double>(font.size));
}

}  // namespace veyla
