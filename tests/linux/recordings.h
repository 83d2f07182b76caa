#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/capture.h"
#include "platform/linux/recording_source.h"
#include "tests/linux/scratch.h"

/// What the tests of recordings share: a delegate that keeps what it is handed.
namespace veyla {

/// The mean colours of every frame it is handed.
struct FrameCollector : SampleBufferDelegate {
  std::vector<FrameSample> frames;

  void captureOutput(PixelBuffer& didOutputSampleBuffer) override {
    const PixelBuffer& frame = didOutputSampleBuffer;
    const std::size_t count = frame.width() * frame.height();
    EXPECT_EQ(count, 192U * 144);
    EXPECT_EQ(frame.bytesPerRow(), 4U * 192);
    double sums[3] = {};
    for (std::size_t i = 0; i < 3 * count; ++i)
      sums[i % 3] += frame.baseAddress()[i / 3 * 4 + i % 3];
    const auto mean = [&](std::size_t c) {
      return static_cast<float>(sums[c] / static_cast<double>(count));
    };
    frames.push_back({mean(2), mean(1), mean(0), mean(2)});
  }
  void captureOutput(const FrameSample& sample) override { frames.push_back(sample); }
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override {}
};

struct PlayedRecording {
  std::vector<double> times;
  std::vector<FrameSample> frames;
  std::string remark;
};

inline PlayedRecording play(RecordingSource& source) {
  PlayedRecording played;
  FrameCollector collector;
  while (source.advance()) {
    played.times.push_back(source.time());
    source.deliver(collector);
  }
  played.frames = std::move(collector.frames);
  played.remark = source.remark();
  return played;
}
inline PlayedRecording playedOf(const std::string& path) { return play(*openRecording(path)); }

/// The message with which `open` refuses its input.
template <class Open>
std::string refusalOf(Open open) {
  try {
    open();
  } catch (const InputError& error) {
    return error.what();
  }
  return "(accepted)";
}

/// A recorded series of the collection beside the source tree, or one named by the environment;
/// empty when this machine has none.
inline std::string recordedSeries(const std::string& name) {
  const char* folder = std::getenv("VEYLA_RECORDINGS");
  const std::string path = std::string(folder ? folder : VEYLA_RECORDINGS_FOLDER) + "/" + name;
  return std::filesystem::exists(path) ? path : "";
}

}  // namespace veyla
