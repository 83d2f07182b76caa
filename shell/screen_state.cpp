#include "shell/screen_state.h"

namespace veyla {

void ScreenState::setText(Element element, const std::string& text) {
  at(element).text = text;
  notify();
}

void ScreenState::setFont(Element element, Font font) {
  at(element).font = font;
  notify();
}

void ScreenState::setImage(Element element, std::string_view image) {
  at(element).image = image;
  notify();
}

void ScreenState::setOpacity(Element element, double opacity) {
  at(element).opacity = opacity;
  notify();
}

void ScreenState::setHidden(Element element, bool hidden) {
  at(element).hidden = hidden;
  notify();
}

void ScreenState::setShimmering(Element element, bool shimmering) {
  at(element).shimmering = shimmering;
  notify();
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
