#include "platform/linux/ffmpeg_videos.h"

#include "platform/linux/ffmpeg_source.h"
#include "platform/linux/video_writer.h"

namespace veyla {

namespace {

class FfmpegVideos : public Videos {
 public:
  std::unique_ptr<RecordingSource> open(const std::string& path, double from,
                                        int threads) const override {
    return std::make_unique<FfmpegSource>(path, from, threads);
  }
  std::unique_ptr<VideoFile> create(const std::string& path, const VideoForm& form) const override {
    return std::make_unique<VideoWriter>(path, form);
  }
};

}  // namespace

/// Of what is linked with this; the program has one that opens the module.
const Videos& videos() { return *veylaFfmpegVideos(); }

}  // namespace veyla

const veyla::Videos* veylaFfmpegVideos() {
  static const veyla::FfmpegVideos videos;
  return &videos;
}
