#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/cli/frame_averager.h"
#include "platform/linux/recording_source.h"

namespace veyla {

/// A recording that is read once and measured any number of times: of each frame its time and what
/// a measurement has of it, some hundred bytes, and no pixels.
class KeptRecording {
 public:
  /// Reads `source` to its end, and calls `progress` after each frame with its time. Throws
  /// `InputError`.
  KeptRecording(RecordingSource& source, FrameAverager& averager,
                const std::function<void(double seconds)>& progress = {});

  /// From the first frame to the last.
  double seconds() const { return frames_->empty() ? 0 : frames_->back().time; }
  /// It once more, from the newest frame at or before `from` seconds on; may outlive this.
  std::unique_ptr<RecordingSource> source(double from = 0) const;

 private:
  struct Frame {
    double time = 0;
    AveragedFrame averaged;
  };
  class Source;

  std::shared_ptr<const std::vector<Frame>> frames_;
};

}  // namespace veyla
