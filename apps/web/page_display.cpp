#include "apps/web/page_display.h"

#include "apps/web/page_shell.h"
#include "platform/web/page_fields.h"
#include "shell/view_animation.h"

namespace veyla {

using emscripten::val;

namespace {

/// Enough for the eye: the page draws straight ways between them.
constexpr int poseCount = 13;

val posesOf(const ViewAnimation& animation, bool endsVisible) {
  val poses = val::array();
  for (int i = 0; i < poseCount; ++i) {
    const double elapsed = animation.seconds * i / (poseCount - 1);
    poses.call<void>("push", animation.poseAt(elapsed, endsVisible));
  }
  return poses;
}

}  // namespace

EMSCRIPTEN_BINDINGS(page_display) { VEYLA_VALUE(ElementPose, opacity, scale, x, y); }

void PageDisplay::setText(Element element, const std::string& text) {
  page_.call<void>("setText", nameOf(element), text);
}

void PageDisplay::setFont(Element element, Font font) {
  page_.call<void>("setFont", nameOf(element), font.weight(), font.size);
}

void PageDisplay::setImage(Element element, std::string_view image) {
  page_.call<void>("setImage", nameOf(element), std::string(image));
}

void PageDisplay::setOpacity(Element element, double opacity) {
  page_.call<void>("setOpacity", nameOf(element), opacity);
}

void PageDisplay::setHidden(Element element, bool hidden) {
  page_.call<void>("setHidden", nameOf(element), hidden);
}

void PageDisplay::setShimmering(Element element, bool shimmering) {
  page_.call<void>("setShimmering", nameOf(element), shimmering);
}

void PageDisplay::animate(Element element, std::string_view animation, bool endsVisible,
                          std::function<void()> completion) {
  const auto played = viewAnimation(animation);
  if (!played) {
    setOpacity(element, endsVisible ? 1 : 0);
    if (completion) completion();
    return;
  }
  const int pending = pending_.keep([completion = std::move(completion)](int finished) {
    if (finished != 0 && completion) completion();
  });
  page_.call<void>("animate", nameOf(element), played->seconds, posesOf(*played, endsVisible),
                   endsVisible, pending);
}

void PageDisplay::setNeedsDisplay(Element element) {
  page_.call<void>("setNeedsDisplay", nameOf(element));
}

}  // namespace veyla
