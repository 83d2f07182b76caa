#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/font.h"

namespace veyla {

/// A named part of a screen: a label, a button, a panel, a widget.
struct Element {
  std::string_view name;

  bool operator==(const Element&) const = default;
};

/// The views of one screen, as the core drives them. With no views attached nothing happens, and
/// an animation completes at once.
class Display {
 public:
  virtual ~Display() = default;

  virtual void setText(Element element, const std::string& text) = 0;
  virtual void setFont(Element element, Font font) = 0;
  virtual void setImage(Element element, std::string_view image) = 0;
  /// 0 to 1.
  virtual void setOpacity(Element element, double opacity) = 0;
  virtual void setHidden(Element element, bool hidden) = 0;
  virtual void setShimmering(Element element, bool shimmering) = 0;
  /// Plays a named animation ("fadeIn", "fadeOut", "zoomIn", "zoomOut", "slideLeft", "slideRight",
  /// "slideUp"); `completion` may be empty.
  virtual void animate(Element element, std::string_view animation,
                       std::function<void()> completion) = 0;
  /// The widget's drawing is out of date.
  virtual void setNeedsDisplay(Element element) = 0;
};

}  // namespace veyla
