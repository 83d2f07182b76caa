#include "platform/linux/ffmpeg_random_access.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "platform/linux/recording_source.h"

namespace veyla::ffmpeg {

namespace {

/// What one packet of H.264 or HEVC holds.
struct Units {
  /// A picture with which everything begins anew.
  bool entry = false;
  bool sequenceParameters = false;
  bool pictureParameters = false;

  bool anyParameters() const { return sequenceParameters || pictureParameters; }
  bool allParameters() const { return sequenceParameters && pictureParameters; }

  void add(AVCodecID codec, std::uint8_t head) {
    if (codec == AV_CODEC_ID_H264) {
      const int type = head & 0x1F;
      // Other key frames let later pictures refer to those before them.
      entry |= type == 5;
      sequenceParameters |= type == 7;
      pictureParameters |= type == 8;
    } else {
      const int type = head >> 1 & 0x3F;
      entry |= type >= 16 && type <= 21;
      sequenceParameters |= type == 33;
      pictureParameters |= type == 34;
    }
  }
};

/// How many bytes give the length of each unit; 0 where start codes lie between units instead.
std::size_t lengthSize(const AVCodecParameters& codec) {
  const std::span head(codec.extradata, static_cast<std::size_t>(codec.extradata_size));
  if (codec.codec_id == AV_CODEC_ID_H264) {
    return head.size() > 4 && head[0] == 1 ? (head[4] & 3U) + 1 : 0;
  }
  const bool isConfiguration = head.size() > 21 && (head[0] != 0 || head[1] != 0 || head[2] > 1);
  return isConfiguration ? (head[21] & 3U) + 1 : 0;
}

Units unitsOf(const AVPacket& packet, const AVCodecParameters& codec) {
  Units units;
  const std::span data(packet.data, static_cast<std::size_t>(packet.size));
  const std::size_t prefix = lengthSize(codec);
  if (prefix > 0) {
    for (std::size_t at = 0; at + prefix < data.size();) {
      std::size_t length = 0;
      for (std::size_t i = 0; i < prefix; ++i) length = length << 8 | data[at + i];
      units.add(codec.codec_id, data[at + prefix]);
      at += prefix + length;
    }
    return units;
  }
  constexpr std::uint8_t startCode[] = {0, 0, 1};
  auto at = data.begin();
  while (true) {
    at = std::search(at, data.end(), std::begin(startCode), std::end(startCode));
    if (data.end() - at <= 3) return units;
    at += 3;
    units.add(codec.codec_id, *at);
  }
}

/// Whether a key frame of it is an entry without more ado. Of other formats too little is known.
bool beginsAnewAtKeyFrames(AVCodecID codec) {
  constexpr std::array codecs{AV_CODEC_ID_H263,  AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO,
                              AV_CODEC_ID_MPEG4, AV_CODEC_ID_VP8,        AV_CODEC_ID_VP9};
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  return std::find(codecs.begin(), codecs.end(), codec) != codecs.end() ||
         (descriptor && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0);
}

/// Whether the packet tells the decoder something for itself and for all after it.
bool changesDecoder(const AVPacket& packet) {
  constexpr std::array changes{AV_PKT_DATA_NEW_EXTRADATA, AV_PKT_DATA_PARAM_CHANGE,
                               AV_PKT_DATA_PALETTE};
  return std::any_of(changes.begin(), changes.end(), [&](AVPacketSideDataType change) {
    return av_packet_get_side_data(&packet, change, nullptr) != nullptr;
  });
}

/// Follows a track packet by packet.
class Search {
 public:
  Search(double seconds, std::int64_t first, const Track& track)
      : seconds_(seconds), first_(first), timeBase_(track.timeBase()), codec_(track.parameters()) {}

  /// `number` packets came before. False when no more packets need to be looked at.
  bool take(const AVPacket& packet, std::size_t number) {
    // Those that are decoded before the first is shown may have none.
    const bool needsDts = number >= static_cast<std::size_t>(codec_.video_delay);
    const bool isInOrder = packet.dts > decoded_ || (packet.dts == AV_NOPTS_VALUE && !needsDts);
    if (!isInOrder || changesDecoder(packet)) {
      isCertain_ = false;
      return false;
    }
    decoded_ = packet.dts;
    const bool isEntry = allowsEntry(packet);
    // Decoded, but never shown: what an edit list leaves out.
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) return true;
    if (isEntry && packet.pts > latest_ && timeOf(packet.pts) <= seconds_) {
      found_ = {number, packet.pts};
    }
    isReordered_ |= packet.pts < latest_;
    latest_ = std::max(latest_, packet.pts);
    shown_.push_back(packet.pts);
    // Key frames only come later and later.
    return timeOf(latest_) <= seconds_;
  }

  std::optional<RandomAccessPoint> found() {
    if (!isCertain_ || !found_) return std::nullopt;
    // The decoder reorders the frames, but the file gives their times in the order of decoding.
    if (codec_.video_delay > 0 && !isReordered_) return std::nullopt;
    // Timestamps that are missing are far before all others.
    std::sort(shown_.begin(), shown_.end());
    const auto end = std::find(shown_.begin(), shown_.end(), found_->timestamp);
    const bool leaps = std::adjacent_find(shown_.begin(), end + 1, [this](auto a, auto b) {
                         return a == b || timeOf(b) - timeOf(a) > longestStepBetweenFrames;
                       }) != end + 1;
    if (leaps) return std::nullopt;
    return found_;
  }

 private:
  double timeOf(std::int64_t timestamp) const {
    return ffmpeg::seconds(timestamp, timeBase_) - ffmpeg::seconds(first_, timeBase_);
  }

  bool allowsEntry(const AVPacket& packet) {
    const bool isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    if (codec_.codec_id != AV_CODEC_ID_H264 && codec_.codec_id != AV_CODEC_ID_HEVC) {
      return isKey && beginsAnewAtKeyFrames(codec_.codec_id);
    }
    const Units units = unitsOf(packet, codec_);
    // Parameters on the way would be missed by who begins later, unless they come again there.
    const bool knowsParameters = !parametersOnTheWay_ || units.allParameters();
    parametersOnTheWay_ |= units.anyParameters();
    return isKey && units.entry && knowsParameters;
  }

  double seconds_;
  std::int64_t first_;
  AVRational timeBase_;
  const AVCodecParameters& codec_;
  std::int64_t decoded_ = AV_NOPTS_VALUE;
  std::int64_t latest_ = AV_NOPTS_VALUE;
  bool isReordered_ = false;
  bool parametersOnTheWay_ = false;
  bool isCertain_ = true;
  /// When the frames are shown, in the order in which they are decoded.
  std::vector<std::int64_t> shown_;
  std::optional<RandomAccessPoint> found_;
};

}  // namespace

std::optional<RandomAccessPoint> randomAccessPointBefore(double seconds, std::int64_t first,
                                                         Track& track) {
  Search search(seconds, first, track);
  const Packet packet(av_packet_alloc());
  for (std::size_t number = 0; track.read(*packet); ++number) {
    const bool goesOn = search.take(*packet, number);
    av_packet_unref(packet.get());
    if (!goesOn) break;
  }
  return search.found();
}

}  // namespace veyla::ffmpeg
