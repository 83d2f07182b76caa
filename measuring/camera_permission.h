#pragma once

namespace veyla::Utils {

/// Whether the camera may be used; the log says why not.
bool isCameraAllowed();

}  // namespace veyla::Utils
