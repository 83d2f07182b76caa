#include "platform/linux/ffmpeg_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/linux/recordings.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// Pictures that differ from frame to frame, in `pictures(size, rate, seconds)`.
std::string pictures(const char* size, const char* rate, const char* seconds) {
  return std::string("-f lavfi -i testsrc2=size=") + size + ":rate=" + rate +
         ":duration=" + seconds + " ";
}
/// One colour of a fingertip: red 180, green 80, blue 30.
std::string finger(const char* size, const char* seconds) {
  return std::string("-f lavfi -i color=c=0xB4501E:size=") + size + ":rate=30:duration=" + seconds +
         " ";
}
const std::string sound = "-f lavfi -i sine=duration=2 ";
const std::string h264 = "-c:v libx264 -preset ultrafast -g 15 ";

/// With `to` in place of those occurrences of `from` that are meant, counted from 0.
std::string replaced(
    std::string text, const std::string& from, const std::string& to,
    bool (*isMeant)(int) = [](int) { return true; }) {
  int number = 0;
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; ++at) {
    if (isMeant(number++)) text.replace(at, to.size(), to);
  }
  EXPECT_GT(number, 0) << from;
  return text;
}
const std::string pngHead = "\x89PNG\r\n\x1a\n";
const std::string noHead(8, 'x');

class FfmpegSourceTest : public testing::Test {
 protected:
  PlayedRecording read(const std::string& arguments, const char* name) const {
    return playedOf(folder_.ffmpeg(arguments, name));
  }
  static void expectFinger(const PlayedRecording& played) {
    ASSERT_FALSE(played.frames.empty());
    for (const FrameSample& frame : {played.frames.front(), played.frames.back()}) {
      EXPECT_NEAR(frame.red, 180, 2);
      EXPECT_NEAR(frame.green, 80, 2);
      EXPECT_NEAR(frame.blue, 30, 2);
    }
  }
  /// Expects the frames from so many seconds on to be those of the whole to the bit, with those
  /// before left out or not.
  static void expectEndOf(const PlayedRecording& all, const std::string& path, double from) {
    FfmpegSource source(path, from);
    const PlayedRecording played = play(source);
    ASSERT_FALSE(played.times.empty());
    ASSERT_LE(played.times.size(), all.times.size());
    const auto left = static_cast<std::ptrdiff_t>(all.times.size() - played.times.size());
    EXPECT_EQ(played.times, std::vector(all.times.begin() + left, all.times.end()));
    EXPECT_EQ(played.frames, std::vector(all.frames.begin() + left, all.frames.end()));
    // Threads that decode do not always agree on how many frames are damaged.
    EXPECT_EQ(played.remark.empty(), all.remark.empty());
    EXPECT_LE(played.times.front(), from);
  }
  /// The refusal without the file's name, which it must begin with.
  static std::string refusal(const std::string& path) {
    const std::string message = refusalOf([&] { openRecording(path); });
    EXPECT_THAT(message, StartsWith(path + ": "));
    return message.substr(std::min(message.size(), path.size() + 2));
  }
  std::string cut(const std::string& path, const std::string& name) const {
    const std::string whole = contentsOf(path);
    return folder_.write(name, whole.substr(0, whole.size() * 6 / 10));
  }

  ScratchFolder folder_;
};

TEST_F(FfmpegSourceTest, FramesComeAtTheFilesOwnTimesUpToALeap) {
  for (const char* name : {"a.ts", "a.h264"}) {
    SCOPED_TRACE(name);
    // Without frames that wait for later ones, of which the second cannot say so.
    const auto played = read(pictures("64x48", "24", "2") + h264 + "-bf 0", name);
    ASSERT_EQ(played.times.size(), 48U);
    for (std::size_t i = 0; i < played.times.size(); ++i) {
      ASSERT_NEAR(played.times[i], static_cast<double>(i) / 24, 1e-4) << i;
    }
    EXPECT_EQ(played.remark, "");
  }
  const auto varying =
      read(pictures("64x48", "30", "2") +
               "-vf \"select='not(between(n,10,39))',settb=1/1000\" -vsync vfr -bf 3 " + h264,
           "varying.mp4");
  ASSERT_EQ(varying.times.size(), 30U);
  EXPECT_NEAR(varying.times[9], 0.3, 0.001);
  EXPECT_NEAR(varying.times[10], 40 / 30.0, 0.001);
  EXPECT_TRUE(std::is_sorted(varying.times.begin(), varying.times.end()));
  const auto leaping =
      read(pictures("64x48", "30", "2") + "-vf \"setpts='PTS+if(gte(N,30),11/TB,0)'\" -vsync vfr " +
               h264 + "-bf 0",
           "leap.mp4");
  EXPECT_EQ(leaping.times.size(), 30U);
  EXPECT_THAT(leaping.remark,
              HasSubstr("leap.mp4: used up to 1.0 s, where its times leap by 11.0333 s; "));
}

TEST_F(FfmpegSourceTest, EveryKindOfColoursSizesAndTracksIsRead) {
  std::vector<std::pair<std::string, std::string>> videos{
      {finger("320x240", "0.2") + "-q:v 2", "moving.mjpeg"},
      {finger("320x240", "0.2") + "-vf format=gbrp -c:v ffv1", "rgb.mkv"},
      // A video, whatever its name says.
      {finger("16x16", "0.2") + h264 + "-f mp4", "tiny.csv"},
      {sound + finger("320x240", "2") + "-map 0:a -map 1:v -c:a aac " + h264, "sound-first.mp4"},
      {"-i '" + folder_.file("tiny.csv") + "' -c copy -metadata:s:v:0 rotate=90", "rotated.mp4"}};
  // The frames tell their matrix and their range.
  for (const std::string matrix : {"bt709", "smpte170m"}) {
    for (const std::string range : {"tv", "pc"}) {
      videos.emplace_back(
          finger("320x240", "0.2") +
              "-vf format=gbrp,scale=flags=accurate_rnd+full_chroma_inp:out_color_matrix=" +
              matrix + ":out_range=" + range + ",format=yuv420p -colorspace " + matrix +
              " -color_range " + range + " -qp 0 " + h264,
          matrix + range + ".mp4");
    }
  }
  for (const auto& [arguments, name] : videos) {
    SCOPED_TRACE(name);
    expectFinger(read(arguments, name.c_str()));
  }
  // A live recording cannot go back and state its length.
  const auto live = read(finger("64x48", "1") + h264 + "-f matroska -live 1", "no-length.mkv");
  EXPECT_EQ(live.times.size(), 30U);
  EXPECT_EQ(live.remark, "");

  // Size and format may change, and times start again.
  const auto joined = [&](const std::string& first, const std::string& second, const char* name) {
    return playedOf(folder_.write(name, contentsOf(first) + contentsOf(second)));
  };
  const auto changing = joined(
      folder_.ffmpeg(finger("320x240", "1") + h264, "1.h264"),
      folder_.ffmpeg(finger("640x360", "1") + h264 + "-pix_fmt yuv444p", "2.h264"), "3.h264");
  EXPECT_EQ(changing.times.size(), 60U);
  expectFinger(changing);
  const std::string part = folder_.ffmpeg(finger("64x48", "2") + h264 + "-bf 0", "1.ts");
  const auto again = joined(part, part, "2.ts");
  ASSERT_EQ(again.times.size(), 120U);
  EXPECT_NEAR(again.times.back(), 119 / 30.0, 0.01);
}

TEST_F(FfmpegSourceTest, RowsThatNobodyReadsAreNotMadeAndTheOthersAreTheSame) {
  struct Rows : FrameCollector {
    std::size_t step = 1;
    std::vector<std::string> rows;

    using FrameCollector::captureOutput;
    std::size_t rowStep(std::size_t) const override { return step; }
    void captureOutput(PixelBuffer& frame) override {
      for (std::size_t y = 0; y < frame.height(); ++y) {
        const std::uint8_t* row = frame.baseAddress() + y * frame.bytesPerRow();
        rows.emplace_back(row, row + frame.bytesPerRow());
      }
    }
  };
  // Of the others the libraries do not make single rows.
  for (const auto& [format, size, isByRows] : {std::tuple{"yuv420p", "320x270", true},
                                               {"bgr0", "320x270", false},
                                               {"yuv444p10", "192x144", false}}) {
    FfmpegSource source(folder_.ffmpeg(
        pictures(size, "30", "0.1") + "-vf format=" + format + " -c:v ffv1", "a.mkv"));
    Rows fourth;
    fourth.step = 4;
    Rows all;
    source.advance();
    source.deliver(fourth);
    source.deliver(all);
    for (std::size_t y = 0; y < all.rows.size(); ++y) {
      const std::string notMade(all.rows[y].size(), '\0');
      ASSERT_NE(all.rows[y], notMade);
      ASSERT_EQ(fourth.rows[y], y % 4 == 0 || !isByRows ? all.rows[y] : notMade) << format << y;
    }
  }
}

TEST_F(FfmpegSourceTest, OfAFileThatIsCutOffWhatCameBeforeIsUsedAndTheRestToldInItsRemarkAlone) {
  const std::string content = pictures("320x240", "30", "4") + h264;
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  for (const char* name : {"a.mp4", "a.mkv", "a.avi"}) {
    SCOPED_TRACE(name);
    const std::string whole = folder_.ffmpeg(content + "-movflags +faststart", name);
    const std::string path = cut(whole, std::string("cut-") + name);
    const auto played = playedOf(path);
    EXPECT_NEAR(static_cast<double>(played.frames.size()), 75, 25);
    EXPECT_THAT(played.remark, AllOf(StartsWith(path + ": "), HasSubstr("cut off after 2.")));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  // One that is not read to its end is not cut off.
  FfmpegSource source(folder_.file("a.mp4"));
  for (int i = 0; i < 30; ++i) ASSERT_TRUE(source.advance());
  EXPECT_EQ(source.remark(), "");
}

TEST_F(FfmpegSourceTest, FramesThatCannotBeDecodedArePassedOverAndCountedUntilTheyAreTooMany) {
  // At a rate at which what follows would still come in time.
  const std::string whole =
      contentsOf(folder_.ffmpeg(pictures("16x16", "100", "5") + "-c:v png", "a.mov"));
  struct {
    bool (*isDamaged)(int picture);
    std::size_t frames;
    const char* remark;
  } const cases[] = {
      {[](int i) { return i == 50; }, 499, ": 1 frame could not be decoded and was passed over"},
      {[](int i) { return i >= 50 && i % 200 != 0 && i != 499; }, 53,
       ": 447 frames could not be decoded and were passed over"},
      {[](int i) { return i >= 50 && i < 400; }, 50,
       ": cannot be decoded after 0.5 s, what came before was used"},
  };
  for (const auto& [isDamaged, frames, remark] : cases) {
    const std::string path =
        folder_.write("damaged.mov", replaced(whole, pngHead, noHead, isDamaged));
    const auto played = playedOf(path);
    EXPECT_EQ(played.frames.size(), frames);
    EXPECT_EQ(played.remark, path + remark);
  }
}

TEST_F(FfmpegSourceTest, FramesFromASecondOnAreThoseOfTheWholeToTheBit) {
  const std::string reordered = "-c:v libx264 -preset veryfast -pix_fmt yuv420p -bf 3 -g 20 ";
  const std::string hevc =
      "-c:v libx265 -preset ultrafast -x265-params log-level=none:bframes=3:keyint=20 ";
  const std::string ofA = " -i '" + folder_.file("a.mp4") + "' -c copy ";
  const std::string made = pictures("64x48", "30", "3");
  std::vector<std::string> clips;
  for (const auto& [arguments, name] : std::vector<std::pair<std::string, const char*>>{
           {made + reordered, "a.mp4"},
           {"-ss 0.5" + ofA, "edit-list.mp4"},
           {ofA + "-output_ts_offset 7.3", "late.ts"},
           {made + hevc, "hevc.ts"},
           {made + "-vf setpts=6*PTS -r 12 -c:v mjpeg", "slow.avi"},
           {made + "-c:v libvpx-vp9 -cpu-used 8 -auto-alt-ref 1 -lag-in-frames 16 -g 20", "a.webm"},
           // Key frames that later frames look behind.
           {made + reordered + "-x264-params open-gop=1", "open.mp4"},
           {made + reordered + "-x264-params intra-refresh=1", "refresh.mp4"},
           // Timestamps that are missing, in the order of decoding, of an earlier frame, the same
           // for two decoding times with a wrong one behind, and that leap.
           {made + reordered, "no-times.avi"},
           {made + "-c:v libxvid -bf 2 -g 20", "decoding-order.mp4"},
           {ofA + R"(-bsf:v "setts=pts='if(eq(N,40),PTS-1600,PTS)'")", "early.mp4"},
           {ofA + R"(-bsf:v "setts=dts='if(eq(N,5),PREV_OUTDTS,DTS)')"
                  R"(:pts='if(eq(N,70),PTS-67,PTS)'")",
            "twice.flv"},
           {made + R"(-vf "setpts='PTS+if(gte(N,30),11/TB,0)'" -vsync vfr )" + reordered,
            "leap.mp4"}}) {
    clips.push_back(folder_.ffmpeg(arguments, name));
  }
  const std::string part = contentsOf(folder_.file("late.ts"));
  clips.push_back(folder_.write("starts-again.ts", part + part));
  clips.push_back(folder_.write("begins-in-the-middle.ts", part.substr(188 * 20)));
  for (const std::string& path : clips) {
    const PlayedRecording all = playedOf(path);
    for (const double from : {1.9, 13.5}) {
      SCOPED_TRACE(path + " from " + std::to_string(from));
      expectEndOf(all, path, from);
    }
  }
  // The pictures where decoding would begin cannot be decoded.
  const std::string video = contentsOf(folder_.ffmpeg(made + "-c:v prores", "a.mov"));
  const std::string damaged = folder_.write(
      "damaged.mov", replaced(video, "icpf", noHead, [](int i) { return i >= 54 && i <= 58; }));
  expectEndOf(playedOf(damaged), damaged, 1.9);
  const auto decodedFrom = [&](double from) {
    FfmpegSource source(clips.front(), from);
    play(source);
    return source.decodedFrames();
  };
  EXPECT_LT(decodedFrom(1.9), decodedFrom(0));
}

TEST_F(FfmpegSourceTest, RefusalsNameTheReason) {
  const std::string cover = folder_.ffmpeg(finger("64x48", "0.03") + "-frames:v 1", "cover.png");
  const std::string song = sound + "-i '" + cover +
                           "' -map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic";
  const std::string whole = folder_.ffmpeg(pictures("320x240", "30", "2") + h264, "whole.mp4");
  const std::string mjpeg = folder_.ffmpeg(finger("64x48", "0.2") + "-c:v mjpeg", "a.avi");
  const std::string png = folder_.ffmpeg(finger("64x48", "0.1") + "-c:v png", "a.mkv");
  // What lists of other files lead to.
  folder_.ffmpeg(finger("64x48", "1") + h264, "part.ts");
  folder_.ffmpeg(finger("64x48", "1"), "picture%03d.png");
  const std::string text = std::string(500, 'a') + "\nno video\n";
  std::vector<std::pair<std::string, std::string>> refused{
      {folder_.file(""), "a folder; name a file in it"},
      {folder_.write("empty.mp4", ""), "an empty file; record or copy it again"},
      {"/dev/null", "not a regular file; "},
      {folder_.ffmpeg(song, "song.mp3"), "a file without a video track; "},
      {cut(whole, "no-index.mp4"), "a video without its index"},
      {folder_.write("unknown.avi", replaced(contentsOf(mjpeg), "MJPG", "QZQZ")),
       "no decoder for its video format QZQZ; convert it to H.264"},
      {cover, "a picture and no video; film the fingertip"},
      {folder_.write("undecodable.mkv", replaced(contentsOf(png), pngHead, noHead)),
       "no frame of it could be decoded; "}};
  for (const auto& [name, contents] :
       {std::pair{"text.mp4", text},
        {"list.txt", "ffconcat version 1.0\nfile part.ts\n"},
        {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\npart.ts\n#EXT-X-ENDLIST\n"},
        {"picture%03d.png", "not a picture"}}) {
    refused.emplace_back(folder_.write(name, contents),
                         "not a video; give a video, or a colour series");
  }
  for (const auto& [path, reason] : refused) EXPECT_THAT(refusal(path), StartsWith(reason));
}

}  // namespace
}  // namespace veyla
