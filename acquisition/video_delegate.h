#pragma once

namespace veyla {

/// Receives one frame record per delivered frame, on the main thread.
class VideoDelegate {
 public:
  virtual ~VideoDelegate() = default;

  /// Channel averages and pulse value of the frame, each in 0 to 255.
  virtual void updateMeasurementsWithRed(float red, float green, float blue, float hr) = 0;
};

}  // namespace veyla
