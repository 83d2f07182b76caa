#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/display.h"

namespace veyla {

/// A screen without views: remembers what every element shows. Animations are over at once.
class ScreenState : public Display {
 public:
  /// Called when anything to see has changed; may be empty.
  std::function<void()> changed;

  void setText(Element element, const std::string& text) override;
  void setFont(Element element, Font font) override;
  void setImage(Element element, std::string_view image) override;
  void setOpacity(Element element, double opacity) override;
  void setHidden(Element element, bool hidden) override;
  void setShimmering(Element element, bool shimmering) override;
  void animate(Element element, std::string_view animation, bool endsVisible,
               std::function<void()> completion) override;
  void setNeedsDisplay(Element element) override;

  struct View {
    std::string text;
    /// Of size 0 until one is set.
    Font font;
    std::string image;
    double opacity = 1;
    bool hidden = false;
    bool shimmering = false;

    bool isVisible() const { return !hidden && opacity > 0; }
  };

  /// The text of an element that can be seen; empty for one that cannot.
  std::string visibleText(Element element) const;
  const View& view(Element element) const;

 private:
  template <class Value>
  void set(Element element, Value View::*shown, const Value& value);
  void notify();

  std::map<std::string, View, std::less<>> views_;
};

}  // namespace veyla
