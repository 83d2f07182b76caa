#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/capture.h"

namespace veyla {

/// A recording that cannot be read: one line that names the file, the reason and the way out.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Seconds. No camera pauses longer while it films: a longer step is a mistake in the times.
constexpr double longestStepBetweenFrames = 10;

/// A recording as a sequence of frames in its own time, none of them more than
/// `longestStepBetweenFrames` after the one before it.
class RecordingSource {
 public:
  virtual ~RecordingSource() = default;

  /// Moves on to the next frame (at first, to the first one there is); false when there is none.
  /// Throws `InputError` when the file changes under the reader.
  virtual bool advance() = 0;

  /// Seconds from the first frame of the recording to the one that `advance` would move on to;
  /// nothing when there is none. Lets a caller find the newest frame before it asks for pixels.
  virtual std::optional<double> nextTime() const = 0;

  /// Seconds from the first frame of the recording to the current one; never decreases.
  virtual double time() const = 0;

  /// Hands the current frame to `delegate`, as pixels at the size of the low preset or, from a
  /// colour series, as averages. What makes the pixels happens here, so frames that nobody asks for
  /// cost nothing but their decoding.
  virtual void deliver(SampleBufferDelegate& delegate) = 0;

  /// After the end: what kept the recording from being read to its own end, such as a file that is
  /// cut off, and what seems wrong with its times, as one line that names the file; empty when
  /// nothing did.
  virtual std::string remark() const { return {}; }
};

/// Opens a video or a colour series, whichever the file holds, or standard input for "-", for
/// somebody who needs no frames but the newest at or before `from` seconds and those after it:
/// older ones may be left out, the others are the same, at the same times. A video is decoded by
/// `threads` threads, 0 for one per processor; each holds a frame. Throws `InputError`.
std::unique_ptr<RecordingSource> openRecording(const std::string& path, double from = 0,
                                               int threads = 0);

/// Whether a file of a folder is taken for a recording without opening it: a video by its ending, a
/// series by its first lines. One that cannot be looked into counts, so that it is told of.
bool looksLikeRecording(const std::filesystem::path& file);

}  // namespace veyla
