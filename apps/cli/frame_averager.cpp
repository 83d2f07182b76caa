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

FrameColours coloursOf(const FrameSample& means, std::optional<FrameCells> cells = {}) {
  return {means.red, means.green, means.blue, cells};
}

}  // namespace

FrameAverager::FrameAverager(const Resources& resources, const std::string& device)
    : averagesWholeFrame_(Utils::profileOf(device) == wholeFrameProfile),
      cells_(measuredCells(resources, Utils::profileOf(device))) {}

void FrameAverager::captureOutput(PixelBuffer& didOutputSampleBuffer) {
  const PixelBuffer& pixels = didOutputSampleBuffer;
  if (averagesWholeFrame_) {
    frame_.record = averageWholeFrame(pixels.baseAddress(), pixels.width(), pixels.height(),
                                      pixels.bytesPerRow(), &frame_.colours);
  } else {
    frame_.record =
        averager_.average(pixels.baseAddress(), pixels.width(), pixels.height(), cells_);
    frame_.colours = coloursOf(frame_.record, averager_.cells());
  }
}

void FrameAverager::captureOutput(const FrameSample& didOutputSample) {
  const FrameSample& means = didOutputSample;
  frame_ = {averagesWholeFrame_ ? wholeFrameRecord(means) : means, coloursOf(means)};
}

}  // namespace veyla
