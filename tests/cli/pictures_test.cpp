#include "tests/cli/program.h"

namespace veyla {
namespace {

class PicturesTest : public Program {
 protected:
  /// The picture of this name, which must be a whole PNG of this scale.
  std::string picture(const std::string& name, double scale = 2) const {
    const std::string png = contentsOf(file(name));
    std::string size = "IHDR";
    for (const double points : {390.0, 844.0}) {
      const auto pixels = static_cast<unsigned>(points * scale);
      size += {0, 0, static_cast<char>(pixels >> 8), static_cast<char>(pixels & 0xFF)};
    }
    EXPECT_THAT(png, AllOf(HasSubstr(size), HasSubstr("IEND"))) << name;
    return png;
  }
};

TEST_F(PicturesTest, TheEndAndEverySecondAreDrawn) {
  write("end.png", "an older picture");
  std::filesystem::create_directory(file("empty"));
  EXPECT_EQ(done("measure --no-save --snapshot end.png --frames empty"), done("measure --no-save"));
  const std::string end = picture("end.png");
  done("measure --no-save --snapshot end.png");
  EXPECT_EQ(picture("end.png"), end) << "the same measurement looks the same";
  // The measurement takes 2 seconds of countdown and 16.3 more.
  const auto frames = names("empty");
  EXPECT_EQ(frames.size(), 19U);
  EXPECT_EQ(*frames.begin() + *frames.rbegin(), "0000.png0018.png");
  std::set<std::string> different;
  for (const std::string& frame : frames) different.insert(picture("empty/" + frame));
  // START, the countdown, the analysis, then changing values.
  EXPECT_GE(different.size(), 6U);
  EXPECT_FALSE(different.contains(end));

  EXPECT_EQ(
      run("measure --no-save --duration 5 --only spo2 --scale 0.5 --snapshot end.png --frames new")
          .status,
      1);
  EXPECT_EQ(names("new").size(), 6U);
  // The longer one's last frames are gone; what another program drew is not.
  done("measure --no-save --scale 0.5 --frames new");
  const std::string again = "measure --no-save --duration 5 --only spo2 --scale 0.5 --frames new";
  EXPECT_EQ(run(again).status, 1);
  EXPECT_EQ(names("new").size(), 6U);
  write("new/0006.png", contentsOf(file("new/0005.png")).substr(0, 40));
  expectRefused(run(again), 4, "new: holds 0006.png, which is no picture of a measurement");
  EXPECT_EQ(names("new").size(), 7U);
  EXPECT_NE(picture("end.png", 0.5), picture("new/0005.png", 0.5)) << "the pulse in any case";
}

TEST_F(PicturesTest, ADiskThatFillsUpCostsNoMeasurementAndLeavesNothingHalfWritten) {
  write("end.png", "an older picture");
  const Result full = run("measure --no-save --frames frames --snapshot end.png", withSmallFiles);
  EXPECT_EQ(full.status, 4);
  EXPECT_THAT(full.out, HasSubstr("Finished after "));
  EXPECT_THAT(full.error,
              AllOf(HasSubstr("veyla: end.png: larger than the system allows; choose"),
                    HasSubstr("veyla: frames/0000.png: larger than the system allows")));
  EXPECT_EQ(contentsOf(file("end.png")), "an older picture");
  EXPECT_THAT(names(), ElementsAre("end.png"));
}

}  // namespace
}  // namespace veyla
