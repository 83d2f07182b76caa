#include "apps/cli/kept_recording.h"

#include <algorithm>
#include <utility>

namespace veyla {

class KeptRecording::Source : public RecordingSource {
 public:
  Source(std::shared_ptr<const std::vector<Frame>> frames, double from)
      : frames_(std::move(frames)) {
    const auto later =
        std::upper_bound(frames_->begin(), frames_->end(), from,
                         [](double time, const Frame& frame) { return time < frame.time; });
    if (later != frames_->begin()) next_ = static_cast<std::size_t>(later - frames_->begin()) - 1;
  }

  bool advance() override {
    if (next_ == frames_->size()) return false;
    ++next_;
    return true;
  }
  std::optional<double> nextTime() const override {
    if (next_ == frames_->size()) return std::nullopt;
    return (*frames_)[next_].time;
  }
  double time() const override { return current().time; }
  void deliver(SampleBufferDelegate& delegate) override {
    delegate.captureOutput(current().averaged);
  }

 private:
  const Frame& current() const { return (*frames_)[next_ - 1]; }

  std::shared_ptr<const std::vector<Frame>> frames_;
  std::size_t next_ = 0;
};

KeptRecording::KeptRecording(RecordingSource& source, FrameAverager& averager,
                             const std::function<void(double seconds)>& progress) {
  std::vector<Frame> frames;
  while (source.advance()) {
    source.deliver(averager);
    frames.push_back({source.time(), averager.frame()});
    if (progress) progress(source.time());
  }
  frames_ = std::make_shared<const std::vector<Frame>>(std::move(frames));
}

std::unique_ptr<RecordingSource> KeptRecording::source(double from) const {
  return std::make_unique<Source>(frames_, from);
}

}  // namespace veyla
