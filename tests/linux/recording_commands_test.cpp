#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/series_source.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/video_writer.h"
#include "tests/linux/recordings.h"

namespace veyla {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct Outcome {
  int status = -1;
  std::string error;
};

template <class Options>
Outcome outcomeOf(ExitStatus (*command)(const Options&), const Options& options) {
  testing::internal::CaptureStderr();
  const ExitStatus status = command(options);
  return {static_cast<int>(status), testing::internal::GetCapturedStderr()};
}

/// How far a frame lies above the colour that was asked for.
ChannelMeans excessOf(const FrameSample& frame, const ChannelMeans& asked) {
  return {static_cast<double>(frame.red) - asked.red,
          static_cast<double>(frame.green) - asked.green,
          static_cast<double>(frame.blue) - asked.blue};
}

Outcome synth(const SynthOptions& options) { return outcomeOf(runSynth, options); }
Outcome series(const std::string& input, const std::string& output) {
  SeriesOptions options;
  options.input = input;
  options.output = output;
  return outcomeOf(runSeries, options);
}

class RecordingCommandsTest : public testing::Test {
 protected:
  SynthOptions options(const std::string& name) const {
    SynthOptions options;
    options.output = folder_.file(name);
    options.seconds = 1;
    options.width = 320;
    options.height = 240;
    return options;
  }
  PlayedRecording read(const std::string& path) const {
    const auto source = openRecording(path);
    return play(*source);
  }

  ScratchFolder folder_;
};

TEST_F(RecordingCommandsTest, EveryKindOfVideoKeepsMeansTimesAndCount) {
  for (const char* name : {"a.mp4", "a.mov", "a.mkv", "a.avi", "a.webm", "a.y4m", "HIGH.MP4"}) {
    SCOPED_TRACE(name);
    SynthOptions synthetic = options(name);
    synthetic.fps = 29.97;
    if (name[0] == 'H') {
      // Where videos change to the other colour matrix.
      synthetic.width = 1280;
      synthetic.height = 720;
    }
    const Outcome outcome = synth(synthetic);
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const auto played = read(synthetic.output);
    ASSERT_EQ(played.frames.size(), 30U);
    EXPECT_THAT(played.remark, IsEmpty());
    const SyntheticFinger finger({});
    // The mean over a second within a third of a step of 8-bit samples; each frame within a half.
    double red = 0;
    double green = 0;
    for (std::size_t i = 0; i < played.frames.size(); ++i) {
      EXPECT_NEAR(played.times[i], static_cast<double>(i) / 29.97, 0.0006);
      const ChannelMeans excess =
          excessOf(played.frames[i], finger.at(static_cast<double>(i) / 29.97));
      red += excess.red / 30;
      green += excess.green / 30;
      EXPECT_NEAR(excess.red, 0, 0.5);
      EXPECT_NEAR(excess.green, 0, 0.5);
      EXPECT_NEAR(excess.blue, 0, 0.7);
    }
    EXPECT_NEAR(red, 0, 0.33);
    EXPECT_NEAR(green, 0, 0.33);
  }
}

TEST_F(RecordingCommandsTest, ASeriesIsDrawnAtItsOwnLengthAndWrittenAsASeries) {
  SynthOptions drawn = options("b.csv");
  drawn.from = folder_.write("a.csv", "time,R,G,B\n0,10,20,30\n500,20,30,40\n");
  drawn.seconds.reset();
  drawn.noise = 0;
  drawn.fps = 4;
  ASSERT_EQ(synth(drawn).status, 0);
  EXPECT_EQ(contentsOf(drawn.output), "time,R,G,B\n0,10,20,30\n250,15,25,35\n500,20,30,40\n");
  ASSERT_EQ(series(drawn.output, folder_.file("c.csv")).status, 0);
  EXPECT_EQ(contentsOf(folder_.file("c.csv")),
            "time,R,G,B,hr\n0,10,20,30,10\n250,15,25,35,15\n500,20,30,40,20\n");
}

TEST_F(RecordingCommandsTest, OddSizesAreRoundedUpForVideos) {
  SynthOptions odd = options("odd.mkv");
  odd.width = 101;
  odd.height = 67;
  EXPECT_EQ(synth(odd).status, 0);
  EXPECT_EQ(read(odd.output).frames.size(), 30U);
  EXPECT_THROW(VideoWriter(folder_.file("x.mp4"), 101, 68, 30), OutputError);
}

TEST_F(RecordingCommandsTest, UnreadableInputLeavesTheOutputAsItWas) {
  const std::string output = folder_.write("kept.csv", "kept");
  const Outcome absent = series(folder_.file("absent.mp4"), output);
  EXPECT_EQ(absent.status, 3);
  EXPECT_EQ(absent.error,
            "veyla: " + folder_.file("absent.mp4") + ": no such file; check the name\n");
  SynthOptions drawn = options("drawn.mp4");
  drawn.from = folder_.write("bad.csv", "time,R,G,B\n0,1,2,x\n");
  EXPECT_EQ(synth(drawn).status, 3);
  EXPECT_EQ(contentsOf(output), "kept");
  EXPECT_THAT(folder_.names(), testing::UnorderedElementsAre("kept.csv", "bad.csv"));
}

TEST_F(RecordingCommandsTest, LinksAndDevicesAreWrittenThrough) {
  const std::string target = folder_.write("target.csv", "old");
  ASSERT_EQ(symlink(target.c_str(), folder_.file("link.csv").c_str()), 0);
  const std::string input = folder_.write("a.csv", "time,R,G,B\n0,1,2,3\n");
  EXPECT_EQ(series(input, folder_.file("link.csv")).status, 0);
  EXPECT_EQ(contentsOf(target), "time,R,G,B,hr\n0,1,2,3,1\n");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("link.csv")));

  EXPECT_EQ(series(input, "/dev/null").status, 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  const Outcome full = series(input, "/dev/full");
  EXPECT_EQ(full.status, 4);
  EXPECT_THAT(full.error, HasSubstr("/dev/full: the disk is full"));

  testing::internal::CaptureStdout();
  EXPECT_EQ(series(input, "-").status, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "time,R,G,B,hr\n0,1,2,3,1\n");
}

}  // namespace
}  // namespace veyla
