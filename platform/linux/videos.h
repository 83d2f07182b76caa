#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/linux/bgra_frame.h"
#include "platform/linux/recording_source.h"

namespace veyla {

/// A video that is being written. It appears under its name when it is finished; until then it lies
/// beside it under another, and is removed with the object. Both throw `OutputError`.
class VideoFile {
 public:
  virtual ~VideoFile() = default;

  virtual void write(const BgraFrame& frame) = 0;
  virtual void finish() = 0;
};

/// What reads and writes videos.
class Videos {
 public:
  virtual ~Videos() = default;

  /// As `openRecording`, of a file that is there. Throws `InputError`.
  virtual std::unique_ptr<RecordingSource> open(const std::string& path, double from) const = 0;

  /// A video of the kind that the path's ending tells. `width` and `height` must be even,
  /// `framesPerSecond` in 1 to 240. Throws `OutputError`.
  virtual std::unique_ptr<VideoFile> create(const std::string& path, std::size_t width,
                                            std::size_t height, double framesPerSecond) const = 0;
};

/// The one there is. The program opens it as a module when a video is first asked for; tests and
/// tools are linked with it.
const Videos& videos();

}  // namespace veyla
