#include "platform/linux/recording_camera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <thread>

#include "platform/web/frame_pacer.h"

namespace veyla {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

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
    const double start = queue_.elapsed();
    camera_.emplace(std::make_unique<ScriptedSource>(std::move(times)), queue_, span);
    camera_->setOnEnd([this, start] { ends_.push_back(queue_.elapsed() - start); });
    frames_.clear();
    ends_.clear();
    ticks_.clear();
    newSession();
  }
  void newSession() { session_ = sessionOf(*camera_); }
  std::shared_ptr<CaptureSession> sessionOf(RecordingCamera& camera) {
    auto session = camera.makeSession();
    session->addInput(camera.makeDeviceInput(camera.defaultVideoDevice()));
    auto output = std::make_shared<VideoDataOutput>();
    output->alwaysDiscardsLateVideoFrames = true;
    output->sampleBufferDelegate = this;
    session->addOutput(output);
    return session;
  }
  void playAll() {
    session_->startRunning();
    queue_.run();
  }

  void captureOutput(PixelBuffer&) override { FAIL(); }
  void captureOutput(const FrameSample& didOutputSample) override {
    frames_.push_back(static_cast<int>(didOutputSample.red));
    deliveredAt_.push_back(queue_.elapsed());
    ticks_ += 'f';
    if (onFrame_) onFrame_();
  }
  void captureOutput(const AveragedFrame&) override {}
  void captureOutput(DroppedSample) override { ticks_ += 'd'; }

  TimedQueue queue_;
  std::optional<RecordingCamera> camera_;
  std::shared_ptr<CaptureSession> session_;
  std::function<void()> onFrame_;
  std::vector<int> frames_;
  std::vector<double> deliveredAt_;
  std::vector<double> ends_;
  /// What each tick came to: a frame or a drop.
  std::string ticks_;
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

TEST_F(RecordingCameraTest, ARateThatDriftsAgainstTheTicksNeverFallsBehindOrRunsAhead) {
  const auto times = evenTimes(1798, 30000 / 1001.0);
  for (const auto& shown : {times, inMilliseconds(times, 0), inMilliseconds(times, 0.0333)}) {
    open(shown);
    playAll();
    ASSERT_EQ(frames_.size(), 900U);
    for (std::size_t tick = 0; tick < frames_.size(); ++tick) {
      const double time = times[static_cast<std::size_t>(frames_[tick])];
      const double behind = static_cast<double>(tick) / 15 - time;
      ASSERT_GT(behind, -0.0021) << "tick " << tick;
      ASSERT_LT(behind, 1.001 / 30 + 0.0001) << "tick " << tick;
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

TEST_F(RecordingCameraTest, AStallIsFilledForThreeTenthsOfASecondAndThenDroppedAsInTheBrowser) {
  for (const auto& [stall, drops] : {std::pair{0.2, 0}, {1.0, 10}, {3.0, 40}}) {
    SCOPED_TRACE(stall);
    std::vector<double> times = evenTimes(151, 30);
    for (const double time : evenTimes(151, 30)) times.push_back(times[150] + stall + time);
    open(times);
    playAll();
    const int stalled = static_cast<int>(std::lround(15 * stall)) - drops;
    // The frame of 5 s, the fills and drops until the stall's end, and the rest.
    EXPECT_EQ(ticks_, std::string(static_cast<std::size_t>(75 + stalled), 'f') +
                          std::string(static_cast<std::size_t>(drops), 'd') + std::string(76, 'f'));

    std::string pushed;
    FramePacer pacer;
    for (const double time : times) {
      const auto due = pacer.frameAt(time);
      pushed.append(static_cast<std::size_t>(due.delivered), 'f');
      pushed.append(static_cast<std::size_t>(due.dropped), 'd');
    }
    // The last frame is still held.
    EXPECT_EQ(pushed + 'f', ticks_);
  }
}

TEST_F(RecordingCameraTest, WorkHandedOverAtTheStartComesBeforeTheFrameOfItsMoment) {
  for (const double startedAt : {0.0, 0.02, 0.1, 1.7, 1234.56789}) {
    TimedQueue queue;
    RecordingCamera camera(std::make_unique<ScriptedSource>(evenTimes(60, 15)), queue);
    session_ = sessionOf(camera);
    frames_.clear();
    std::size_t framesBefore = 0;
    queue.after(startedAt, [&] {
      session_->startRunning();
      EXPECT_THAT(frames_, IsEmpty());
      queue.after(2, [&] { framesBefore = frames_.size(); });
    });
    queue.run();
    EXPECT_EQ(framesBefore, 30U) << startedAt;
  }
}

TEST_F(RecordingCameraTest, AFrameMayStopAndDropTheSessionThatDeliversIt) {
  open(evenTimes(60, 15));
  onFrame_ = [this] {
    if (frames_.size() != 5) return;
    session_->stopRunning();
    session_->removeOutput(session_->outputs().front());
    session_ = nullptr;
  };
  playAll();
  EXPECT_EQ(frames_.size(), 5U);
  EXPECT_THAT(ends_, IsEmpty());

  onFrame_ = nullptr;
  newSession();
  playAll();
  EXPECT_EQ(frames_[5], 5) << "another session goes on where the recording stands";
  EXPECT_EQ(frames_.size(), 60U);
}

TEST_F(RecordingCameraTest, WithoutAnInputNothingIsDeliveredAndTheRecordingGoesOn) {
  open(evenTimes(30, 15));
  const auto input = session_->inputs().front();
  queue_.after(0.5, [&] { session_->removeInput(input); });
  queue_.after(1.5, [&] { session_->addInput(input); });
  playAll();
  EXPECT_EQ(ticks_, std::string(15, 'f'));
  EXPECT_EQ(frames_.back(), 29);
}

TEST_F(RecordingCameraTest, ARestartedSessionTicksOnceAtATime) {
  open(evenTimes(60, 15));
  session_->startRunning();
  queue_.runFor(0.51);
  // Which runs already.
  session_->startRunning();
  queue_.runFor(0.5);
  session_->stopRunning();
  session_->startRunning();
  EXPECT_TRUE(session_->isRunning());
  queue_.run();
  EXPECT_EQ(frames_.size(), 60U);
  for (const std::size_t i : {8U, 17U}) {
    EXPECT_NEAR(deliveredAt_[i] - deliveredAt_[i - 1], 1.0 / 15, 1e-9);
  }
}

TEST_F(RecordingCameraTest, AtTheWallsPaceTheFramesOfLateTicksDoNotCome) {
  TimedQueue queue(TimedQueue::Pace::wall);
  RecordingCamera camera(std::make_unique<ScriptedSource>(evenTimes(9, 15)), queue);
  session_ = sessionOf(camera);
  // A frame that takes until every tick after it is late.
  onFrame_ = [&] {
    while (queue.lateness() < 0.65) std::this_thread::yield();
  };
  session_->startRunning();
  queue.run();
  EXPECT_THAT(ticks_, testing::MatchesRegex("fffffd+"));
  EXPECT_EQ(frames_, std::vector(5, frames_.front()));
}

TEST_F(RecordingCameraTest, TheDeviceTakesTheSettingOfItsFocusRange) {
  open({0});
  // Only one that is restricted already is given another restriction.
  EXPECT_NE(camera_->device().autoFocusRangeRestriction(), FocusRange::unrestricted);
}

}  // namespace
}  // namespace veyla
