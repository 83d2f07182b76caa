#include "platform/web/command_canvas.h"

namespace veyla {

void CommandCanvas::clear() {
  numbers_.clear();
  texts_.clear();
}

void CommandCanvas::fill(const Paint& paint) {
  write(Command::fill, static_cast<double>(paint.index()));
  if (const auto* color = std::get_if<Color>(&paint)) {
    write(*color);
  } else if (const auto* linear = std::get_if<LinearGradient>(&paint)) {
    numbers_.insert(numbers_.end(), {linear->from.x, linear->from.y, linear->to.x, linear->to.y});
    write(linear->stops);
  } else if (const auto* radial = std::get_if<RadialGradient>(&paint)) {
    numbers_.insert(numbers_.end(), {radial->center.x, radial->center.y, radial->radius});
    write(radial->stops);
  }
}

void CommandCanvas::stroke(const Stroke& stroke) {
  write(Command::stroke, stroke.width, static_cast<double>(stroke.cap),
        static_cast<double>(stroke.join));
  write(stroke.color);
}

void CommandCanvas::drawText(const std::string& text, Point at, TextAlign align, const Font& font,
                             const Color& color) {
  write(Command::drawText, static_cast<double>(texts_.size()), at.x, at.y,
        static_cast<double>(align), static_cast<double>(font.size),
        static_cast<double>(font.weight()));
  write(color);
  texts_.push_back(text);
}

TextExtents CommandCanvas::measureText(const std::string& text, const Font& font) {
  const auto [place, isNew] = measured_.try_emplace({text, {font.size, font.weight()}});
  if (isNew) place->second = measure_(text, font);
  return place->second;
}

void CommandCanvas::write(const Color& color) {
  numbers_.insert(numbers_.end(), {color.red, color.green, color.blue, color.alpha});
}

void CommandCanvas::write(const std::vector<GradientStop>& stops) {
  numbers_.push_back(static_cast<double>(stops.size()));
  for (const auto& [offset, color] : stops) {
    numbers_.push_back(offset);
    write(color);
  }
}

}  // namespace veyla
