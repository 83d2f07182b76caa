#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <set>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ChartTest : public Program {
 protected:
  const std::string data_ = file("data");

  Arguments chart(const Arguments& more = {}) const {
    Arguments arguments{"chart", "--data", data_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  void demoHistory(const std::string& days = "30") const {
    ASSERT_EQ(run({"demo-history", "--days", days, "--data", data_}).status, 0);
  }
  /// Runs SQL on the store.
  void change(const char* sql) const {
    sqlite3* store = nullptr;
    ASSERT_EQ(sqlite3_open((data_ + "/veyla.db").c_str(), &store), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(store, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(store);
  }
  /// A program named gnuplot that does this instead of drawing.
  void replaceGnuplot(const std::string& script) {
    std::filesystem::create_directories(file("bin"));
    write("bin/gnuplot", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(file("bin/gnuplot"), std::filesystem::perms::owner_all);
    environment["PATH"] = file("bin") + ":/usr/bin:/bin";
  }
  static std::size_t widest(const std::string& text) {
    std::size_t most = 0;
    std::size_t columns = 0;
    for (const char c : text) {
      columns = c == '\n' ? 0 : columns + ((static_cast<unsigned char>(c) & 0xC0U) != 0x80 ? 1 : 0);
      most = std::max(most, columns);
    }
    return most;
  }
};

TEST_F(ChartTest, PicturesAreWrittenByTheirEndingForEveryPeriodAndLabel) {
  demoHistory("200");
  std::set<std::string> pictures;
  for (const char* period : {"week", "month", "3months", "all"}) {
    const Result drawn = run(chart({"--period", period, "-o", "picture.SVG"}));
    EXPECT_EQ(drawn.status, 0) << drawn.error;
    EXPECT_EQ(drawn.out + drawn.error, "");
    pictures.insert(contentsOf(file("picture.SVG")));
  }
  EXPECT_EQ(pictures.size(), 4U);
  EXPECT_EQ(run(chart({"--label", "training (AFTER)", "-o", "picture.svg"})).status, 0);
  EXPECT_THAT(contentsOf(file("picture.svg")), HasSubstr("Training (After)"));
  EXPECT_EQ(run(chart({"-o", "picture.png"})).status, 0);
  EXPECT_THAT(contentsOf(file("picture.png")), HasSubstr("PNG"));
}

TEST_F(ChartTest, WithoutAFileTheChartsAreDrawnInTheTerminal) {
  demoHistory();
  const std::string plain = run(chart()).out;
  EXPECT_THAT(plain, StartsWith("Week\n\n*●* heartrate (data points are averaged for each day)\n"));
  EXPECT_THAT(plain, HasSubstr("spo2 (data points are averaged for each day)"));
  EXPECT_THAT(plain, HasSubstr(" 150\n"));
  EXPECT_THAT(plain, Not(HasSubstr("\x1b")));
  EXPECT_LE(widest(plain), 80U);
  environment["LC_ALL"] = "C";
  const std::string ascii = run(chart({"--period", "month", "--label", "Resting"})).out;
  EXPECT_THAT(ascii, StartsWith("Month - Resting\n\n*o* heartrate"));
  EXPECT_TRUE(std::all_of(ascii.begin(), ascii.end(), [](char c) { return c > 0; })) << ascii;
  environment["LC_ALL"] = "C.UTF-8";
  for (const std::size_t columns : {20U, 60U, 200U}) {
    const Result shown = onTerminal(chart({"--period", "3months"}), columns);
    EXPECT_EQ(shown.status, 0);
    EXPECT_THAT(shown.out, HasSubstr("\x1b[1;31m-●- "));
  }
  environment["NO_COLOR"] = "1";
  EXPECT_THAT(onTerminal(chart(), 60).out, Not(HasSubstr("\x1b")));
}

TEST_F(ChartTest, WithoutDataEachChartSaysSo) {
  const std::string none = "\nNot enough heartrate data\n\nNot enough SpO2 data\n";
  EXPECT_EQ(run({"chart", "--period", "all"}).out, "All\n" + none);
  EXPECT_FALSE(std::filesystem::exists(file("home"))) << "a store was made for nothing";
  ASSERT_EQ(run({"measure", "--only", "spo2", "--data", data_}).status, 0);
  const std::string half = run(chart()).out;
  EXPECT_THAT(half, HasSubstr("Not enough heartrate data\n\n*●* spo2"));
  EXPECT_EQ(run(chart({"--label", "Active", "-o", "none.svg"})).status, 0);
  EXPECT_THAT(contentsOf(file("none.svg")), HasSubstr("Not enough SpO2 data"));
}

TEST_F(ChartTest, ValuesBeyondTheRangeAreTold) {
  demoHistory("3");
  change("UPDATE entries SET value = replace(value, '\"hr\":', '\"hr\":9') WHERE key = 'values'");
  for (const Arguments& arguments : {chart(), chart({"-o", "picture.png"})}) {
    const Result drawn = run(arguments);
    EXPECT_EQ(drawn.status, 0);
    EXPECT_THAT(drawn.error, testing::MatchesRegex(
                                 "veyla: [0-9] heart rates? lies? outside 50 to 150 and .*\n"));
  }
}

TEST_F(ChartTest, WrongUsageNamesTheOptionAndTouchesNothing) {
  write("old.txt", "old");
  expectRefused(run(chart({"--label", "Jogging"})), 2,
                {"--label: \"Jogging\" is none of Resting, Active", "Sleep (After)"});
  expectRefused(run(chart({"--period", "year"})), 2,
                {"--period: \"year\" is none of week, month, 3months, all"});
  expectRefused(run(chart({"-o", "old.txt"})), 2, {"-o: old.txt", ".png or .svg"});
  EXPECT_THAT(run({"demo-history", "--days", "3"}).out, HasSubstr("in " + file("home/veyla-demo")));
  expectRefused(run({"demo-history"}), 2, {"veyla-demo/veyla.db has a history already"});
  EXPECT_FALSE(std::filesystem::exists(file("home/veyla")));
  expectRefused(run({"demo-history", "--data", "x", "--days", "0"}), 2, {"--days: \"0\""});
  expectRefused(run(chart()), 3, {"data/veyla.db: no such file; name the folder"});
  EXPECT_EQ(contentsOf(file("old.txt")), "old");
  EXPECT_FALSE(std::filesystem::exists(data_));
}

TEST_F(ChartTest, APictureIsWholeOrTheOldOneStays) {
  demoHistory();
  write("picture.png", "old");
  const auto expectOld = [&](const Result& result, const std::vector<std::string>& parts) {
    expectRefused(result, 4, parts);
    EXPECT_EQ(contentsOf(file("picture.png")), "old");
  };
  const Arguments draw = chart({"-o", "picture.png"});
  replaceGnuplot("echo '         line 3: no such terminal' >&2; exit 1");
  expectOld(run(draw), {"gnuplot: ", "no such terminal", "--version"});
  replaceGnuplot("head -c 3000 /dev/zero");
  expectOld(run(draw), {"gnuplot: its picture is not whole"});
  replaceGnuplot("kill -9 $$");
  expectOld(run(draw), {"gnuplot: it broke off"});
  environment["PATH"] = file("nothing");
  expectOld(run(draw), {"gnuplot: not found; install it: apt-get install gnuplot-nox"});
  expectRefused(run(chart()), 4, {"gnuplot: not found"});

  environment["PATH"] = "/usr/bin:/bin";
  expectRefused(run(chart({"-o", "absent/picture.png"})), 4, {"its folder does not exist"});
  expectRefused(run(chart(), [] { redirect(STDOUT_FILENO, "/dev/full", O_WRONLY); }), 4,
                {"standard output: the disk is full"});
  for (const auto& entry : std::filesystem::directory_iterator(folder())) {
    EXPECT_EQ(entry.path().string().find(".part"), std::string::npos) << entry.path();
  }
}

TEST_F(ChartTest, ADamagedEntryIsLeftOutAndNamed) {
  demoHistory();
  change("UPDATE entries SET value = '[{\"hr\":\"72\"},' || substr(value, 2) WHERE key = 'values'");
  const Result shown = run(chart({"--period", "month"}));
  EXPECT_EQ(shown.status, 3);
  EXPECT_THAT(shown.out, HasSubstr("heartrate"));
  // The oldest one, which the list numbers last.
  const auto list = run({"history", "--json", "--data", file("data")}).out;
  const std::string number = std::to_string(nlohmann::json::parse(list).size());
  EXPECT_THAT(shown.error, EndsWith("veyla.db: entry " + number +
                                    " of the history is left out: its \"hr\" is no number; delete "
                                    "it with veyla history delete " +
                                    number + "\n"));

  change("UPDATE entries SET value = 'no JSON' WHERE key = 'values'");
  expectRefused(run(chart({"-o", "picture.png"})), 4, {"veyla.db: the value of \"values\""});
  EXPECT_FALSE(std::filesystem::exists(file("picture.png")));
  write("data/veyla.db", std::string(8192, 'x'));
  expectRefused(run(chart()), 4, {"veyla.db: not a Veyla store"});
}

TEST_F(ChartTest, RandomEntriesNeverMixWithAHistory) {
  demoHistory("1000");
  const std::string store = contentsOf(data_ + "/veyla.db");
  EXPECT_EQ(run(chart({"--period", "all"})).status, 0);
  expectRefused(run({"demo-history", "--data", data_}), 2, {"--data: ", "a history already"});
  EXPECT_EQ(contentsOf(data_ + "/veyla.db"), store);
  std::filesystem::create_directory(file("letters"));
  write("letters/letter", "");
  expectRefused(run({"demo-history", "--data", file("letters")}), 2, {"holds other things"});
  EXPECT_FALSE(std::filesystem::exists(file("letters/veyla.db")));
}

}  // namespace
}  // namespace veyla
