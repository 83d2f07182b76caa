#include "shell/screen_state.h"

namespace veyla {

template <class Value>
void ScreenState::set(Element element, Value View::*shown, const Value& value) {
  views_[std::string(element.name)].*shown = value;
  notify();
}

void ScreenState::setText(Element element, const std::string& text) {
  set(element, &View::text, text);
}

void ScreenState::setFont(Element element, Font font) { set(element, &View::font, font); }

void ScreenState::setImage(Element element, std::string_view image) {
  set(element, &View::image, std::string(image));
}

void ScreenState::setOpacity(Element element, double opacity) {
  set(element, &View::opacity, opacity);
}

void ScreenState::setHidden(Element element, bool hidden) { set(element, &View::hidden, hidden); }

void ScreenState::setShimmering(Element element, bool shimmering) {
  set(element, &View::shimmering, shimmering);
}

void ScreenState::animate(Element element, std::string_view /*animation*/, bool endsVisible,
                          std::function<void()> completion) {
  setOpacity(element, endsVisible ? 1 : 0);
  if (completion) completion();
}

void ScreenState::setNeedsDisplay(Element /*element*/) { notify(); }

std::string ScreenState::visibleText(Element element) const {
  const View& shown = view(element);
  return shown.isVisible() ? shown.text : std::string();
}

const ScreenState::View& ScreenState::view(Element element) const {
  static const View untouched;
  const auto found = views_.find(element.name);
  return found == views_.end() ? untouched : found->second;
}

void ScreenState::notify() {
  if (changed) changed();
}

}  // namespace veyla
