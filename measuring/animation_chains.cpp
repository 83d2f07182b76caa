#include "measuring/animation_chains.h"

#include <algorithm>
#include <utility>

namespace veyla {

void AnimationChains::play(std::vector<AnimationStep> steps) {
  std::erase_if(chains_, [&](const auto& chain) {
    const bool meet = std::any_of(steps.begin(), steps.end(), [&](const AnimationStep& step) {
      return std::any_of(chain->steps.begin(), chain->steps.end(),
                         [&](const AnimationStep& other) { return other.element == step.element; });
    });
    if (meet) settle(*chain);
    return meet;
  });
  playStep(std::make_shared<Chain>(Chain{std::move(steps)}));
}

void AnimationChains::settle() {
  for (const auto& chain : std::exchange(chains_, {})) settle(*chain);
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

void AnimationChains::settle(const Chain& chain) {
  for (std::size_t i = chain.at; i < chain.steps.size(); ++i) {
    display_.setOpacity(chain.steps[i].element, chain.steps[i].endsVisible ? 1 : 0);
  }
}

}  // namespace veyla
