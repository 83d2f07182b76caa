#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/linux/recording_source.h"
#include "platform/linux/video_frame.h"

namespace veyla {

struct VideoForm {
  /// Both even.
  std::size_t width;
  std::size_t height;
  /// 1 to 240.
  double framesPerSecond;
  /// Standard deviation of a pixel's noise in 8-bit steps, which compression need not keep.
  double noise;
};

/// A video that is being written. It appears under its name when it is finished; until then it lies
/// beside it under another, and is removed with the object. Both throw `OutputError`.
class VideoFile {
 public:
  virtual ~VideoFile() = default;

  virtual void write(const VideoFrame& frame) = 0;
  virtual void finish() = 0;
};

/// What reads and writes videos.
class Videos {
 public:
  virtual ~Videos() = default;

  /// As `openRecording`, of a file that is there. Throws `InputError`.
  virtual std::unique_ptr<RecordingSource> open(const std::string& path, double from,
                                                int threads) const = 0;

  /// A video of the kind that the path's ending tells. Throws `OutputError`.
  virtual std::unique_ptr<VideoFile> create(const std::string& path,
                                            const VideoForm& form) const = 0;
};

/// The one there is. The program opens it as a module when a video is first asked for; tests and
/// tools are linked with it.
const Videos& videos();

}  // namespace veyla
