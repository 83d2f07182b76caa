#include "platform/linux/ffmpeg_track.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

#include "platform/linux/input_file.h"
#include "platform/linux/recording_source.h"

namespace veyla::ffmpeg {

namespace {

constexpr AVRational fallbackRate{30, 1};

/// Text that the libraries would draw as the screen of a terminal.
bool isDrawnText(AVCodecID codec) {
  return codec == AV_CODEC_ID_ANSI || codec == AV_CODEC_ID_BINTEXT || codec == AV_CODEC_ID_XBIN ||
         codec == AV_CODEC_ID_IDF;
}

/// Formats that are no recording themselves but lead to other files, devices or scripts.
bool leadsElsewhere(const AVInputFormat& format) {
  constexpr std::array<std::string_view, 8> names{"concat", "dash", "hls",    "imf",
                                                  "mlv",    "sdp",  "vobsub", "webm_dash_manifest"};
  return (format.flags & AVFMT_NOFILE) != 0 ||
         std::any_of(names.begin(), names.end(), [&](std::string_view name) {
           return av_match_name(name.data(), format.name) != 0;
         });
}

/// The names of all formats that hold their recording themselves, as the libraries take them.
std::string formatsOfOneFile() {
  std::string names;
  void* position = nullptr;
  while (const AVInputFormat* format = av_demuxer_iterate(&position)) {
    if (!leadsElsewhere(*format)) names += (names.empty() ? "" : ",") + std::string(format->name);
  }
  return names;
}

/// The first bytes of a file, as many as it has.
std::string startOf(const std::string& path) {
  std::array<char, 12> start{};
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             std::fclose);
  return {start.data(), file ? std::fread(start.data(), 1, start.size(), file.get()) : 0};
}

/// Phones write a video's index at its end; without it the file opens as nothing at all.
bool startsLikeMp4(const std::string& start) { return start.find("ftyp") == 4; }

/// As phones keep photographs: in the same kind of file as videos, or under an ending by which the
/// libraries take them for one of a sequence.
bool startsLikePhotograph(const std::string& start) {
  constexpr std::array<std::string_view, 4> brands{"heic", "heix", "mif1", "avif"};
  return start.starts_with("\xFF\xD8\xFF") ||
         (startsLikeMp4(start) &&
          std::find(brands.begin(), brands.end(), start.substr(8)) != brands.end());
}

/// Formats of single pictures, of which a file may hold a row that is a video.
bool isOfPictures(const AVInputFormat& format) {
  const std::string_view name(format.name);
  return name.ends_with("_pipe") || name == "gif";
}

}  // namespace

Track::Track(const std::string& path) : path_(path) {
  silenceLog();
  requireInputFile(path);
  open();
  if (!isOfPictures(*input_->iformat) && !startsLikePhotograph(startOf(path))) return;
  if (isPicture()) refuseAsPicture();
  open();
}

void Track::open() {
  stream_ = nullptr;
  packetsRead_ = 0;
  brokenOff_ = false;
  openFile();
  chooseStream();
}

bool Track::isPicture() {
  // A photograph may come with a few smaller ones of itself.
  constexpr std::size_t mostInPicture = 4;
  const Packet packet(av_packet_alloc());
  while (packetsRead_ <= mostInPicture && read(*packet)) av_packet_unref(packet.get());
  return packetsRead_ <= mostInPicture;
}

void Track::openFile() {
  AVFormatContext* input = nullptr;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  av_dict_set(&options, "format_whitelist", formatsOfOneFile().c_str(), 0);
  int error = avformat_open_input(&input, fileUrl(path_).c_str(), nullptr, &options);
  av_dict_free(&options);
  if (error == AVERROR(EMFILE) || error == AVERROR(ENFILE)) refuse(readProblem(AVUNERROR(error)));
  if (error < 0) {
    const std::string start = startOf(path_);
    if (startsLikePhotograph(start)) refuseAsPicture();
    if (startsLikeMp4(start)) {
      refuse("a video without its index, as when recording or copying broke off; copy it again");
    }
    refuseAsNoVideo();
  }
  input_.reset(input);
  error = avformat_find_stream_info(input, nullptr);
  if (error < 0) refuse("cannot be read (" + errorText(error) + "); copy it again");
}

void Track::chooseStream() {
  const auto isVideo = [](const AVStream* stream) {
    return stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
  };
  const int best = av_find_best_stream(input_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  for (unsigned i = 0; i < input_->nb_streams; ++i) {
    AVStream* stream = input_->streams[i];
    const bool preferred = static_cast<int>(i) == best;
    if (isVideo(stream) && (!stream_ || preferred)) stream_ = stream;
  }
  if (!stream_) refuse("a file without a video track; give one with a video track");
  if (isDrawnText(parameters().codec_id)) refuseAsNoVideo();
  for (unsigned i = 0; i < input_->nb_streams; ++i) {
    if (input_->streams[i] != stream_) input_->streams[i]->discard = AVDISCARD_ALL;
  }
}

AVRational Track::frameRate() const {
  const AVRational rate = av_guess_frame_rate(input_.get(), stream_, nullptr);
  return rate.num > 0 && rate.den > 0 ? rate : fallbackRate;
}

bool Track::read(AVPacket& packet) {
  // A file never has more for who waits: asking again is for readers that skip something.
  constexpr int mostAttempts = 1000;
  for (int attempts = 0; attempts < mostAttempts;) {
    const int error = av_read_frame(input_.get(), &packet);
    if (error == AVERROR(EAGAIN)) {
      ++attempts;
      continue;
    }
    if (error < 0) {
      if (error != AVERROR_EOF || lastPacketIncomplete_) brokenOff_ = true;
      if (input_->pb && input_->pb->error < 0) brokenOff_ = true;
      return false;
    }
    attempts = 0;
    if (packet.stream_index == stream_->index) {
      ++packetsRead_;
      lastPacketIncomplete_ = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
      return true;
    }
    av_packet_unref(&packet);
  }
  brokenOff_ = true;
  return false;
}

std::optional<double> Track::promisedEnd() const {
  const auto startOr0 = [](std::int64_t start) { return start == AV_NOPTS_VALUE ? 0 : start; };
  if (stream_->duration > 0) {
    return seconds(startOr0(stream_->start_time) + stream_->duration, stream_->time_base);
  }
  // The whole file's length says as much where there is nothing in it but the video.
  if (input_->nb_streams > 1 || input_->duration <= 0 ||
      input_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) {
    return std::nullopt;
  }
  // One that the head states is counted from 0, one that was found at the end from the start.
  const bool isStated = input_->duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
  return static_cast<double>((isStated ? 0 : startOr0(input_->start_time)) + input_->duration) /
         AV_TIME_BASE;
}

void Track::refuse(const std::string& reason) const { throw InputError(path_ + ": " + reason); }

void Track::refuseAsPicture() const {
  refuse("a picture and no video; film the fingertip for 45 s and give that video");
}

void Track::refuseAsNoVideo() const {
  refuse("not a video; give a video, or a colour series whose first line names time, R, G and B");
}

}  // namespace veyla::ffmpeg
