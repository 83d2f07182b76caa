#include "platform/linux/ffmpeg_source.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "platform/format.h"
#include "platform/linux/bgra_frame.h"
#include "platform/linux/ffmpeg_random_access.h"
#include "platform/linux/ffmpeg_support.h"
#include "platform/linux/ffmpeg_track.h"

namespace veyla {

namespace {

std::string counted(int count, const char* singular, const char* plural) {
  return std::to_string(count) + " " + (count == 1 ? singular : plural);
}

}  // namespace

/// From the file to decoded frames, and what kept it from more.
class FfmpegSource::Reader {
 public:
  Reader(const std::string& path, int threads) : path_(path), track_(path) { openDecoder(threads); }

  const ffmpeg::Track& track() const { return track_; }

  /// Decodes into `frame`; false at the end.
  bool read(AVFrame& frame) {
    while (failuresInARow_ < mostFailuresInARow) {
      const int error = avcodec_receive_frame(codec_.get(), &frame);
      if (error == 0 && sws_isSupportedInput(static_cast<AVPixelFormat>(frame.format))) {
        failuresInARow_ = 0;
        ++decoded_;
        if (frame.decode_error_flags != 0) ++damaged_;
        noteEnd(frame);
        return true;
      }
      if (error == AVERROR_EOF) {
        ended_ = true;
        return false;
      }
      if (error == AVERROR(EAGAIN)) {
        feed();
      } else {
        av_frame_unref(&frame);
        noteFailure();
      }
    }
    return false;
  }

  /// Leaves out the packets up to this one, which is still to come.
  void skipTo(std::size_t packet) {
    while (track_.packetsRead() < packet && track_.read(*packet_)) {
      av_packet_unref(packet_.get());
    }
    avcodec_flush_buffers(codec_.get());
  }

  int decodedFrames() const { return decoded_; }

  /// `lastTime` is that of the last frame, `gap` the step after it at which the recording ends.
  std::string remark(double lastTime, std::optional<double> gap) const {
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
    const bool gaveUp = failuresInARow_ >= mostFailuresInARow;
    if (const int passedOver = undecodable_ - (gaveUp ? failuresInARow_ : 0); passedOver > 0) {
      add(counted(passedOver, "frame", "frames") + " could not be decoded and " +
          (passedOver == 1 ? "was" : "were") + " passed over");
    }
    if (damaged_ > 0) {
      add(counted(damaged_, "frame is", "frames are") + " damaged and " +
          (damaged_ == 1 ? "was" : "were") + " used as far as decoded");
    }
    if (isCutOff()) add(formatText("cut off after %.1f s, what came before was used", lastTime));
    if (gaveUp) {
      add(formatText("cannot be decoded after %.1f s, what came before was used", lastTime));
    }
    if (gap) {
      add(formatText("used up to %.1f s, where its times leap by %.6g s; ", lastTime, *gap) +
          "cut the video there to use the rest");
    }
    return text.empty() ? text : path_ + ": " + text;
  }

 private:
  /// What fails for ten seconds of thirty frames each does not recover in time: frames so far apart
  /// end a recording, too.
  static constexpr int mostFailuresInARow = 300;

  void openDecoder(int threads) {
    const AVCodecParameters& parameters = track_.parameters();
    const AVCodec* decoder = avcodec_find_decoder(parameters.codec_id);
    if (!decoder) {
      std::array<char, AV_FOURCC_MAX_STRING_SIZE> tag{};
      av_fourcc_make_string(tag.data(), parameters.codec_tag);
      const std::string name = parameters.codec_id == AV_CODEC_ID_NONE
                                   ? tag.data()
                                   : avcodec_get_name(parameters.codec_id);
      track_.refuse("no decoder for its video format " + name + "; convert it to H.264");
    }
    codec_.reset(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec_.get(), &parameters);
    codec_->pkt_timebase = track_.timeBase();
    codec_->thread_count = threads;
    const int error = avcodec_open2(codec_.get(), decoder, nullptr);
    if (error < 0) {
      track_.refuse("its video cannot be decoded (" + ffmpeg::errorText(error) +
                    "); convert it to H.264");
    }
  }

  /// Gives the decoder one more packet, or at the end the sign to hand out what it holds.
  void feed() {
    const bool found = track_.read(*packet_);
    if (avcodec_send_packet(codec_.get(), found ? packet_.get() : nullptr) < 0) noteFailure();
    av_packet_unref(packet_.get());
  }

  void noteFailure() {
    ++undecodable_;
    ++failuresInARow_;
  }

  void noteEnd(const AVFrame& frame) {
    if (frame.best_effort_timestamp == AV_NOPTS_VALUE) return;
    const std::int64_t end =
        frame.best_effort_timestamp + std::max<std::int64_t>(frame.pkt_duration, 0);
    end_ = std::max(end_, ffmpeg::seconds(end, track_.timeBase()));
  }

  /// Broken off while reading, or well before the end that the file's head promises.
  bool isCutOff() const {
    constexpr double tolerance = 0.5;
    const auto promised = track_.promisedEnd();
    return ended_ && (track_.brokenOff() || (promised && end_ + tolerance < *promised));
  }

  std::string path_;
  ffmpeg::Track track_;
  ffmpeg::Codec codec_;
  ffmpeg::Packet packet_{av_packet_alloc()};
  int decoded_ = 0;
  int undecodable_ = 0;
  int failuresInARow_ = 0;
  int damaged_ = 0;
  /// All that could be decoded was handed out.
  bool ended_ = false;
  /// Of the last frame, on the file's own scale.
  double end_ = 0;
};

/// From a frame's timestamps to the recording's own time.
class FfmpegSource::Clock {
 public:
  Clock(AVRational base, AVRational rate)
      : base_(base), frameDuration_(static_cast<double>(rate.den) / rate.num) {}

  double timeOf(const AVFrame& frame) {
    const bool stamped = frame.best_effort_timestamp != AV_NOPTS_VALUE;
    if (!last_) {
      if (stamped) zero_ = ffmpeg::seconds(frame.best_effort_timestamp, base_);
      last_ = 0;
      return 0;
    }
    double time = *last_ + frameDuration_;
    if (stamped) {
      const double own = ffmpeg::seconds(frame.best_effort_timestamp, base_);
      // Recordings that were joined end to end start their times again.
      if (own - zero_ < *last_ - longestStepBack) zero_ = own - time;
      time = std::max(own - zero_, *last_);
    }
    last_ = time;
    return time;
  }

  /// Of a frame as long as nothing is amiss with those before it.
  double plainTimeOf(std::int64_t timestamp) const {
    return ffmpeg::seconds(timestamp, base_) - zero_;
  }

 private:
  static constexpr double longestStepBack = 1;

  AVRational base_;
  double frameDuration_;
  double zero_ = 0;
  std::optional<double> last_;
};

/// From frames of any size and format to those of the low preset.
class FfmpegSource::Scaler {
 public:
  /// The frame that `deliver` scales.
  AVFrame& frame() { return *frame_; }
  /// The one after it.
  AVFrame& nextFrame() { return *nextFrame_; }

  void moveOn() {
    av_frame_unref(frame_.get());
    std::swap(frame_, nextFrame_);
  }

  /// At least the first row of the output and every `rowStep`-th after it; false when the libraries
  /// cannot scale from such a frame.
  bool scaleInto(BgraFrame& output, std::size_t rowStep) {
    prepareFor(Input::of(*frame_), static_cast<unsigned>(rowStep));
    return scaler_ && scaleToSmall() && convertInto(output);
  }

  BgraFrame& output() { return output_; }

 private:
  struct Input {
    int width = 0;
    int height = 0;
    int format = AV_PIX_FMT_NONE;
    int matrix = SWS_CS_ITU601;
    bool fullRange = false;

    bool operator==(const Input&) const = default;

    static Input of(const AVFrame& frame) {
      Input input;
      input.width = frame.width;
      input.height = frame.height;
      input.format = frame.format;
      const AVPixFmtDescriptor* format =
          av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
      if (format && (format->flags & AV_PIX_FMT_FLAG_RGB) != 0) {
        input.matrix = AVCOL_SPC_RGB;
      } else if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB) {
        input.matrix = frame.colorspace;
      }
      input.fullRange = frame.color_range == AVCOL_RANGE_JPEG ||
                        (frame.color_range == AVCOL_RANGE_UNSPECIFIED &&
                         isFullRange(static_cast<AVPixelFormat>(frame.format)));
      return input;
    }

    static bool isFullRange(AVPixelFormat format) {
      const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
      if (!descriptor) return false;
      return std::string_view(descriptor->name).starts_with("yuvj") ||
             descriptor->nb_components < 3;
    }
  };

  static constexpr unsigned allRows = lowPresetHeight;

  bool scaleToSmall() {
    // Each row takes a filter over several of the frame's: one that is left out leaves out theirs.
    const unsigned rowsAtOnce = rowStep_ == 1 ? allRows : 1;
    bool isScaled = sws_frame_start(scaler_.get(), small_.get(), frame_.get()) >= 0 &&
                    sws_send_slice(scaler_.get(), 0, static_cast<unsigned>(frame_->height)) >= 0;
    for (unsigned y = 0; isScaled && y < allRows; y += std::max(rowsAtOnce, rowStep_)) {
      isScaled = sws_receive_slice(scaler_.get(), y, rowsAtOnce) >= 0;
    }
    sws_frame_end(scaler_.get());
    return isScaled;
  }

  bool convertInto(BgraFrame& output) {
    // The libraries read as many entries as a frame may have planes.
    std::uint8_t* const rows[AV_NUM_DATA_POINTERS] = {output.baseAddress()};
    const int step = static_cast<int>(rowStep_);
    const int strides[AV_NUM_DATA_POINTERS] = {step * static_cast<int>(output.bytesPerRow())};
    int smallStrides[AV_NUM_DATA_POINTERS];
    std::transform(std::begin(small_->linesize), std::end(small_->linesize), smallStrides,
                   [step](int stride) { return step * stride; });
    return sws_scale(converter_.get(), small_->data, smallStrides, 0, convertedRows(), rows,
                     strides) >= 0;
  }

  int convertedRows() const { return static_cast<int>((allRows + rowStep_ - 1) / rowStep_); }

  /// A recording may change its size or format on the way.
  void prepareFor(const Input& input, unsigned rowStep) {
    if (scaler_ && input == input_ && rowStep == askedRowStep_) return;
    input_ = input;
    askedRowStep_ = rowStep;
    // First to the small size in the frame's own kind of colours and then to others: together a
    // quarter faster than at once, and as exact as it is with whole colour resolution on the way.
    const bool isRgb = input.matrix == AVCOL_SPC_RGB;
    const AVPixelFormat smallFormat = isRgb ? AV_PIX_FMT_BGRA : AV_PIX_FMT_YUV444P;
    small_.reset(av_frame_alloc());
    small_->width = lowPresetWidth;
    small_->height = lowPresetHeight;
    small_->format = smallFormat;
    if (av_frame_get_buffer(small_.get(), 0) < 0) throw std::bad_alloc();
    scaler_ = scaling(input.width, input.height, static_cast<AVPixelFormat>(input.format), allRows,
                      smallFormat);
    rowStep_ = scaler_ && scalesByRows() ? rowStep : 1;
    converter_ =
        scaling(lowPresetWidth, convertedRows(), smallFormat, convertedRows(), AV_PIX_FMT_BGRA);
    if (!scaler_ || !converter_) {
      scaler_.reset();
      return;
    }
    // Colours that are red, green and blue already must not be taken for others.
    if (isRgb) return;
    const int* matrix = sws_getCoefficients(input.matrix);
    setColours(scaler_, matrix, input.fullRange, matrix, input.fullRange);
    setColours(converter_, matrix, input.fullRange, sws_getCoefficients(SWS_CS_DEFAULT), true);
  }

  /// Whether single rows can be had, for less than all of them: not where the libraries go by
  /// several rows, or take all colours through another format first.
  bool scalesByRows() const {
    const AVPixFmtDescriptor* format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(input_.format));
    return format && (format->flags & AV_PIX_FMT_FLAG_PLANAR) != 0 &&
           sws_receive_slice_alignment(scaler_.get()) == 1;
  }

  /// To the width of the low preset and `rows` rows.
  static ffmpeg::Scaler scaling(int width, int height, AVPixelFormat from, int rows,
                                AVPixelFormat to) {
    constexpr int flags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
    return ffmpeg::Scaler(sws_getContext(width, height, from, lowPresetWidth, rows, to, flags,
                                         nullptr, nullptr, nullptr));
  }

  static void setColours(const ffmpeg::Scaler& scaler, const int* fromMatrix, bool fromFullRange,
                         const int* toMatrix, bool toFullRange) {
    constexpr int unchanged = 1 << 16;
    sws_setColorspaceDetails(scaler.get(), fromMatrix, fromFullRange, toMatrix, toFullRange, 0,
                             unchanged, unchanged);
  }

  ffmpeg::Frame frame_{av_frame_alloc()};
  ffmpeg::Frame nextFrame_{av_frame_alloc()};
  Input input_;
  unsigned askedRowStep_ = 1;
  unsigned rowStep_ = 1;
  ffmpeg::Scaler scaler_;
  ffmpeg::Frame small_;
  ffmpeg::Scaler converter_;
  BgraFrame output_{lowPresetWidth, lowPresetHeight};
};

FfmpegSource::FfmpegSource(const std::string& path, double from, int threads)
    : path_(path), threads_(threads) {
  begin();
  if (from > 0 && !skipTo(from)) begin();
}

FfmpegSource::~FfmpegSource() = default;

void FfmpegSource::begin() {
  reader_ = std::make_unique<Reader>(path_, threads_);
  clock_ = std::make_unique<Clock>(reader_->track().timeBase(), reader_->track().frameRate());
  scaler_ = std::make_unique<Scaler>();
  time_ = 0;
  gap_.reset();
  readNext();
  if (!nextTime_)
    reader_->track().refuse("no frame of it could be decoded; copy or record it again");
}

/// From the first frame on to the last one at or before `from` that needs none of those between
/// them; false when it did not come out, so that all have to be decoded.
bool FfmpegSource::skipTo(double from) {
  const std::int64_t first = scaler_->nextFrame().best_effort_timestamp;
  ffmpeg::Track track(path_);
  const auto point = ffmpeg::randomAccessPointBefore(from, first, track);
  if (!point || point->packets <= reader_->track().packetsRead()) return true;
  reader_->skipTo(point->packets);
  time_ = clock_->plainTimeOf(point->timestamp);
  readNext();
  return nextTime_ && scaler_->nextFrame().best_effort_timestamp == point->timestamp;
}

void FfmpegSource::readNext() {
  nextTime_.reset();
  if (gap_ || !reader_->read(scaler_->nextFrame())) return;
  const double next = clock_->timeOf(scaler_->nextFrame());
  if (next - time_ > longestStepBetweenFrames) {
    gap_ = next - time_;
  } else {
    nextTime_ = next;
  }
}

bool FfmpegSource::advance() {
  if (!nextTime_) return false;
  time_ = *nextTime_;
  scaler_->moveOn();
  readNext();
  return true;
}

void FfmpegSource::deliver(SampleBufferDelegate& delegate) {
  if (!scaler_->scaleInto(scaler_->output(), delegate.rowStep(lowPresetHeight))) {
    reader_->track().refuse(
        "frames of its size and pixel format cannot be scaled; convert it to H.264");
  }
  delegate.captureOutput(scaler_->output());
}

int FfmpegSource::decodedFrames() const { return reader_->decodedFrames(); }

std::string FfmpegSource::remark() const { return reader_->remark(time_, gap_); }

}  // namespace veyla
