#include "platform/linux/recording_camera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace veyla {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

/// Frames at given times, each delivered as its own number.
class ScriptedSource : public RecordingSource {
 public:
  explicit ScriptedSource(std::vector<double> times) : times_(std::move(times)) {}

  bool advance() override {
    if (next_ == times_.size()) return false;
    ++next_;
    return true;
  }
  double time() const override { return times_[next_ - 1]; }
  std::optional<double> nextTime() const override {
    if (next_ == times_.size()) return std::nullopt;
    return times_[next_];
  }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(FrameSample{static_cast<float>(next_ - 1), 0, 0, 0});
  }

 private:
  std::vector<double> times_;
  std::size_t next_ = 0;
};

std::vector<double> evenTimes(int count, double framesPerSecond) {
  std::vector<double> times;
  for (int i = 0; i < count; ++i) times.push_back(i / framesPerSecond);
  return times;
}

/// As a file with a time base of a millisecond keeps them, when its first frame comes at `offset`.
std::vector<double> inMilliseconds(std::vector<double> times, double offset) {
  const double first = std::round(offset * 1000);
  for (double& time : times) time = (std::round((time + offset) * 1000) - first) / 1000;
  return times;
}

class RecordingCameraTest : public testing::Test, public SampleBufferDelegate {
 protected:
  void open(std::vector<double> times, RecordingSpan span = {}) {
    queue_ = std::make_unique<TimedQueue>();
    camera_.emplace(std::make_unique<ScriptedSource>(std::move(times)), *queue_, span);
    camera_->setOnEnd([this] { ends_.push_back(queue_->elapsed()); });
    frames_.clear();
    ends_.clear();
    session_ = camera_->makeSession();
    session_->addInput(camera_->makeDeviceInput(camera_->defaultVideoDevice()));
    auto output = std::make_shared<VideoDataOutput>();
    output->sampleBufferDelegate = this;
    session_->addOutput(output);
  }
  void playAll() {
    session_->startRunning();
    queue_->run();
  }

  void captureOutput(PixelBuffer&) override { FAIL(); }
  void captureOutput(const FrameSample& didOutputSample) override {
    frames_.push_back(static_cast<int>(didOutputSample.red));
  }
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override { frames_.push_back(drop); }

  /// In place of a frame's number.
  static constexpr int drop = -1;

  std::unique_ptr<TimedQueue> queue_;
  std::optional<RecordingCamera> camera_;
  std::shared_ptr<CaptureSession> session_;
  /// What each tick came to.
  std::vector<int> frames_;
  std::vector<double> ends_;
};

TEST_F(RecordingCameraTest, EveryRateBecomesFifteenFramesASecondOfTheNewestFrames) {
  for (const double rate : {15.0, 24.0, 25.0, 30.0, 60.0, 240.0, 7.0}) {
    SCOPED_TRACE(rate);
    const auto times = evenTimes(static_cast<int>(rate * 20), rate);
    std::vector<int> newest;
    for (int tick = 0; tick <= times.back() * 15 + 1e-9; ++tick) {
      newest.push_back(static_cast<int>(tick * rate / 15 + 1e-9));
    }
    for (const auto& shown : {times, inMilliseconds(times, 0), inMilliseconds(times, 0.0333)}) {
      open(shown);
      playAll();
      EXPECT_EQ(frames_, newest);
      EXPECT_EQ(ends_.size(), 1U);
    }
  }
}

TEST_F(RecordingCameraTest, TicksTakeTheNewestFrameFromTheFirstOneOnWithinTheirSpan) {
  struct {
    std::vector<double> times;
    RecordingSpan span;
    std::vector<int> frames;
    double end;
  } const cases[] = {
      // Ticks at 0, 0.067, 0.133, 0.2, 0.267, 0.333, 0.4.
      {{0, 0.05, 0.06, 0.30, 0.31, 0.40}, {}, {0, 2, 2, 2, 2, 4, 5}, 7 / 15.0},
      {{0.1, 0.2}, {}, {0, 1}, 4 / 15.0},
      // Filled for a while.
      {{0, 0.6}, {}, {0, 0, 0, 0, 0, drop, drop, drop, drop, 1}, 10 / 15.0},
      {evenTimes(300, 30), {.start = 4, .duration = 0.2}, {120, 122, 124}, 0.2},
      {evenTimes(30, 30), {.start = 5, .duration = {}}, {}, 0},
  };
  for (const auto& [times, span, frames, end] : cases) {
    open(times, span);
    playAll();
    EXPECT_EQ(frames_, frames);
    EXPECT_THAT(ends_, ElementsAre(DoubleNear(end, 1e-8)));
  }
}

}  // namespace
}  // namespace veyla
