#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/recording_source.h"

namespace veyla {

/// A video file of any kind that the FFmpeg libraries read, as a recording.
///
/// - Takes the video track and leaves sound, cover pictures and other tracks alone.
/// - Frames carry the file's own times; where there are none they go on at the frame rate. Time 0
///   is the first frame that could be decoded.
/// - `deliver` scales to the size of the low preset by area, with the colour matrix and range that
///   the frame names. Frames that name none are taken as BT.601, limited unless their pixel format
///   says otherwise, as the FFmpeg tools do.
/// - Frames that cannot be decoded are passed over and counted in the remark, and so is a file that
///   is cut off. Ends where hundreds in a row cannot be decoded.
/// - Decodes from the last place before `from` from which on the frames come out the same to the
///   bit as if all had been decoded; from the beginning where there is none or that is not certain.
/// - Ends where a frame would come more than `longestStepBetweenFrames` after the one before it,
///   which the remark tells.
/// - Rotation is ignored on purpose: the buffers of a live camera are in the orientation of its
///   sensor too, and what is measured are averages of cells.
/// - Only the file itself: playlists and sequences of pictures, which lead to other files, are no
///   videos.
class FfmpegSource : public RecordingSource {
 public:
  /// Decodes the first frame. The first to be moved on to is one at or before `from` seconds.
  /// `threads` is 0 for one per processor. Throws `InputError`.
  explicit FfmpegSource(const std::string& path, double from = 0, int threads = 0);
  ~FfmpegSource() override;

  bool advance() override;
  double time() const override { return time_; }
  std::optional<double> nextTime() const override { return nextTime_; }
  void deliver(SampleBufferDelegate& delegate) override;
  std::string remark() const override;

  /// How many frames were decoded so far, whether anybody moved on to them or not.
  int decodedFrames() const;

 private:
  class Reader;
  class Clock;
  class Scaler;

  void begin();
  bool skipTo(double from);
  void readNext();

  std::string path_;
  int threads_;
  std::unique_ptr<Reader> reader_;
  std::unique_ptr<Clock> clock_;
  std::unique_ptr<Scaler> scaler_;
  double time_ = 0;
  std::optional<double> nextTime_;
  /// The step at which the recording ends though the file goes on.
  std::optional<double> gap_;
};

}  // namespace veyla
