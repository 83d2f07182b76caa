#include <gmock/gmock.h>

#include <sstream>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::AnyOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

const std::string hidden = "\x1b[?25l";
const std::string shown = "\x1b[?25h";

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<signed char>(c) > 0; });
}

/// The most columns that a line of the live view takes: sequences take none, a character one.
std::size_t widestLine(const std::string& output) {
  const std::size_t start = output.find(hidden);
  std::size_t widest = 0;
  std::size_t width = 0;
  bool inSequence = false;
  for (const char c : output.substr(start, output.find(shown) - start)) {
    const bool continues = (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    if (c == '\x1b') {
      inSequence = true;
    } else if (inSequence) {
      inSequence = std::isalpha(static_cast<unsigned char>(c)) == 0;
    } else if (c == '\n') {
      width = 0;
    } else if (c != '\r' && !continues) {
      widest = std::max(widest, ++width);
    }
  }
  return widest;
}

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
    ++count;
  return count;
}

class TerminalTest : public Program {
 protected:
  const Arguments measure{"measure", "--no-save"};
};

TEST_F(TerminalTest, TheMeasurementIsShownLive) {
  const Result result = onTerminal(measure);
  EXPECT_EQ(result.status, 0);
  for (const char* part : {"Heart rate", "BPM", "SpO2", "━", "─", "FINISHED", "100 %",
                           "Heart rate   71 beats per minute"}) {
    EXPECT_THAT(result.out, HasSubstr(part));
  }
  // The curve's characters, U+2840 to U+28FF, begin so.
  EXPECT_THAT(result.out, AnyOf(HasSubstr("\xE2\xA1"), HasSubstr("\xE2\xA2")));
  EXPECT_LT(result.out.find(hidden), result.out.find(shown));
}

TEST_F(TerminalTest, NarrowTerminalsAreNotWrapped) {
  for (const std::size_t columns : {80U, 56U, 40U, 23U, 20U}) {
    const Result result = onTerminal(measure, columns);
    EXPECT_EQ(result.status, 0);
    EXPECT_LT(widestLine(result.out), columns);
    EXPECT_THAT(result.out, HasSubstr("Heart rate"));
    EXPECT_THAT(result.out, HasSubstr("FINISHED"));
  }
}

TEST_F(TerminalTest, PlainTerminalsGetPlainText) {
  environment["NO_COLOR"] = "1";
  const Result colourless = onTerminal(measure);
  EXPECT_THAT(colourless.out, HasSubstr(hidden));
  EXPECT_THAT(colourless.out, Not(ContainsRegex("\x1b\\[[0-9;]*m")));

  environment["LC_ALL"] = "C";
  const Result ascii = onTerminal(measure);
  EXPECT_TRUE(isAscii(ascii.out));
  EXPECT_THAT(ascii.out, HasSubstr("####"));

  environment["TERM"] = "dumb";
  const Result dumb = onTerminal(measure);
  EXPECT_THAT(dumb.out, Not(HasSubstr("\x1b")));
  EXPECT_TRUE(dumb.out.starts_with("Heart rate   71 beats per minute\r\n")) << dumb.out;
}

TEST_F(TerminalTest, AnInterruptBringsTheCursorBack) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const Result result = onTerminal({"measure", "--no-save", "--realtime"}, 80, "", signal);
    EXPECT_EQ(result.signal, signal);
    EXPECT_GT(result.out.rfind(shown) + 1, result.out.rfind(hidden) + 1);
    EXPECT_THAT(result.out, HasSubstr(shown));
  }
}

TEST_F(TerminalTest, IntendedUseAndPermissionsComeOnce) {
  const Result first = onTerminal({"measure"}, 80, "y\nn\n");
  EXPECT_EQ(first.status, 0);
  EXPECT_EQ(countOf("INTENDED USE", first.out), 1U);
  EXPECT_EQ(countOf("[y/N]", first.out), 2U);
  const std::string before = first.out.substr(0, first.out.find("[y/N]"));
  std::istringstream lines(before);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 81U) << line;
  EXPECT_LT(first.out.rfind("[y/N]"), first.out.find(hidden)) << "asked with a hidden cursor";
  const Result second = onTerminal({"measure"});
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(countOf("INTENDED USE", second.out) + countOf("[y/N]", second.out), 0U);

  // Heart rates were allowed, saturations were not.
  const std::string records = contentsOf(folder() / "home" / "veyla" / "Observations.ndjson");
  EXPECT_EQ(countOf("8867-4", records), 2U) << records;
  EXPECT_EQ(countOf("59408-5", records), 0U);
}

TEST_F(TerminalTest, NobodyIsAskedWithoutATerminal) {
  const Result result = run({"measure"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_FALSE(std::filesystem::exists(folder() / "home" / "veyla" / "Observations.ndjson"));
}

}  // namespace
}  // namespace veyla
