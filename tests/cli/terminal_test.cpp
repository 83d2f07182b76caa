#include "tests/cli/program.h"

namespace veyla {
namespace {

class TerminalTest : public Program {
 protected:
  const std::string measure = "measure --no-save";
  /// The live view as it stayed when the measurement had ended.
  std::string lastDrawing(const std::string& words) const {
    const std::string output = onTerminal(words).out;
    const std::size_t end = output.rfind(shown);
    const std::size_t begin = output.rfind("A\r", end);
    return output.substr(begin, end - begin);
  }
};

TEST_F(TerminalTest, TheMeasurementIsShownLiveAndItsEndStays) {
  environment["NO_COLOR"] = "1";
  std::string bar;
  for (int i = 0; i < 43; ++i) bar += "━";
  EXPECT_THAT(lastDrawing(measure), AllOf(HasSubstr("\r  Heart rate    71 BPM  " + bar +
                                                    " 100 % done\x1b[K\r\n"
                                                    "\r  SpO2          97 %    " +
                                                    bar +
                                                    " 100 % done\x1b[K\r\n"
                                                    // The curve's first peak.
                                                    "\r\x1b[K\r\n\r  ⠀⣄⠀⠀⠀"),
                                          EndsWith("\r  FINISHED\x1b[K\r\n\r  \x1b[K\r\n\r\n")));
  // The phone's instructions are for a finger that can still be moved.
  EXPECT_THAT(lastDrawing("measure --no-save --duration 15"),
              AllOf(HasSubstr("━─"), EndsWith("\r\x1b[K\r\n\r  \x1b[K\r\n\r  \x1b[K\r\n\r\n")));
  EXPECT_TRUE(onTerminal("measure --no-save --json").out.starts_with("{\"outcome\":"));
}

TEST_F(TerminalTest, TheTerminalIsUsedAsWideAsItIsAndNoLineIsWrapped) {
  for (const int columns : {240, 80, 56, 40, 23, 20}) {
    const Result result = onTerminal(measure, columns);
    EXPECT_EQ(result.status, 0);
    const std::size_t end = result.out.find(shown);
    EXPECT_EQ(widestLine(result.out.substr(0, end)), columns - 2);
    EXPECT_LE(widestLine(result.out.substr(end)), columns);
    EXPECT_THAT(result.out, AllOf(HasSubstr("Heart rate"), HasSubstr("FINISHED")));
  }
}

TEST_F(TerminalTest, WhatIsLeftOfALineIsIndentedOnANarrowTerminal) {
  done("synth finger.csv --seconds 40");
  changed("black.csv", "$1,0,0,0");
  EXPECT_THAT(onTerminal("measure finger.csv black.csv", 40).out,
              HasSubstr("black.csv   --      --    unfinished: No\r\n"
                        "    finger from 2 to 40 s: the picture\r\n    is black.\r\n"));
  keep(Value::Array{entry(72, 97, 0, 1)});
  EXPECT_EQ(onTerminal("measure no-such.mp4", 40).out,
            "veyla: no-such.mp4: no such file; check\r\n    the name\r\n");
  EXPECT_THAT(onTerminal("demo-history --data 'my data'", 40).out,
              EndsWith(" my data; see\r\nveyla chart --data 'my data'\r\n"));
  EXPECT_THAT(onTerminal("history --data data", 40).out, ContainsRegex("bpm  97%\r\n     [A-Z]"));
}

TEST_F(TerminalTest, HelpFitsTheWidthThatIsWantedAndLosesNothing) {
  const auto withoutBlanks = [](std::string text) {
    std::erase_if(text, isspace);
    return text;
  };
  const auto help = [&](const std::string& command, const char* columns) {
    environment["COLUMNS"] = columns;
    return done(command + "--help");
  };
  for (const std::string command : {"", "measure ", "history label "}) {
    const std::string narrow = help(command, "40");
    EXPECT_THAT(widestLine(narrow), AllOf(Gt(35), Le(40))) << narrow;
    EXPECT_EQ(withoutBlanks(narrow), withoutBlanks(help(command, "240")));
  }
  environment["COLUMNS"] = "240";
  EXPECT_LE(widestLine(onTerminal("measure --help", 40).out), 40);
}

TEST_F(TerminalTest, PlainTerminalsGetPlainText) {
  environment["LC_ALL"] = "C";
  EXPECT_THAT(onTerminal(measure).out, ContainsRegex("\x1b\\[[0-9;]*m"));
  environment["NO_COLOR"] = "1";
  const Result ascii = onTerminal(measure);
  EXPECT_THAT(ascii.out,
              AllOf(HasSubstr(hidden), HasSubstr("####"), Not(ContainsRegex("\x1b\\[[0-9;]*m"))));
  EXPECT_TRUE(isAscii(ascii.out));

  environment["TERM"] = "dumb";
  const Result dumb = onTerminal(measure);
  EXPECT_THAT(dumb.out, Not(HasSubstr("\x1b")));
  EXPECT_TRUE(dumb.out.starts_with("Heart rate   71 beats per minute\r\n")) << dumb.out;
}

TEST_F(TerminalTest, IntendedUseAndPermissionsComeOnceAndToNobodyWithoutATerminal) {
  done("measure");
  EXPECT_THAT(done("health"), HasSubstr("heartrate  not decided yet"));
  const Result first = onTerminal("measure", 80, "y\n\n");
  EXPECT_EQ(first.status, 0);
  EXPECT_EQ(countOf("INTENDED USE", first.out), 1U);
  EXPECT_EQ(countOf("[y/N]", first.out), 2U);
  EXPECT_LE(widestLine(first.out.substr(0, first.out.find("[y/N]"))), 80);
  EXPECT_LT(first.out.rfind("[y/N]"), first.out.find(hidden)) << "asked with a hidden cursor";
  const Result second = onTerminal("measure");
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(countOf("INTENDED USE", second.out) + countOf("[y/N]", second.out), 0U);
  EXPECT_EQ(done("health"), "heartrate  allowed\nspo2       denied\n");
}

}  // namespace
}  // namespace veyla
