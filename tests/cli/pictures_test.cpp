#include <gmock/gmock.h>

#include <set>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PicturesTest : public Program {
 protected:
  /// Width and height of a PNG in pixels; none of what is not a whole one.
  static std::vector<int> sizeOf(const std::filesystem::path& file) {
    const std::string png = contentsOf(file);
    if (!png.starts_with("\x89PNG\r\n") || png.find("IEND") == std::string::npos) return {};
    const auto number = [&](std::size_t at) {
      int value = 0;
      for (std::size_t i = at; i < at + 4; ++i) {
        value = value * 256 + static_cast<unsigned char>(png[i]);
      }
      return value;
    };
    return {number(16), number(20)};
  }
  std::set<std::string> namesIn(const std::string& name) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file(name))) {
      names.insert(entry.path().filename());
    }
    return names;
  }
};

TEST_F(PicturesTest, TheEndAndEverySecondAreDrawn) {
  write("end.png", "an older picture");
  std::filesystem::create_directory(file("empty"));
  const Result plain = run({"measure", "--no-save"});
  const Result drawn = run({"measure", "--no-save", "--snapshot", "end.png", "--frames", "empty"});
  EXPECT_EQ(drawn.status, 0) << drawn.error;
  EXPECT_EQ(drawn.out, plain.out);
  EXPECT_THAT(sizeOf(file("end.png")), ElementsAre(780, 1688));
  // The measurement takes 2 seconds of countdown and 16.3 more.
  const auto frames = namesIn("empty");
  EXPECT_EQ(frames.size(), 19U);
  EXPECT_EQ(*frames.begin(), "0000.png");
  EXPECT_EQ(*frames.rbegin(), "0018.png");
  std::set<std::string> different;
  for (const std::string& frame : frames) {
    EXPECT_THAT(sizeOf(folder() / "empty" / frame), ElementsAre(780, 1688)) << frame;
    different.insert(contentsOf(folder() / "empty" / frame));
  }
  EXPECT_FALSE(different.contains(contentsOf(file("end.png"))));
  // START, the countdown, the analysis, then changing values.
  EXPECT_GE(different.size(), 6U);

  const std::string first = contentsOf(file("end.png"));
  EXPECT_EQ(run({"measure", "--no-save", "--snapshot", "end.png"}).status, 0);
  EXPECT_EQ(contentsOf(file("end.png")), first) << "the same measurement looks the same";
  EXPECT_EQ(run({"measure", "--no-save", "--duration", "5", "--only", "spo2", "--scale", "0.5",
                 "--snapshot", "end.png", "--frames", "new"})
                .status,
            1);
  EXPECT_THAT(sizeOf(file("end.png")), ElementsAre(195, 422));
  EXPECT_THAT(namesIn("new"),
              ElementsAre("0000.png", "0001.png", "0002.png", "0003.png", "0004.png", "0005.png"));
}

TEST_F(PicturesTest, WhatCannotBeWrittenIsToldBeforeTheMeasurement) {
  write("file", "mine");
  const auto refused = [&](const char* option, const std::string& name, int status,
                           const std::string& line) {
    expectRefused(run({"measure", "--no-save", option, name}), status, {line});
  };
  refused("--snapshot", "absent/end.png", 4,
          "absent/end.png: its folder does not exist; make it first");
  std::filesystem::create_directory(file("folder.png"));
  refused("--snapshot", "folder.png", 4, "folder.png: a folder; name a file in it");
  refused("--snapshot", "-", 2, "--snapshot -: the result goes to standard output; name a file");
  refused("--snapshot", "file/end.png", 4, "file/end.png: a file stands where a folder must be");
  refused("--frames", "absent/frames", 4,
          "absent/frames: its folder does not exist; make it first");
  refused("--frames", "file", 4, "file: a file stands where a folder must be; move it away or");
  refused("--frames", ".", 4, ".: not empty; name a new or an empty folder");
  refused("--scale", "9", 2, "--scale: \"9\" is no number from 0.25 to 8");
  expectRefused(run({"measure", "--no-save", "--scale", "3"}), 2, {"--scale: nothing is drawn"});
  expectRefused(run({"measure", "--no-save", "--snapshot", "x.png", "--trace", "x.png"}), 2,
                {"--snapshot and --trace: both would go to x.png; name two files"});
  refused("--snapshot", "end.jpg", 2, "--snapshot: end.jpg does not end in .png");
  EXPECT_EQ(contentsOf(file("file")), "mine");

  ASSERT_EQ(run({"synth", "in.csv"}).status, 0);
  expectRefused(run({"measure", "in.csv", "--snapshot", "./in.csv"}), 2,
                {"--snapshot: ./in.csv is the input itself; name another file"});
  // An input that cannot be read leaves no trace of the pictures.
  expectRefused(run({"measure", "absent.mp4", "--frames", "frames", "--snapshot", "end.png"}), 3,
                {"absent.mp4"});
  EXPECT_FALSE(std::filesystem::exists(file("frames")));
  EXPECT_FALSE(std::filesystem::exists(file("end.png")));
}

TEST_F(PicturesTest, ADiskThatFillsUpCostsNoMeasurementAndLeavesNothingHalfWritten) {
  const auto small = [] {
    const rlimit limit{20000, 20000};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  write("end.png", "an older picture");
  const Result full = run({"measure", "--no-save", "--trace", "trace.csv", "--frames", "frames",
                           "--snapshot", "end.png"},
                          small);
  EXPECT_EQ(full.status, 4);
  EXPECT_THAT(full.out, HasSubstr("Finished after "));
  EXPECT_THAT(full.error, HasSubstr("veyla: end.png: larger than the system allows; choose"));
  EXPECT_THAT(full.error, HasSubstr("veyla: frames/0000.png: larger than the system allows"));
  EXPECT_EQ(contentsOf(file("end.png")), "an older picture");
  EXPECT_THAT(namesIn("frames"), IsEmpty());
  EXPECT_THAT(contentsOf(file("trace.csv")), HasSubstr("heartrate,accepted"));
  for (const std::string& name : namesIn(".")) EXPECT_EQ(name.find(".part"), std::string::npos);

  const std::string answer = inChild([&] {
    std::filesystem::create_directory(file("disk"));
    if (!mountDisk(file("disk"), "size=200k")) return std::string("no mounts");
    const Result result = run({"measure", "--no-save", "--frames", "disk"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("png: the disk is full; make room or choose another"));
    const auto kept = namesIn("disk");
    EXPECT_FALSE(kept.empty());
    for (const std::string& name : kept) {
      EXPECT_THAT(sizeOf(folder() / "disk" / name), ElementsAre(780, 1688)) << name;
    }
    return std::string("told");
  });
  if (answer == "no mounts") GTEST_SKIP() << noMounts;
  EXPECT_EQ(answer, "told");
}

}  // namespace
}  // namespace veyla
