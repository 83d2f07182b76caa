#include "platform/linux/video_writer.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "platform/linux/ffmpeg_support.h"
#include "platform/linux/names.h"

namespace veyla {

namespace {

struct Kind {
  std::string_view ending;
  const char* container;
  const char* encoder;
};

constexpr std::array<Kind, 6> kinds{{{".mp4", "mp4", "libx264"},
                                     {".mov", "mov", "libx264"},
                                     {".mkv", "matroska", "libx264"},
                                     {".avi", "avi", "libx264"},
                                     {".webm", "webm", "libvpx-vp9"},
                                     {".y4m", "yuv4mpegpipe", "wrapped_avframe"}}};

const Kind& kindOf(const std::string& path) {
  const std::string ending = endingOf(path);
  for (const Kind& kind : kinds) {
    if (kind.ending == ending) return kind;
  }
  throw OutputError(path +
                    ": no kind of video has this ending; use .mp4, .mov, .mkv, .avi, .webm or "
                    ".y4m, or .csv for a colour series");
}

/// How coarsely x264 keeps samples: six more double its steps, of which 20 means 6.5. The pulse, a
/// fraction of a step of brightness, stays as exact as in frames that are not compressed, since it
/// shows in many samples; in a small frame these are fewer. Noise of half a step would take nearly
/// all of the file, so that the steps grow with it, up to where the pulse itself would get lost.
int x264QuantizerFor(const VideoForm& form) {
  constexpr std::size_t largeRows = 480;
  const double finest = form.height >= largeRows ? 20 : 17;
  constexpr double coarsest = 32;
  const double smoothing = 20 + 6 * std::log2(std::max(form.noise, 1.0) / 3);
  return static_cast<int>(std::clamp(smoothing, finest, coarsest));
}

/// libvpx's, whose steps grow nearly as the number does.
int vp9QuantizerFor(const VideoForm& form) {
  constexpr double finest = 12;
  constexpr double coarsest = 28;
  constexpr double perNoise = 2;
  return static_cast<int>(std::clamp(finest + perNoise * (form.noise - 2), finest, coarsest));
}

struct ReleaseMuxer {
  void operator()(AVFormatContext* muxer) const {
    avio_closep(&muxer->pb);
    avformat_free_context(muxer);
  }
};

}  // namespace

class VideoWriter::Muxer {
 public:
  Muxer(const std::string& path, const VideoForm& form)
      : path_(path), kind_(kindOf(path)), pending_(path) {
    ffmpeg::silenceLog();
    openEncoder(form);
    openFile();
    openFrame();
  }

  void write(const VideoFrame& frame) {
    check(av_frame_make_writable(frame_.get()));
    for (std::size_t i = 0; i < frame.planes().size(); ++i) {
      const auto& [width, height, samples] = frame.planes()[i];
      const auto stride = static_cast<int>(width);
      av_image_copy_plane(frame_->data[i], frame_->linesize[i], samples.data(), stride, stride,
                          static_cast<int>(height));
    }
    frame_->pts = nextFrame_++;
    check(avcodec_send_frame(codec_.get(), frame_.get()));
    writePackets();
  }

  void finish() {
    check(avcodec_send_frame(codec_.get(), nullptr));
    writePackets();
    check(av_write_trailer(muxer_.get()));
    // Once more: what the trailer leaves in the buffer may not fit any more.
    avio_flush(muxer_->pb);
    check(muxer_->pb->error);
    check(avio_closep(&muxer_->pb));
    pending_.commit();
  }

 private:
  void openEncoder(const VideoForm& form) {
    const AVCodec* encoder = avcodec_find_encoder_by_name(kind_.encoder);
    if (!encoder) {
      throw OutputError(path_ + ": this machine's FFmpeg lacks the encoder " + kind_.encoder +
                        "; use .y4m");
    }
    codec_.reset(avcodec_alloc_context3(encoder));
    codec_->width = static_cast<int>(form.width);
    codec_->height = static_cast<int>(form.height);
    const AVRational rate = av_d2q(form.framesPerSecond, 1'000'000);
    codec_->time_base = av_inv_q(rate);
    codec_->framerate = rate;
    codec_->sample_aspect_ratio = {1, 1};
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    const bool highDefinition = form.height >= VideoFrame::highDefinitionRows;
    codec_->colorspace = highDefinition ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    codec_->color_primaries = highDefinition ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
    codec_->color_trc = highDefinition ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    codec_->color_range = AVCOL_RANGE_MPEG;
    // Frames are written in the order they are shown, which every container takes.
    codec_->max_b_frames = 0;
    const std::string_view name = kind_.encoder;
    if (name == "libx264") {
      av_opt_set_int(codec_->priv_data, "qp", x264QuantizerFor(form), 0);
      // The saturation is in small differences between the channels.
      av_opt_set_int(codec_->priv_data, "chromaoffset", -6, 0);
      av_opt_set(codec_->priv_data, "preset", "ultrafast", 0);
    } else if (name == "libvpx-vp9") {
      codec_->qmin = vp9QuantizerFor(form);
      codec_->qmax = codec_->qmin;
      av_opt_set_int(codec_->priv_data, "crf", codec_->qmin, 0);
      av_opt_set(codec_->priv_data, "deadline", "realtime", 0);
      av_opt_set(codec_->priv_data, "cpu-used", "8", 0);
      av_opt_set(codec_->priv_data, "row-mt", "1", 0);
      codec_->bit_rate = 0;
    }
    muxer_.reset(avformat_alloc_context());
    muxer_->oformat = av_guess_format(kind_.container, nullptr, nullptr);
    if (!muxer_->oformat) {
      throw OutputError(path_ + ": this machine's FFmpeg cannot write such files; use .y4m");
    }
    if ((muxer_->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
      codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    check(avcodec_open2(codec_.get(), encoder, nullptr));
  }

  void openFile() {
    stream_ = avformat_new_stream(muxer_.get(), nullptr);
    check(stream_ ? 0 : AVERROR(ENOMEM));
    check(avcodec_parameters_from_context(stream_->codecpar, codec_.get()));
    stream_->time_base = codec_->time_base;
    stream_->avg_frame_rate = codec_->framerate;
    stream_->sample_aspect_ratio = codec_->sample_aspect_ratio;
    check(avio_open(&muxer_->pb, ffmpeg::fileUrl(pending_.path()).c_str(), AVIO_FLAG_WRITE));
    check(avformat_write_header(muxer_.get(), nullptr));
  }

  void openFrame() {
    frame_.reset(av_frame_alloc());
    frame_->width = codec_->width;
    frame_->height = codec_->height;
    frame_->format = codec_->pix_fmt;
    frame_->colorspace = codec_->colorspace;
    frame_->color_range = codec_->color_range;
    check(av_frame_get_buffer(frame_.get(), 0));
  }

  void writePackets() {
    while (true) {
      const int error = avcodec_receive_packet(codec_.get(), packet_.get());
      if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return;
      check(error);
      // Formats without frame durations of their own would drop the last frame's.
      if (packet_->duration == 0) packet_->duration = 1;
      av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
      packet_->stream_index = stream_->index;
      check(av_interleaved_write_frame(muxer_.get(), packet_.get()));
      check(muxer_->pb->error);
    }
  }

  void check(int error) const {
    if (error >= 0) return;
    constexpr int lastSystemError = 4096;
    if (AVUNERROR(error) < lastSystemError) pending_.refuse(AVUNERROR(error));
    throw OutputError(path_ + ": the video cannot be written (" + ffmpeg::errorText(error) +
                      "); choose another ending or size");
  }

  std::string path_;
  const Kind& kind_;
  PendingFile pending_;
  ffmpeg::Codec codec_;
  std::unique_ptr<AVFormatContext, ReleaseMuxer> muxer_;
  AVStream* stream_ = nullptr;
  ffmpeg::Frame frame_;
  ffmpeg::Packet packet_{av_packet_alloc()};
  std::int64_t nextFrame_ = 0;
};

VideoWriter::VideoWriter(const std::string& path, const VideoForm& form)
    : muxer_(std::make_unique<Muxer>(path, form)) {}

VideoWriter::~VideoWriter() = default;

void VideoWriter::write(const VideoFrame& frame) { muxer_->write(frame); }

void VideoWriter::finish() { muxer_->finish(); }

}  // namespace veyla
