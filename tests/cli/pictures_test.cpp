#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PicturesTest : public Program {
 protected:
  /// Width and height of a PNG in pixels; none of what is not a whole one.
  std::vector<int> sizeOf(const std::string& name) const {
    const std::string png = contentsOf(file(name));
    if (!png.starts_with("\x89PNG\r\n") || png.find("IEND") == std::string::npos) return {};
    const auto number = [&](std::size_t at) {
      return static_cast<unsigned char>(png[at + 2]) * 256 +
             static_cast<unsigned char>(png[at + 3]);
    };
    return {number(16), number(20)};
  }
};

TEST_F(PicturesTest, TheEndAndEverySecondAreDrawn) {
  write("end.png", "an older picture");
  std::filesystem::create_directory(file("empty"));
  EXPECT_EQ(done({"measure", "--no-save", "--snapshot", "end.png", "--frames", "empty"}),
            done({"measure", "--no-save"}));
  EXPECT_THAT(sizeOf("end.png"), ElementsAre(780, 1688));
  // The measurement takes 2 seconds of countdown and 16.3 more.
  const auto frames = namesIn("empty");
  EXPECT_EQ(frames.size(), 19U);
  EXPECT_EQ(*frames.begin(), "0000.png");
  EXPECT_EQ(*frames.rbegin(), "0018.png");
  std::set<std::string> different;
  for (const std::string& frame : frames) {
    EXPECT_THAT(sizeOf("empty/" + frame), ElementsAre(780, 1688)) << frame;
    different.insert(contentsOf(file("empty/" + frame)));
  }
  // START, the countdown, the analysis, then changing values.
  EXPECT_GE(different.size(), 6U);
  const std::string end = contentsOf(file("end.png"));
  EXPECT_FALSE(different.contains(end));
  done({"measure", "--no-save", "--snapshot", "end.png"});
  EXPECT_EQ(contentsOf(file("end.png")), end) << "the same measurement looks the same";

  EXPECT_EQ(run({"measure", "--no-save", "--duration", "5", "--only", "spo2", "--scale", "0.5",
                 "--snapshot", "end.png", "--frames", "new"})
                .status,
            1);
  EXPECT_THAT(sizeOf("end.png"), ElementsAre(195, 422));
  EXPECT_THAT(namesIn("new"),
              ElementsAre("0000.png", "0001.png", "0002.png", "0003.png", "0004.png", "0005.png"));
}

TEST_F(PicturesTest, WhatCannotBeWrittenIsToldBeforeTheMeasurement) {
  write("file", "mine");
  std::filesystem::create_directory(file("folder.png"));
  struct Case {
    const char *option, *name, *reason;
  };
  for (const auto& [option, name, reason] : std::initializer_list<Case>{
           {"--snapshot", "absent/end.png", "its folder does not exist; make it first"},
           {"--snapshot", "folder.png", "a folder; name a file in it"},
           {"--snapshot", "file/end.png", "a file stands where a folder must be"},
           {"--frames", "absent/frames", "its folder does not exist; make it first"},
           {"--frames", "file", "a file stands where a folder must be; move it away or"},
           {"--frames", ".", "not empty; name a new or an empty folder"}}) {
    expectRefused(run({"measure", "--no-save", option, name}), 4,
                  std::string(name) + ": " + reason);
  }
  // An input that cannot be read leaves no trace of the pictures.
  expectRefused(run({"measure", "absent.mp4", "--frames", "frames", "--snapshot", "end.png"}), 3,
                "absent.mp4");
  EXPECT_EQ(contentsOf(file("file")), "mine");
  EXPECT_THAT(namesIn(), ElementsAre("file", "folder.png"));
}

TEST_F(PicturesTest, ADiskThatFillsUpCostsNoMeasurementAndLeavesNothingHalfWritten) {
  write("end.png", "an older picture");
  const Result full =
      run({"measure", "--no-save", "--frames", "frames", "--snapshot", "end.png"}, withSmallFiles);
  EXPECT_EQ(full.status, 4);
  EXPECT_THAT(full.out, HasSubstr("Finished after "));
  EXPECT_THAT(full.error,
              AllOf(HasSubstr("veyla: end.png: larger than the system allows; choose"),
                    HasSubstr("veyla: frames/0000.png: larger than the system allows")));
  EXPECT_EQ(contentsOf(file("end.png")), "an older picture");
  EXPECT_THAT(namesIn("frames"), IsEmpty());
  EXPECT_THAT(namesIn(), ElementsAre("end.png", "frames"));

  const std::string answer = inChild([&] {
    std::filesystem::create_directory(file("disk"));
    if (!mountDisk(file("disk"), "size=200k")) return std::string("no mounts");
    const Result result = run({"measure", "--no-save", "--frames", "disk"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("png: the disk is full; make room or choose another"));
    EXPECT_FALSE(namesIn("disk").empty());
    for (const std::string& name : namesIn("disk")) {
      EXPECT_THAT(sizeOf("disk/" + name), ElementsAre(780, 1688)) << name;
    }
    return std::string("told");
  });
  if (answer == "no mounts") GTEST_SKIP() << noMounts;
  EXPECT_EQ(answer, "told");
}

}  // namespace
}  // namespace veyla
