#pragma once

#include <memory>
#include <string>

#include "platform/linux/output_file.h"
#include "platform/linux/videos.h"

namespace veyla {

/// Writes frames as a video, whose kind the path's ending tells: .mp4, .mov, .mkv and .avi hold
/// H.264, .webm VP9, and .y4m uncompressed frames, such as a browser takes for a camera. The file
/// names the colour matrix where its kind can.
class VideoWriter : public VideoFile {
 public:
  /// As `Videos::create`.
  VideoWriter(const std::string& path, const VideoForm& form);
  ~VideoWriter() override;
  VideoWriter(const VideoWriter&) = delete;
  VideoWriter& operator=(const VideoWriter&) = delete;

  void write(const VideoFrame& frame) override;
  void finish() override;

 private:
  class Muxer;
  std::unique_ptr<Muxer> muxer_;
};

}  // namespace veyla
