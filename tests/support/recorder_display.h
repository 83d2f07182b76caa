#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/display.h"
#include "platform/format.h"
#include "tests/support/journal.h"

namespace veyla {

/// Remembers what each element shows; every call stands in the journal as "display …". Animations
/// complete at once unless a test holds them.
class RecorderDisplay : public Display {
 public:
  explicit RecorderDisplay(Journal& journal) : journal_(journal) {}

  std::map<std::string_view, std::string> texts;
  std::map<std::string_view, Font> fonts;
  std::map<std::string_view, bool> shimmering;
  /// How often an element's drawing was out of date.
  std::map<std::string_view, int> redraws;
  bool holdsAnimations = false;

  void finishAnimations() {
    holdsAnimations = false;
    for (const auto& completion : std::exchange(held_, {})) completion();
  }

  void setText(Element element, const std::string& text) override {
    texts[element.name] = text;
    record(element, "text " + text);
  }
  void setFont(Element element, Font font) override {
    fonts[element.name] = font;
    record(element, formatText("font %s %g", std::string(font.name).c_str(),
                               static_cast<double>(font.size)));
  }
  void setImage(Element element, std::string_view image) override {
    record(element, "image " + std::string(image));
  }
  void setOpacity(Element element, double opacity) override {
    record(element, formatText("opacity %g", opacity));
  }
  void setHidden(Element element, bool hidden) override {
    record(element, hidden ? "hidden" : "shown");
  }
  void setShimmering(Element element, bool shimmers) override {
    shimmering[element.name] = shimmers;
    record(element, shimmers ? "shimmers" : "stops shimmering");
  }
  void animate(Element element, std::string_view animation, bool /*endsVisible*/,
               std::function<void()> completion) override {
    record(element, std::string(animation));
    if (!completion) return;
    if (holdsAnimations) {
      held_.push_back(std::move(completion));
    } else {
      completion();
    }
  }
  void setNeedsDisplay(Element element) override { ++redraws[element.name]; }

 private:
  void record(Element element, const std::string& what) {
    journal_.add("display " + std::string(element.name) + ' ' + what);
  }

  std::vector<std::function<void()>> held_;
  Journal& journal_;
};

}  // namespace veyla
