#pragma once

#include <emscripten/val.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/display.h"
#include "platform/main_queue.h"

namespace veyla {

/// One screen's elements in the page. What an animation leaves behind and when it is over is known
/// here, so that a page which is hidden, and draws nothing, goes through the same states.
class PageDisplay : public Display {
 public:
  /// `page` answers the operations by their names, elements named by a text;
  /// `animate(element, seconds, poses, endsVisible)` gets equidistant poses.
  PageDisplay(emscripten::val page, MainQueue& queue) : page_(std::move(page)), queue_(queue) {}

  void setText(Element element, const std::string& text) override;
  void setFont(Element element, Font font) override;
  void setImage(Element element, std::string_view image) override;
  void setOpacity(Element element, double opacity) override;
  void setHidden(Element element, bool hidden) override;
  void setShimmering(Element element, bool shimmering) override;
  void animate(Element element, std::string_view animation,
               std::function<void()> completion) override;
  void setNeedsDisplay(Element element) override;

 private:
  bool& shown(Element element) { return shown_.try_emplace(element.name, true).first->second; }

  emscripten::val page_;
  MainQueue& queue_;
  /// Whether an element can be seen, but for being hidden.
  std::map<std::string_view, bool> shown_;
};

}  // namespace veyla
