#pragma once

#include "platform/frame_colours.h"

namespace veyla {

/// Receives one frame record per delivered frame, on the main thread.
class VideoDelegate {
 public:
  virtual ~VideoDelegate() = default;

  /// Channel averages and pulse value of the frame, each in 0 to 255.
  virtual void updateMeasurementsWithRed(float red, float green, float blue, float hr) = 0;

  // Beside the record, for whoever judges the finger and not for the estimates.

  /// The colours of the frame whose record follows.
  virtual void frameColours(const FrameColours& /*colours*/) {}
  /// A frame did not come.
  virtual void frameDropped() {}
};

}  // namespace veyla
