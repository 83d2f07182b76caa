#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>
#include <tuple>

#include "apps/cli/evaluation.h"
#include "apps/cli/report.h"
#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"
#include "tests/linux/recordings.h"

namespace veyla {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// The one line that a command complains with, after its status: "4 veyla: …".
template <class Options>
std::string complaintOf(ExitStatus (*command)(const Options&), const Options& options) {
  testing::internal::CaptureStderr();
  const ExitStatus status = command(options);
  const std::string error = testing::internal::GetCapturedStderr();
  if (status == ExitStatus::done) return error;
  EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
  return std::to_string(static_cast<int>(status)) + " " + error;
}
std::string series(const std::string& input, const std::string& output) {
  SeriesOptions options;
  options.input = input;
  options.output = output;
  return complaintOf(runSeries, options);
}

class RecordingCommandsTest : public testing::Test {
 protected:
  SynthOptions options(const std::string& name, double seconds = 1) const {
    SynthOptions options;
    options.output = folder_.file(name);
    options.seconds = seconds;
    options.width = 320;
    options.height = 240;
    return options;
  }
  static std::string synth(const SynthOptions& options) { return complaintOf(runSynth, options); }

  ScratchFolder folder_;
};

TEST_F(RecordingCommandsTest, EveryKindOfVideoKeepsMeansTimesAndCount) {
  for (const char* name :
       {"a.mp4", "a.mov", "a.mkv", "a.avi", "a.webm", "a.y4m", "odd.mkv", "HIGH.MP4"}) {
    SCOPED_TRACE(name);
    SynthOptions synthetic = options(name);
    synthetic.fps = 29.97;
    // Where videos change to the other colour matrix, and a size that they round up.
    if (name[0] == 'H') std::tie(synthetic.width, synthetic.height) = std::pair(1280U, 720U);
    if (name[0] == 'o') std::tie(synthetic.width, synthetic.height) = std::pair(101U, 67U);
    ASSERT_EQ(synth(synthetic), "");
    const auto played = playedOf(synthetic.output);
    ASSERT_EQ(played.frames.size(), 30U);
    EXPECT_EQ(played.remark, "");
    const SyntheticFinger finger({});
    // The mean over a second within a third of a step of 8-bit samples; each frame within a half.
    double red = 0;
    double green = 0;
    for (std::size_t i = 0; i < played.frames.size(); ++i) {
      const double time = static_cast<double>(i) / 29.97;
      EXPECT_NEAR(played.times[i], time, 0.0006);
      const ChannelMeans asked = finger.at(time);
      const FrameSample& frame = played.frames[i];
      EXPECT_NEAR(static_cast<double>(frame.red), asked.red, 0.5);
      EXPECT_NEAR(static_cast<double>(frame.green), asked.green, 0.5);
      EXPECT_NEAR(static_cast<double>(frame.blue), asked.blue, 0.7);
      red += (static_cast<double>(frame.red) - asked.red) / 30;
      green += (static_cast<double>(frame.green) - asked.green) / 30;
    }
    EXPECT_NEAR(red, 0, 0.33);
    EXPECT_NEAR(green, 0, 0.33);
  }
}

TEST_F(RecordingCommandsTest, ASeriesIsDrawnAtItsOwnLengthAndWrittenAsASeries) {
  SynthOptions drawn = options("b.csv");
  drawn.from =
      folder_.write("a.csv", "time,R,G,B\n100,10,20,30\n600,20,0,30\n600,50,0,30\n1000,52,0,40\n");
  drawn.seconds.reset();
  drawn.noise = 0;
  drawn.fps = 4;
  EXPECT_EQ(synth(drawn), "");
  EXPECT_EQ(contentsOf(drawn.output),
            "time,R,G,B\n0,10,20,30\n250,15,10,30\n500,50,0,30\n750,51.25,0,36.25\n");
  EXPECT_EQ(series(drawn.output, folder_.file("c.csv")), "");
  EXPECT_THAT(contentsOf(folder_.file("c.csv")),
              StartsWith("time,R,G,B,hr\n0,10,20,30,10\n250,15,10,30,15\n500,50,0,30,50\n"));
}

TEST_F(RecordingCommandsTest, TheFoldersSettingsSayWhichCellsOfAVideoAreAveraged) {
  const std::string video = folder_.ffmpeg(
      "-f lavfi -i color=c=0x643214:size=320x240:rate=30:duration=0.1 "
      "-vf format=gbrp,drawbox=w=80:h=60:color=0xB4501E:t=fill -c:v ffv1",
      "a.mkv");
  for (const char* name : {"Spo2Settings", "HeartrateSettings", "CameraSettings"}) {
    const std::string text = EmbeddedResources().read(name, "json").value_or("");
    static const std::regex cells("\\[1, [0-9, ]*\\]");
    folder_.write(std::string(name) + ".json", std::regex_replace(text, cells, "[1]"));
  }
  SeriesOptions averaged;
  averaged.input = video;
  averaged.output = folder_.file("a.csv");
  averaged.settingsFolder = folder_.path();
  EXPECT_EQ(complaintOf(runSeries, averaged), "");
  EXPECT_EQ(contentsOf(averaged.output),
            "time,R,G,B,hr\n0,180,80,30,180\n33,180,80,30,180\n67,180,80,30,180\n");
}

TEST_F(RecordingCommandsTest, ARecordingIsReadOnceForAllItsWindowsWhichMeasureAsItselfDoes) {
  const ScratchFolder elsewhere;
  const EmbeddedResources resources;
  folder_.write("a.reference.csv", "time,heartrate,spo2\n0,72,97\n");
  for (const auto& [name, device] :
       {std::pair{"a.mp4", "iPhone8,1"}, {"a.mp4", "iPhone3,1"}, {"a.csv", "iPhone8,1"}}) {
    SCOPED_TRACE(name + std::string(" ") + device);
    SynthOptions synthetic = options(name, 26);
    synthetic.width = 160;
    synthetic.height = 120;
    ASSERT_EQ(synth(synthetic), "");
    std::string original = elsewhere.write(name, contentsOf(synthetic.output));
    if (original.ends_with("4")) {
      // Half of the picture darkens every other second, so that its cells tell more than its means.
      original = elsewhere.ffmpeg("-i '" + original +
                                      "' -vf \"drawbox=w=iw/2:color=black@0.1:t=fill:"
                                      "enable='lt(mod(t,2),1)'\" -c:v libx264 -preset ultrafast",
                                  "shaded.mp4");
    }
    folder_.write(name, contentsOf(original));
    EvaluationRequest request{.folder = folder_.path(), .window = 20.5, .every = 2.7, .spo2 = true};
    request.device = device;
    request.jobs = 1;
    // There is nothing left to read once the first window is measured.
    const auto remove = [&](std::size_t, std::size_t) {
      std::filesystem::remove(synthetic.output);
    };
    const Evaluation evaluation = evaluateFolder(request, resources, remove);
    ASSERT_EQ(evaluation.windows.size(), 3U);
    for (const EvaluatedWindow& window : evaluation.windows) {
      TimedQueue queue;
      QueueClock clock({}, queue);
      MemoryKeyValueStore store;
      MeasurementRun run({.device = device, .start = window.start, .duration = request.window},
                         openRecording(original, window.start),
                         {.queue = queue, .clock = clock, .store = store, .resources = resources});
      const MeasurementReport own = run.run();
      EXPECT_EQ(reportAsJson(window.report), reportAsJson(own));
      EXPECT_GT(own.frames, 200);
      EXPECT_EQ(window.report.heartrate, own.heartrate);
      EXPECT_EQ(window.report.spo2, own.spo2);
    }
  }
}

TEST_F(RecordingCommandsTest, WhatCannotBeReadOrWrittenLeavesTheOutputAsItWasAndNothingBehind) {
  SynthOptions drawn = options("drawn.mp4");
  drawn.from = folder_.write("bad.csv", "time,R,G,B\n0,1,2,x\n");
  EXPECT_THAT(synth(drawn), StartsWith("3 "));
  EXPECT_THAT(synth(options("a.xyz")), HasSubstr("no kind of video has this ending"));
  for (const char* name : {"a.mp4", "a.y4m", "a.mkv", "a.csv"}) {
    const std::string former = folder_.write(name, "kept");
    EXPECT_THAT(onSmallDisk(1000, [&] { return synth(options(name, 5)); }),
                StartsWith("4 veyla: " + former + ": larger than the system allows"));
    EXPECT_EQ(contentsOf(former), "kept");
  }
  EXPECT_THAT(folder_.names(), testing::ElementsAre("a.csv", "a.mkv", "a.mp4", "a.y4m", "bad.csv"));
}

TEST_F(RecordingCommandsTest, AFileIsReplacedBehindALinkAndForThoseForWhomItWas) {
  const std::string input = folder_.write("a.csv", "time,R,G,B\n0,1,2,3\n");
  const std::string target = folder_.write("target.csv", "old");
  const std::string link = folder_.file("link.csv");
  std::filesystem::create_symlink(target, link);
  EXPECT_EQ(series(input, link), "");
  EXPECT_EQ(contentsOf(target), "time,R,G,B,hr\n0,1,2,3,1\n");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  // Only root gives files away.
  const uid_t owner = geteuid() == 0 ? 1 : geteuid();
  const gid_t group = geteuid() == 0 ? 2 : getegid();
  ASSERT_EQ(chown(target.c_str(), owner, group), 0);
  for (const mode_t mode : {0600U, 0672U}) {
    chmod(target.c_str(), mode);
    EXPECT_EQ(series(input, target), "");
    struct stat status {};
    stat(target.c_str(), &status);
    EXPECT_EQ(std::tuple(status.st_mode & 0777, status.st_uid, status.st_gid),
              std::tuple(mode, owner, group));
  }
  EXPECT_THAT(series(input, "/dev/full"), HasSubstr("/dev/full: the disk is full"));
}

}  // namespace
}  // namespace veyla
