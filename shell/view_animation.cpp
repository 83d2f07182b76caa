#include "shell/view_animation.h"

#include <algorithm>
#include <array>

namespace veyla {

namespace {

/// Slides are short ways: what they show changes place, it does not travel across the screen.
constexpr double slide = 60;

constexpr std::array<ViewAnimation, 7> animations{{
    {"fadeIn", 0.3, {.opacity = 0}},
    {"fadeOut", 0.3, {.opacity = 0}},
    {"zoomIn", 0.35, {.opacity = 0, .scale = 0.6}},
    {"zoomOut", 0.25, {.opacity = 0, .scale = 0.6}},
    {"slideLeft", 0.3, {.opacity = 0, .x = -slide}},
    {"slideRight", 0.3, {.opacity = 0, .x = slide}},
    {"slideUp", 0.3, {.opacity = 0, .y = -slide}},
}};

}  // namespace

ElementPose ViewAnimation::poseAt(double elapsed, bool endsVisible) const {
  const double part = std::clamp(elapsed / seconds, 0.0, 1.0);
  // What comes slows down into its place, what goes gathers speed.
  const double away = endsVisible ? (1 - part) * (1 - part) : part * part;
  const double direction = endsVisible ? -1 : 1;
  return {.opacity = 1 + (gone.opacity - 1) * away,
          .scale = 1 + (gone.scale - 1) * away,
          .x = direction * gone.x * away,
          .y = direction * gone.y * away};
}

std::optional<ViewAnimation> viewAnimation(std::string_view name) {
  const auto* const found = std::find_if(animations.begin(), animations.end(),
                                         [&](const auto& each) { return each.name == name; });
  return found == animations.end() ? std::nullopt : std::optional(*found);
}

}  // namespace veyla
