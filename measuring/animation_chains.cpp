#include "measuring/animation_chains.h"

#include <utility>

namespace veyla {

void AnimationChains::play(std::vector<AnimationStep> steps) {
  playStep(std::make_shared<Chain>(Chain{std::move(steps)}));
}

void AnimationChains::settle() {
  for (const auto& chain : std::exchange(chains_, {})) {
    for (std::size_t i = chain->at; i < chain->steps.size(); ++i) {
      display_.setOpacity(chain->steps[i].element, chain->steps[i].endsVisible ? 1 : 0);
    }
  }
}

void AnimationChains::playStep(const std::shared_ptr<Chain>& chain) {
  const AnimationStep& step = chain->steps[chain->at];
  if (step.change) step.change();
  if (chain->at + 1 == chain->steps.size()) {
    std::erase(chains_, chain);
    display_.animate(step.element, step.animation, step.endsVisible, {});
    return;
  }
  if (chain->at == 0) chains_.push_back(chain);
  display_.animate(step.element, step.animation, step.endsVisible,
                   [this, weak = std::weak_ptr(chain)] {
                     const auto played = weak.lock();
                     if (!played) return;
                     ++played->at;
                     playStep(played);
                   });
}

}  // namespace veyla
