#pragma once

#include <optional>
#include <string_view>

namespace veyla {

/// How an element differs from what it is at rest.
struct ElementPose {
  /// A factor.
  double opacity = 1;
  /// About the element's centre.
  double scale = 1;
  /// In points, to the right and downward.
  double x = 0;
  double y = 0;

  bool operator==(const ElementPose&) const = default;
};

/// One of the named animations of the screens' elements.
struct ViewAnimation {
  enum class Effect {
    /// The element comes, and stays.
    enters,
    /// The element goes, and stays away.
    leaves,
    /// An element that can be seen goes, another comes.
    swaps,
  };

  std::string_view name;
  double seconds = 0;
  Effect effect = Effect::enters;
  /// The element that is gone; one that comes starts on the opposite side and moves the same way.
  ElementPose gone;

  /// Whether an element can be seen afterwards.
  bool endsVisible(bool isVisible) const;
  /// The element `elapsed` seconds after the animation began, when it was visible then or not.
  ElementPose poseAt(double elapsed, bool wasVisible) const;
};

/// Nothing for a name that no animation has.
std::optional<ViewAnimation> viewAnimation(std::string_view name);

}  // namespace veyla
