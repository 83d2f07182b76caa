#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/linux/output_file.h"
#include "platform/linux/videos.h"

namespace veyla {

/// Writes frames as a video, whose kind the path's ending tells: .mp4, .mov, .mkv and .avi hold
/// H.264 without visible loss, .webm VP9, and .y4m uncompressed frames, such as a browser takes for
/// a camera.
///
/// All have half the colour resolution in each direction and limited range; the colour matrix is
/// BT.709 from 720 rows on and BT.601 below, and the file says so where its kind can.
class VideoWriter : public VideoFile {
 public:
  /// As `Videos::create`.
  VideoWriter(const std::string& path, std::size_t width, std::size_t height,
              double framesPerSecond);
  ~VideoWriter() override;
  VideoWriter(const VideoWriter&) = delete;
  VideoWriter& operator=(const VideoWriter&) = delete;

  void write(const BgraFrame& frame) override;
  void finish() override;

 private:
  class Muxer;
  std::unique_ptr<Muxer> muxer_;
};

}  // namespace veyla
