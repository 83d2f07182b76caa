#include "apps/cli/frame_averager.h"

#include "acquisition/settings.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

/// The cells that a device of this profile averages.
std::vector<int> measuredCells(const Resources& resources, const std::string& profile) {
  const auto text = resources.read("Spo2Settings", "json");
  const Value resource = NlohmannJsonParser().parse(text.value_or("")).value_or(Value());
  std::vector<int> cells;
  if (const Value* entry = Utils::entryFor(profile, resource)) {
    Utils::appendCells((*entry)["grids"], cells);
  }
  return cells;
}

}  // namespace

FrameAverager::FrameAverager(const Resources& resources, const std::string& device)
    : averagesWholeFrame_(Utils::profileOf(device) == wholeFrameProfile),
      cells_(measuredCells(resources, Utils::profileOf(device))) {}

void FrameAverager::captureOutput(PixelBuffer& didOutputSampleBuffer) {
  const PixelBuffer& buffer = didOutputSampleBuffer;
  frame_ =
      averagedFrame({buffer.baseAddress(), buffer.width(), buffer.height(), buffer.bytesPerRow()},
                    averagesWholeFrame_, cells_, averager_);
}

void FrameAverager::captureOutput(const FrameSample& didOutputSample) {
  frame_ = averagedFrame(didOutputSample, averagesWholeFrame_);
}

}  // namespace veyla
