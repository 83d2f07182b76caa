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

/// The views of one screen, as the core drives them. Where there is nothing to play, as with no
/// views attached, an animation is over at once.
class Display {
 public:
  virtual ~Display() = default;

  virtual void setText(Element element, const std::string& text) = 0;
  virtual void setFont(Element element, Font font) = 0;
  virtual void setImage(Element element, std::string_view image) = 0;
  /// 0 to 1. Cancels the element's animation, if one is under way, and its completion with it.
  virtual void setOpacity(Element element, double opacity) = 0;
  virtual void setHidden(Element element, bool hidden) = 0;
  virtual void setShimmering(Element element, bool shimmering) = 0;
  /// Plays a named animation ("fadeIn", "fadeOut", "zoomIn", "zoomOut", "slideLeft", "slideRight",
  /// "slideUp") by which the element comes or goes. `endsVisible` says which: the opacity is 1 or 0
  /// from now on, whatever the animation shows on the way. An element of opacity 0 that does not
  /// come shows nothing on the way.
  ///
  /// `completion`, which may be empty, is called once, at the animation's end. Both are cancelled
  /// by the element's next `animate` or `setOpacity`: a cancelled animation never completes.
  virtual void animate(Element element, std::string_view animation, bool endsVisible,
                       std::function<void()> completion) = 0;
  /// The widget's drawing is out of date.
  virtual void setNeedsDisplay(Element element) = 0;
};

}  // namespace veyla
