#include "apps/cli/screen_state.h"

namespace veyla {

void ScreenState::setText(Element element, const std::string& text) {
  at(element).text = text;
  notify();
}

// A terminal has one font and no pictures.
void ScreenState::setFont(Element /*element*/, Font /*font*/) {}
void ScreenState::setImage(Element /*element*/, std::string_view /*image*/) {}

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

void ScreenState::animate(Element element, std::string_view animation,
                          std::function<void()> completion) {
  if (animation == "fadeOut") at(element).opacity = 0;
  if (animation == "fadeIn") at(element).opacity = 1;
  notify();
  if (completion) completion();
}

void ScreenState::setNeedsDisplay(Element /*element*/) { notify(); }

std::string ScreenState::visibleText(Element element) const {
  const View& shown = view(element);
  return shown.hidden || shown.opacity <= 0 ? std::string() : shown.text;
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
