#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/capture.h"
#include "platform/linux/recording_source.h"

/// What the tests of recordings share: files to read and a delegate that keeps what it is handed.
namespace veyla {

/// A folder for one test, removed after it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "veyla-XXXXXX").string();
    if (!mkdtemp(pattern.data())) std::abort();
    path_ = pattern;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

  std::string write(const std::string& name, const std::string& contents) const {
    std::ofstream(file(name), std::ios::binary) << contents;
    return file(name);
  }

  /// Names of all files in it.
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  /// Makes the file `name` with the ffmpeg program.
  std::string ffmpeg(const std::string& arguments, const std::string& name) const {
    const std::string command =
        "ffmpeg -nostdin -v error -y " + arguments + " '" + file(name) + "' >&2";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return file(name);
  }

 private:
  std::filesystem::path path_;
};

inline std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The mean colours of every frame it is handed.
class FrameCollector : public SampleBufferDelegate {
 public:
  void captureOutput(PixelBuffer& didOutputSampleBuffer) override {
    const PixelBuffer& frame = didOutputSampleBuffer;
    EXPECT_EQ(frame.width(), 192U);
    EXPECT_EQ(frame.height(), 144U);
    EXPECT_EQ(frame.bytesPerRow(), 4 * frame.width());
    const std::size_t count = frame.width() * frame.height();
    double sums[3] = {};
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t c = 0; c < 3; ++c) sums[c] += frame.baseAddress()[4 * i + c];
    }
    const auto mean = [&](std::size_t c) {
      return static_cast<float>(sums[c] / static_cast<double>(count));
    };
    frames.push_back({mean(2), mean(1), mean(0), mean(2)});
  }
  void captureOutput(const FrameSample& didOutputSample) override {
    frames.push_back(didOutputSample);
  }
  void captureOutput(DroppedSample) override { ++drops; }

  std::vector<FrameSample> frames;
  int drops = 0;
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
  played.frames = collector.frames;
  played.remark = source.remark();
  return played;
}

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
