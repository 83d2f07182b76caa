#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/display.h"

namespace veyla {

/// An animation of one element, and what changes just before it, while the element is gone.
struct AnimationStep {
  Element element;
  std::string_view animation;
  bool endsVisible = false;
  std::function<void()> change = {};
};

/// Animations that follow one another: each begins when the one before it is over.
///
/// They belong to what was presented when they were asked for. Each presentation settles those of
/// the one before first: what they had still to do is not done, their elements stand as they would
/// in the end, but nothing changes with them.
class AnimationChains {
 public:
  explicit AnimationChains(Display& display) : display_(display) {}

  void play(std::vector<AnimationStep> steps);
  void settle();

 private:
  struct Chain {
    std::vector<AnimationStep> steps;
    /// The step that is playing.
    std::size_t at = 0;
  };

  void playStep(const std::shared_ptr<Chain>& chain);

  Display& display_;
  /// Those whose last step has not begun.
  std::vector<std::shared_ptr<Chain>> chains_;
};

}  // namespace veyla
