#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/main_queue.h"
#include "shell/screen_state.h"
#include "shell/view_animation.h"

namespace veyla {

/// What a person sees of a screen: what stands there, and what comes and goes in the queue's time,
/// or until a test ends it.
class RecorderDisplay : public ScreenState {
 public:
  explicit RecorderDisplay(MainQueue& queue) : queue_(queue) {}

  /// How often an element's drawing was out of date.
  std::map<std::string_view, int> redraws;
  /// What began to come or go, in its order.
  std::string begun;
  /// Animations end by `finishAnimation` alone.
  bool holdsAnimations = false;

  /// The animation by which an element comes or goes; empty for one at rest.
  std::string_view playing(Element element) const {
    const auto found = playing_.find(element.name);
    return found == playing_.end() ? std::string_view() : found->second.animation;
  }
  /// Whether there is anything to see of it, be it on its way.
  bool isSeen(Element element) const {
    const View& shown = view(element);
    const auto found = playing_.find(element.name);
    return !shown.hidden && (shown.opacity > 0 || (found != playing_.end() && found->second.seen));
  }

  std::size_t animations() const { return playing_.size(); }
  /// Ends one of those that play, in the order of their elements' names.
  void finishAnimation(std::size_t index) {
    finish(std::next(playing_.begin(), static_cast<std::ptrdiff_t>(index)));
  }

  void setOpacity(Element element, double opacity) override {
    playing_.erase(element.name);
    EXPECT_TRUE(opacity >= 0 && opacity <= 1) << element.name;
    ScreenState::setOpacity(element, opacity);
  }
  void animate(Element element, std::string_view animation, bool endsVisible,
               std::function<void()> completion) override {
    const bool seen = endsVisible || view(element).opacity > 0;
    setOpacity(element, endsVisible ? 1 : 0);
    const int number = ++number_;
    begun.append(element.name).append(" ");
    playing_[element.name] = {number, animation, seen, std::move(completion)};
    if (holdsAnimations) return;
    queue_.after(viewAnimation(animation).value().seconds, [this, element, number] {
      const auto found = playing_.find(element.name);
      if (found != playing_.end() && found->second.number == number) finish(found);
    });
  }
  void setNeedsDisplay(Element element) override { ++redraws[element.name]; }

 private:
  struct Animation {
    int number = 0;
    std::string_view animation;
    bool seen = false;
    std::function<void()> completion;
  };
  using Playing = std::map<std::string_view, Animation>;

  void finish(Playing::iterator animation) {
    const auto completion = std::move(animation->second.completion);
    playing_.erase(animation);
    if (completion) completion();
  }

  MainQueue& queue_;
  int number_ = 0;
  Playing playing_;
};

}  // namespace veyla
