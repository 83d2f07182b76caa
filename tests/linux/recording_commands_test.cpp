#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cmath>

#include "acquisition/settings.h"
#include "acquisition/video_processing.h"
#include "apps/cli/evaluation.h"
#include "apps/cli/kept_recording.h"
#include "apps/cli/report.h"
#include "apps/cli/series_command.h"
#include "apps/cli/synth_command.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/video_writer.h"
#include "platform/portable/json.h"
#include "tests/linux/recordings.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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

TEST_F(RecordingCommandsTest, TheLastEntryOfTheFoldersSettingsSaysWhichCellsOfAVideoAreAveraged) {
  const std::string video = folder_.ffmpeg(
      "-f lavfi -i color=c=0x643214:size=320x240:rate=30:duration=0.1 "
      "-vf format=gbrp,drawbox=w=80:h=60:color=0xB4501E:t=fill -c:v ffv1",
      "a.mkv");
  for (const char* name : {"Spo2Settings", "HeartrateSettings", "CameraSettings"}) {
    std::string text = EmbeddedResources().read(name, "json").value_or("");
    if (name[0] == 'S') {
      text.insert(text.rfind(']'), R"(, {"iPhoneModel": "iphone6s", "grids": [1], "rawDataSize": 90,
          "framesBeforeBeginning": 60, "skipFramesBetweenMeasurements": 5, "neededValidSpo2": 20,
          "useNewAlgorithm": true, "useTrend": true})");
    }
    folder_.write(std::string(name) + ".json", text);
  }
  SeriesOptions averaged;
  averaged.input = video;
  averaged.output = folder_.file("a.csv");
  averaged.settingsFolder = folder_.path();
  const Outcome outcome = outcomeOf(runSeries, averaged);
  ASSERT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(contentsOf(averaged.output),
            "time,R,G,B,hr\n0,180,80,30,180\n33,180,80,30,180\n67,180,80,30,180\n");
}

/// All that a measurement on this device has of each frame.
class Measurer : public VideoDelegate {
 public:
  std::vector<std::vector<float>> frames;

  Measurer(const std::string& device, RecordingSource& source) : platform_(device) {
    const std::string profile = Utils::platformString();
    const auto text = EmbeddedResources().read("Spo2Settings", "json");
    Utils::setSpo2Settings(*Utils::entryFor(profile, *NlohmannJsonParser().parse(*text)));
    VideoProcessing video;
    video.setIsIphone4(profile == wholeFrameProfile);
    video.setDelegate(this);
    while (source.advance()) source.deliver(video);
  }

  void frameColours(const FrameColours& colours) override {
    frames.push_back({colours.red, colours.green, colours.blue});
    if (!colours.cells) return;
    frames.back().push_back(colours.cells->colourSpread);
    for (const float cell : colours.cells->brightness) frames.back().push_back(cell);
  }
  void updateMeasurementsWithRed(float red, float green, float blue, float hr) override {
    for (const float value : {red, green, blue, hr}) frames.back().push_back(value);
  }

 private:
  TestPlatform platform_;
};

TEST_F(RecordingCommandsTest, OfAKeptRecordingAMeasurementHasAllThatTheRecordingGivesIt) {
  const SynthOptions synthetic = options("a.mp4");
  ASSERT_EQ(synth(synthetic).status, 0);
  const std::string rows = folder_.write("a.csv", "time,R,G,B,hr\n0,99.5,50.5,9.5,70\n9,7,7,7,7\n");
  for (const std::string& path : {synthetic.output, rows}) {
    for (const char* device : {"iPhone8,1", "iPhone3,1"}) {
      SCOPED_TRACE(path + " " + device);
      FrameAverager averager(EmbeddedResources(), device);
      const KeptRecording kept(*openRecording(path), averager);
      const auto frames = Measurer(device, *openRecording(path)).frames;
      EXPECT_THAT(frames, testing::SizeIs(testing::Ge(2U)));
      for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(Measurer(device, *kept.source()).frames, frames);
      }
    }
  }
}

TEST_F(RecordingCommandsTest, AVideoIsDecodedOnceForAllItsWindowsWhichMeasureAsItselfDoes) {
  SynthOptions synthetic = options("a.mp4");
  synthetic.seconds = 26;
  ASSERT_EQ(synth(synthetic).status, 0);
  folder_.write("a.reference.csv", "time,heartrate,spo2\n0,72,97\n");
  const ScratchFolder elsewhere;
  const std::string copy = elsewhere.write("a.mp4", contentsOf(synthetic.output));
  const EmbeddedResources resources;
  const EvaluationRequest request{
      .folder = folder_.path(), .window = 20.5, .every = 2.7, .spo2 = true, .jobs = 1};
  // There is nothing left to decode once the first window is measured.
  const auto remove = [&](std::size_t, std::size_t) { std::filesystem::remove(synthetic.output); };
  const Evaluation evaluation = evaluateFolder(request, resources, remove);
  ASSERT_EQ(evaluation.windows.size(), 3U);
  for (const EvaluatedWindow& window : evaluation.windows) {
    TimedQueue queue;
    QueueClock clock({}, queue);
    MemoryKeyValueStore store;
    MeasurementRun run({.start = window.start, .duration = request.window},
                       openRecording(copy, window.start),
                       {.queue = queue, .clock = clock, .store = store, .resources = resources});
    const MeasurementReport own = run.run();
    EXPECT_EQ(reportAsJson(window.report), reportAsJson(own));
    EXPECT_TRUE(own.heartrate);
    EXPECT_EQ(window.report.heartrate, own.heartrate);
    EXPECT_EQ(window.report.spo2, own.spo2);
  }
}

TEST_F(RecordingCommandsTest, WrongValuesAreNamed) {
  const auto refused = [&]<class T>(T SynthOptions::*option, double value) {
    SynthOptions wrong = options("a.csv");
    wrong.*option = static_cast<T>(value);
    const Outcome outcome = synth(wrong);
    EXPECT_EQ(outcome.status, 2);
    return outcome.error;
  };
  EXPECT_EQ(refused(&SynthOptions::bpm, 19.5),
            "veyla: --bpm: 19.5 is out of range; give 20 to 300\n");
  EXPECT_THAT(refused(&SynthOptions::spo2, 101), HasSubstr("spo2: 101"));
  EXPECT_THAT(refused(&SynthOptions::seconds, 0), HasSubstr("seconds: 0"));
  EXPECT_THAT(refused(&SynthOptions::fps, std::nan("")), HasSubstr("fps: not a finite"));
  EXPECT_THAT(refused(&SynthOptions::width, 15), HasSubstr("width: 15"));
  EXPECT_THAT(refused(&SynthOptions::height, 4321), HasSubstr("height: 4321"));
  EXPECT_THAT(refused(&SynthOptions::noise, -1), HasSubstr("noise: -1"));
  EXPECT_THAT(refused(&SynthOptions::motion, 11), HasSubstr("motion: 11"));
}

TEST_F(RecordingCommandsTest, WhatCannotBeReadOrWrittenLeavesTheOutputAsItWasAndNothingBehind) {
  const std::string output = folder_.write("kept.csv", "kept");
  const Outcome absent = series(folder_.file("absent.mp4"), output);
  EXPECT_EQ(absent.status, 3);
  EXPECT_EQ(absent.error,
            "veyla: " + folder_.file("absent.mp4") + ": no such file; check the name\n");
  SynthOptions drawn = options("drawn.mp4");
  drawn.from = folder_.write("bad.csv", "time,R,G,B\n0,1,2,x\n");
  EXPECT_EQ(synth(drawn).status, 3);
  EXPECT_EQ(contentsOf(output), "kept");

  const auto refused = [&](const SynthOptions& wrong) {
    const Outcome outcome = synth(wrong);
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1);
    return outcome.error;
  };
  std::filesystem::create_directory(folder_.file("folder.mp4"));
  EXPECT_THAT(refused(options("a.xyz")), HasSubstr("no kind of video has this ending"));
  EXPECT_THAT(refused(options("absent/a.mp4")), HasSubstr("its folder does not exist"));
  EXPECT_THAT(refused(options("absent/a.csv")), HasSubstr("its folder does not exist"));
  EXPECT_THAT(refused(options("folder.mp4")), HasSubstr("a folder; name a file in it"));
  for (const char* name : {"a.mp4", "a.y4m", "a.mkv", "a.csv"}) {
    const std::string former = folder_.write(name, "kept");
    SynthOptions large = options(name);
    large.seconds = 5;
    EXPECT_THAT(onSmallDisk(1000, [&] { return refused(large); }),
                StartsWith("veyla: " + former + ": larger than the system allows"));
    EXPECT_EQ(contentsOf(former), "kept");
  }
  EXPECT_THAT(folder_.names(), testing::UnorderedElementsAre("kept.csv", "bad.csv", "folder.mp4",
                                                             "a.mp4", "a.y4m", "a.mkv", "a.csv"));
}

TEST_F(RecordingCommandsTest, AFileInTheFormersPlaceIsForThoseForWhomThatWas) {
  const std::string input = folder_.write("a.csv", "time,R,G,B\n0,1,2,3\n");
  const std::string output = folder_.write("b.csv", "kept");
  const auto replaced = [&] {
    EXPECT_EQ(series(input, output).status, 0);
    EXPECT_NE(contentsOf(output), "kept");
    struct stat status {};
    stat(output.c_str(), &status);
    return status;
  };
  for (const mode_t mask : {0022U, 0U}) {
    const mode_t former = umask(mask);
    for (const mode_t mode : {0600U, 0646U}) {
      chmod(output.c_str(), mode);
      EXPECT_EQ(replaced().st_mode & 0777, mode);
    }
    umask(former);
  }
  // User 1 may write, the group may nothing, which the mode does not say.
  const char list[] =
      "\2\0\0\0"
      "\1\0\6\0\377\377\377\377\2\0\6\0\1\0\0\0\4\0\0\0\377\377\377\377"
      "\20\0\6\0\377\377\377\377\40\0\0\0\377\377\377\377";
  constexpr std::size_t listSize = sizeof list - 1;
  constexpr const char* listName = "system.posix_acl_access";
  if (setxattr(output.c_str(), listName, list, listSize, 0) == 0) {
    EXPECT_EQ(replaced().st_mode & 0777, 0660U);
    char kept[listSize] = {};
    EXPECT_EQ(getxattr(output.c_str(), listName, kept, sizeof kept), ssize_t{sizeof kept});
    EXPECT_EQ(std::string(kept, sizeof kept), std::string(list, listSize));
    removexattr(output.c_str(), listName);
  }
  if (geteuid() != 0) return;  // Only root gives files away.
  ASSERT_EQ(chown(output.c_str(), 1, 2), 0);
  chmod(output.c_str(), 0672);
  EXPECT_EQ(replaced().st_uid, 1U);
  EXPECT_EQ(replaced().st_gid, 2U);
  EXPECT_EQ(replaced().st_mode & 0777, 0672U);
  // Who cannot keep the group gives another one no more than everybody has.
  chmod(folder_.path().c_str(), 0777);
  EXPECT_EQ(inChild([&] {
              if (setgid(3) != 0 || setuid(3) != 0) return std::string("no other user");
              return std::to_string(replaced().st_mode & 0777);
            }),
            std::to_string(0622));
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
  EXPECT_EQ(testing::internal::GetCapturedStdout(), contentsOf(target));
}

}  // namespace
}  // namespace veyla
