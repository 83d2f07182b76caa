#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/linux/ffmpeg_support.h"

namespace veyla::ffmpeg {

/// The video track of a file: its packets, in the order in which they are decoded.
///
/// Leaves sound, cover pictures and other tracks alone, and reads the file alone: playlists and
/// sequences of pictures, which lead to other files, are no videos, and neither is a picture.
class Track {
 public:
  /// Throws `InputError`.
  explicit Track(const std::string& path);

  const AVCodecParameters& parameters() const { return *stream_->codecpar; }
  AVRational timeBase() const { return stream_->time_base; }
  AVRational frameRate() const;

  /// The next packet; false at the end.
  bool read(AVPacket& packet);
  /// How many were read.
  std::size_t packetsRead() const { return packetsRead_; }

  /// Whether the file broke off rather than ended, once `read` has returned false.
  bool brokenOff() const { return brokenOff_; }
  /// Where the file's head says that it ends, in seconds on the track's scale.
  std::optional<double> promisedEnd() const;

  /// Throws `InputError` for the file.
  [[noreturn]] void refuse(const std::string& reason) const;

 private:
  void open();
  /// Reads on to find out.
  bool isPicture();
  void openFile();
  void chooseStream();
  [[noreturn]] void refuseAsPicture() const;
  [[noreturn]] void refuseAsNoVideo() const;

  std::string path_;
  Input input_;
  AVStream* stream_ = nullptr;
  std::size_t packetsRead_ = 0;
  bool lastPacketIncomplete_ = false;
  bool brokenOff_ = false;
};

}  // namespace veyla::ffmpeg
