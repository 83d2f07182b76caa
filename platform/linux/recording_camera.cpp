#include "platform/linux/recording_camera.h"

#include <algorithm>
#include <utility>

#include "platform/portable/frame_ticks.h"

namespace veyla {

namespace {

/// Files often keep times in whole milliseconds. The first frame's, which is time 0, is rounded as
/// well as the one asked for, so that a frame may seem up to a whole millisecond late.
constexpr double timestampTolerance = 0.001 + 1e-6;

constexpr double secondsOf(std::int64_t ticks) {
  return static_cast<double>(ticks) / VideoDataOutput::framesPerSecond;
}

}  // namespace

/// Where the recording stands: shared by the sessions that play it one after the other.
class RecordingCamera::Playback {
 public:
  Playback(std::unique_ptr<RecordingSource> source, RecordingSpan span)
      : source_(std::move(source)), span_(span) {}

  const RecordingSource& source() const { return *source_; }
  void setOnEnd(std::function<void()> onEnd) { onEnd_ = std::move(onEnd); }

  /// Goes on to the newest frame at or before the next tick, but for a late one; nothing when the
  /// recording has ended.
  std::optional<FrameTicks::Tick> nextTick(bool isLate) {
    const std::int64_t tick = nextTick_++;
    if (span_.duration && secondsOf(tick) >= *span_.duration) return std::nullopt;
    const double time = span_.start + secondsOf(tick);
    bool frameCame = false;
    for (auto next = source_->nextTime(); !isLate && next && *next <= time + timestampTolerance;
         next = source_->nextTime()) {
      frameCame = source_->advance() || frameCame;
    }
    hasFrame_ = hasFrame_ || frameCame;
    const bool goesOn =
        source_->nextTime() || (hasFrame_ && time <= source_->time() + timestampTolerance);
    return goesOn ? std::optional(ticks_.next(frameCame)) : std::nullopt;
  }

  void deliver(SampleBufferDelegate& delegate) { source_->deliver(delegate); }

  void end() {
    ended_ = true;
    if (onEnd_) onEnd_();
  }
  bool ended() const { return ended_; }

 private:
  std::unique_ptr<RecordingSource> source_;
  RecordingSpan span_;
  std::function<void()> onEnd_;
  std::int64_t nextTick_ = 0;
  FrameTicks ticks_;
  bool hasFrame_ = false;
  bool ended_ = false;
};

class RecordingCamera::Session : public CaptureSession,
                                 public std::enable_shared_from_this<Session> {
 public:
  Session(std::shared_ptr<Playback> playback, TimedQueue& queue)
      : playback_(std::move(playback)), queue_(queue) {}

  void beginConfiguration() override {}
  void setSessionPreset(SessionPreset) override {}
  void addInput(std::shared_ptr<CaptureDeviceInput> input) override {
    inputs_.push_back(std::move(input));
  }
  void addOutput(std::shared_ptr<VideoDataOutput> output) override {
    outputs_.push_back(std::move(output));
  }
  void commitConfiguration() override {}

  void startRunning() override {
    if (isRunning_) return;
    isRunning_ = true;
    ++run_;
    runStart_ = queue_.elapsed();
    runTick_ = 0;
    scheduleTick();
  }
  void stopRunning() override { isRunning_ = false; }
  bool isRunning() const override { return isRunning_; }

  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs() const override { return inputs_; }
  std::vector<std::shared_ptr<VideoDataOutput>> outputs() const override { return outputs_; }
  void removeInput(const std::shared_ptr<CaptureDeviceInput>& input) override {
    std::erase(inputs_, input);
  }
  void removeOutput(const std::shared_ptr<VideoDataOutput>& output) override {
    std::erase(outputs_, output);
  }

 private:
  /// One tick at a time, so that work handed over since the last tick for the moment of the next
  /// one comes first, as it does with frames that arrive when they are taken.
  void scheduleTick() {
    // From the run's start, not from the last tick: two seconds after the start are exactly that.
    const double due = runStart_ + secondsOf(runTick_++);
    queue_.after(std::max(due - queue_.elapsed(), 0.0), [weak = weak_from_this(), run = run_] {
      const auto session = weak.lock();
      if (!session || !session->isIn(run)) return;
      session->tick();
      // What the frame led to may have stopped the session or started it anew.
      if (session->isIn(run) && !session->playback_->ended()) session->scheduleTick();
    });
  }

  bool isIn(std::int64_t run) const { return isRunning_ && run_ == run; }

  void tick() {
    if (playback_->ended()) return;
    const auto output = outputs_.empty() ? nullptr : outputs_.front();
    const bool isLate =
        output && output->alwaysDiscardsLateVideoFrames && queue_.lateness() > secondsOf(1);
    const auto tick = playback_->nextTick(isLate);
    if (!tick) {
      playback_->end();
      return;
    }
    if (inputs_.empty() || !output || !output->sampleBufferDelegate) return;
    if (tick == FrameTicks::Tick::delivered) playback_->deliver(*output->sampleBufferDelegate);
    if (tick == FrameTicks::Tick::dropped) {
      output->sampleBufferDelegate->captureOutput(DroppedSample{});
    }
  }

  std::shared_ptr<Playback> playback_;
  TimedQueue& queue_;
  std::vector<std::shared_ptr<CaptureDeviceInput>> inputs_;
  std::vector<std::shared_ptr<VideoDataOutput>> outputs_;
  bool isRunning_ = false;
  /// Tells the ticks of one run from those that an earlier run left in the queue.
  std::int64_t run_ = 0;
  double runStart_ = 0;
  std::int64_t runTick_ = 0;
};

RecordingCamera::RecordingCamera(std::unique_ptr<RecordingSource> source, TimedQueue& queue,
                                 RecordingSpan span)
    : queue_(queue), playback_(std::make_shared<Playback>(std::move(source), span)) {}

void RecordingCamera::setOnEnd(std::function<void()> onEnd) {
  playback_->setOnEnd(std::move(onEnd));
}

const RecordingSource& RecordingCamera::source() const { return playback_->source(); }

CameraAuthorization RecordingCamera::authorizationStatus() const {
  return CameraAuthorization::authorized;
}

void RecordingCamera::requestAccess(std::function<void(bool granted)> completion) {
  completion(true);
}

std::optional<std::vector<std::shared_ptr<CaptureDevice>>> RecordingCamera::discoverBackDevices() {
  return std::vector<std::shared_ptr<CaptureDevice>>{device_};
}

std::shared_ptr<CaptureDeviceInput> RecordingCamera::makeDeviceInput(
    const std::shared_ptr<CaptureDevice>& device) {
  return std::make_shared<CaptureDeviceInput>(CaptureDeviceInput{device});
}

std::shared_ptr<CaptureSession> RecordingCamera::makeSession() {
  return std::make_shared<Session>(playback_, queue_);
}

}  // namespace veyla
