#pragma once

#include <string>
#include <vector>

#include "acquisition/frame_averaging.h"
#include "platform/capture.h"
#include "platform/resources.h"

namespace veyla {

/// Averages frames as a measurement with these settings on this hardware model does.
class FrameAverager : public SampleBufferDelegate {
 public:
  FrameAverager(const Resources& resources, const std::string& device);

  void captureOutput(PixelBuffer& didOutputSampleBuffer) override;
  void captureOutput(const FrameSample& didOutputSample) override;
  void captureOutput(const AveragedFrame& didOutputFrame) override { frame_ = didOutputFrame; }
  void captureOutput(DroppedSample) override {}
  std::size_t rowStep(std::size_t height) const override {
    return averagesWholeFrame_ ? 1 : GridAverager::rowStep(height);
  }

  /// The last one.
  const AveragedFrame& frame() const { return frame_; }

 private:
  bool averagesWholeFrame_;
  std::vector<int> cells_;
  GridAverager averager_;
  AveragedFrame frame_;
};

}  // namespace veyla
