#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <string>

/// Ownership of the FFmpeg libraries' objects, for the files of this binding alone.
namespace veyla::ffmpeg {

template <auto release>
struct Release {
  template <class T>
  void operator()(T* object) const {
    release(&object);
  }
};

using Packet = std::unique_ptr<AVPacket, Release<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, Release<av_frame_free>>;
using Codec = std::unique_ptr<AVCodecContext, Release<avcodec_free_context>>;
using Input = std::unique_ptr<AVFormatContext, Release<avformat_close_input>>;

struct ReleaseScaler {
  void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using Scaler = std::unique_ptr<SwsContext, ReleaseScaler>;

/// Keeps the libraries' own log off the terminal: what matters of it is told in errors and remarks.
void silenceLog();

/// The libraries' words for one of their error numbers.
std::string errorText(int error);

inline double seconds(std::int64_t timestamp, AVRational base) {
  return static_cast<double>(timestamp) * base.num / base.den;
}

/// How the libraries take a path, whatever characters are in it: never as the address of a network,
/// a pipe or a list of files.
inline std::string fileUrl(const std::string& path) { return "file:" + path; }

}  // namespace veyla::ffmpeg
