#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/linux/ffmpeg_track.h"

namespace veyla::ffmpeg {

/// A frame at which decoding may begin: it and all that are shown after it come out as if those
/// before it had been decoded, too.
struct RandomAccessPoint {
  /// How many packets of the track come before its own.
  std::size_t packets = 0;
  /// When it is shown, on the track's scale.
  std::int64_t timestamp = 0;
};

/// The last one at or before `seconds` after `first`, the timestamp of the first frame that could
/// be decoded. Reads the packets of a newly opened `track` up to there, which takes a hundredth of
/// the time of decoding them and needs no index.
///
/// Nothing where that time cannot be told without decoding (frames before it that come without
/// timestamps, out of order, twice, or more than `longestStepBetweenFrames` apart), or where it is
/// not certain that the decoder depends on nothing before.
std::optional<RandomAccessPoint> randomAccessPointBefore(double seconds, std::int64_t first,
                                                         Track& track);

}  // namespace veyla::ffmpeg
