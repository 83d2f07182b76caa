#include "tests/cli/program.h"

namespace veyla {
namespace {

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
  const auto frames = names("empty");
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
  EXPECT_NE(contentsOf(file("end.png")), contentsOf(file("new/0005.png")))
      << "the pulse in any case";
  EXPECT_THAT(names("new"),
              ElementsAre("0000.png", "0001.png", "0002.png", "0003.png", "0004.png", "0005.png"));
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
  EXPECT_THAT(names("frames"), IsEmpty());
  EXPECT_THAT(names(), ElementsAre("end.png", "frames"));
}

}  // namespace
}  // namespace veyla
