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
  std::string_view name;
  double seconds = 0;
  /// The element that is gone; one that comes starts on the opposite side and moves the same way.
  ElementPose gone;

  /// The element `elapsed` seconds after the animation began, as it comes or goes.
  ElementPose poseAt(double elapsed, bool endsVisible) const;
};

/// Nothing for a name that no animation has.
std::optional<ViewAnimation> viewAnimation(std::string_view name);

}  // namespace veyla
