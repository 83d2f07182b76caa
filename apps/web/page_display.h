#pragma once

#include <emscripten/val.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/display.h"
#include "platform/web/pending.h"

namespace veyla {

/// One screen's elements in the page.
class PageDisplay : public Display {
 public:
  /// `page` answers the operations by their names, elements named by a text.
  /// `animate(element, seconds, poses, endsVisible, pending)` gets equidistant poses; answered with
  /// 1 when the animation is over, with 0 when it was cancelled.
  PageDisplay(emscripten::val page, Pending& pending) : page_(std::move(page)), pending_(pending) {}

  void setText(Element element, const std::string& text) override;
  void setFont(Element element, Font font) override;
  void setImage(Element element, std::string_view image) override;
  void setOpacity(Element element, double opacity) override;
  void setHidden(Element element, bool hidden) override;
  void setShimmering(Element element, bool shimmering) override;
  void animate(Element element, std::string_view animation, bool endsVisible,
               std::function<void()> completion) override;
  void setNeedsDisplay(Element element) override;

 private:
  emscripten::val page_;
  Pending& pending_;
};

}  // namespace veyla
