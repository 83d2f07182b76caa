#include "platform/linux/video_writer.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <array>
#include <cerrno>
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
constexpr int highDefinitionRows = 720;

const Kind& kindOf(const std::string& path) {
  const std::string ending = endingOf(path);
  for (const Kind& kind : kinds) {
    if (kind.ending == ending) return kind;
  }
  throw OutputError(path +
                    ": no kind of video has this ending; use .mp4, .mov, .mkv, .avi, .webm "
                    "or .y4m");
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
  Muxer(const std::string& path, int width, int height, double framesPerSecond)
      : path_(path), kind_(kindOf(path)), pending_(path) {
    ffmpeg::silenceLog();
    if (width % 2 != 0 || height % 2 != 0) {
      throw OutputError(path + ": a video's width and height must be even; choose others");
    }
    openEncoder(width, height, av_d2q(framesPerSecond, 1'000'000));
    openFile();
    openConverter();
  }

  void write(const BgraFrame& frame) {
    check(av_frame_make_writable(frame_.get()));
    // The libraries read as many entries as a frame may have planes.
    const std::uint8_t* const rows[AV_NUM_DATA_POINTERS] = {frame.baseAddress()};
    const int strides[AV_NUM_DATA_POINTERS] = {static_cast<int>(frame.bytesPerRow())};
    sws_scale(converter_.get(), rows, strides, 0, codec_->height, frame_->data, frame_->linesize);
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
  void openEncoder(int width, int height, AVRational rate) {
    const AVCodec* encoder = avcodec_find_encoder_by_name(kind_.encoder);
    if (!encoder) {
      throw OutputError(path_ + ": this machine's FFmpeg lacks the encoder " + kind_.encoder +
                        "; use .y4m");
    }
    codec_.reset(avcodec_alloc_context3(encoder));
    codec_->width = width;
    codec_->height = height;
    codec_->time_base = av_inv_q(rate);
    codec_->framerate = rate;
    codec_->sample_aspect_ratio = {1, 1};
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    const bool highDefinition = height >= highDefinitionRows;
    codec_->colorspace = highDefinition ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    codec_->color_primaries = highDefinition ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
    codec_->color_trc = highDefinition ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    codec_->color_range = AVCOL_RANGE_MPEG;
    // Frames are written in the order they are shown, which every container takes.
    codec_->max_b_frames = 0;
    const std::string_view name = kind_.encoder;
    if (name == "libx264") {
      // A pulse is a fraction of one step of brightness. In a large frame it shows in the noise of
      // many pixels, however coarsely each is kept; a small one has to keep them finer than an eye
      // would ask for.
      constexpr int largeRows = 480;
      av_opt_set(codec_->priv_data, "crf", height >= largeRows ? "17" : "10", 0);
      av_opt_set(codec_->priv_data, "preset", height >= largeRows ? "ultrafast" : "veryfast", 0);
    } else if (name == "libvpx-vp9") {
      av_opt_set(codec_->priv_data, "crf", "4", 0);
      codec_->qmin = 0;
      codec_->qmax = 8;
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

  void openConverter() {
    frame_.reset(av_frame_alloc());
    frame_->width = codec_->width;
    frame_->height = codec_->height;
    frame_->format = codec_->pix_fmt;
    frame_->colorspace = codec_->colorspace;
    frame_->color_range = codec_->color_range;
    check(av_frame_get_buffer(frame_.get(), 0));

    constexpr int flags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP;
    converter_.reset(sws_getContext(codec_->width, codec_->height, AV_PIX_FMT_BGRA, codec_->width,
                                    codec_->height, codec_->pix_fmt, flags, nullptr, nullptr,
                                    nullptr));
    check(converter_ ? 0 : AVERROR(ENOMEM));
    constexpr int unchanged = 1 << 16;
    sws_setColorspaceDetails(converter_.get(), sws_getCoefficients(SWS_CS_DEFAULT), 1,
                             sws_getCoefficients(codec_->colorspace), 0, 0, unchanged, unchanged);
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
  ffmpeg::Scaler converter_;
  std::int64_t nextFrame_ = 0;
};

VideoWriter::VideoWriter(const std::string& path, std::size_t width, std::size_t height,
                         double framesPerSecond)
    : muxer_(std::make_unique<Muxer>(path, static_cast<int>(width), static_cast<int>(height),
                                     framesPerSecond)) {}

VideoWriter::~VideoWriter() = default;

void VideoWriter::write(const BgraFrame& frame) { muxer_->write(frame); }

void VideoWriter::finish() { muxer_->finish(); }

}  // namespace veyla
