#pragma once

#include <memory>
#include <string>

#include "platform/canvas.h"

namespace veyla {

/// A canvas of pixels that becomes a PNG. It begins transparent.
class Picture : public Canvas {
 public:
  /// The picture so far, as the contents of a PNG file. Throws `std::bad_alloc`.
  virtual std::string png() const = 0;
};

/// What draws pictures, and knows what letters look like.
struct Pictures {
  /// An empty one; `density` is in pixels per point. Throws `std::bad_alloc` where there is no room
  /// for the pixels.
  std::unique_ptr<Picture> (*make)(Size size, double density);
  /// As `drawable` in `platform/linux/fonts.h`.
  std::string (*drawable)(const std::string& text);
};

/// The ones there are. The program opens them as a module when they are first asked for; tests and
/// tools are linked with them.
const Pictures& pictures();

}  // namespace veyla
