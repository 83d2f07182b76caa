#include <gmock/gmock.h>

#include <sstream>

#include "tests/cli/program.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The words of the help that are options.
std::vector<std::string> optionsIn(const std::string& help) {
  std::vector<std::string> options;
  for (std::size_t at = 0; (at = help.find("\n  -", at)) != std::string::npos; at += 3) {
    std::string names = help.substr(at + 3, help.find(' ', at + 3) - at - 3);
    options.push_back(names.substr(names.find(',') == std::string::npos ? 0 : names.find(',') + 1));
  }
  return options;
}

class DescriptionTest : public Program {
 protected:
  /// What bash offers for the last of these words.
  std::vector<std::string> completed(const std::vector<std::string>& words) const {
    const std::string script = run({"--describe", "bash"}).out;
    std::string line = "source " + write("veyla.bash", script) + "\nCOMP_WORDS=(";
    for (const std::string& word : words) line += " \"" + word + "\"";
    line += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) +
            "\n_veyla\n((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\"\n";
    write("complete.bash", line);
    const std::string command =
        "cd '" + folder().string() + "' && bash --norc complete.bash > offered 2> complaints";
    [[maybe_unused]] const int status = std::system(command.c_str());
    EXPECT_EQ(contentsOf(file("complaints")), "");
    std::vector<std::string> offered;
    std::istringstream stream(contentsOf(file("offered")));
    for (std::string each; std::getline(stream, each);) offered.push_back(each);
    return offered;
  }
};

TEST_F(DescriptionTest, BashCompletesCommandsOptionsAndValues) {
  EXPECT_THAT(completed({"veyla", "hist"}), ElementsAre("history"));
  EXPECT_THAT(completed({"veyla", "history", ""}),
              ElementsAre("label", "delete", "export", "mail"));
  EXPECT_THAT(completed({"veyla", "health", "--data", "x", "al"}), ElementsAre("allow"));
  EXPECT_THAT(completed({"veyla", "health", "deny", ""}), ElementsAre("heartrate", "spo2"));
  EXPECT_THAT(completed({"veyla", "measure", "--only", "s"}), ElementsAre("spo2"));
  EXPECT_THAT(completed({"veyla", "measure", "--only", "=", "h"}), ElementsAre("heartrate"));
  EXPECT_THAT(completed({"veyla", "measure", "--start", ""}), IsEmpty());
  EXPECT_THAT(completed({"veyla", "history", "label", "1", "Training"}),
              ElementsAre("Training\\ \\(Before\\)", "Training\\ \\(After\\)"));
  EXPECT_THAT(completed({"veyla", "history", "label", "1", "Training\\\\ \\\\(A"}),
              ElementsAre("Training\\ \\(After\\)"));
  EXPECT_THAT(completed({"veyla", "history", "label", "1", "'Sleep (A"}),
              ElementsAre("Sleep (After)"))
      << "the quote stays";
  EXPECT_THAT(completed({"veyla", "history", "label", ""}), IsEmpty()) << "a number";
  write("my film.mp4", "");
  std::filesystem::create_directory(file("my data"));
  EXPECT_THAT(completed({"veyla", "measure", "my"}),
              testing::UnorderedElementsAre("my film.mp4", "my data"));
  EXPECT_THAT(completed({"veyla", "measure", "--json", "--data", "my"}), ElementsAre("my data"));
}

TEST_F(DescriptionTest, EveryOptionOfEveryCommandIsDescribed) {
  const std::string manual = run({"--describe", "man"}).out;
  EXPECT_THAT(manual, AllOf(HasSubstr(".SH EXIT STATUS"), HasSubstr(".SH FILES")));
  int options = 0;
  const std::function<void(Arguments)> check = [&](const Arguments& command) {
    Arguments asked = command;
    asked.emplace_back("--help");
    const std::string help = run(asked).out;
    std::vector<std::string> words{"veyla"};
    words.insert(words.end(), command.begin(), command.end());
    words.emplace_back("-");
    const auto offered = completed(words);
    for (const std::string& option : optionsIn(help)) {
      ++options;
      EXPECT_THAT(offered, Contains(option)) << testing::PrintToString(command);
      std::string escaped;
      for (const char c : option) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
      EXPECT_THAT(manual, HasSubstr("\\fB" + escaped + "\\fR"));
    }
    words.back() = "";
    if (help.find("\nSubcommands:") == std::string::npos) return;
    for (const std::string& inner : completed(words)) {
      Arguments longer = command;
      longer.push_back(inner);
      check(longer);
    }
  };
  check({});
  EXPECT_GT(options, 40);
}

TEST_F(DescriptionTest, TheReadmeListsTheManualsExitStatuses) {
  const std::string readme = contentsOf(VEYLA_SETTINGS_FOLDER "/../README.md");
  std::string listed;
  std::istringstream rows(readme.substr(readme.find("\n## Exit status\n")));
  for (std::string row; std::getline(rows, row) && row.find("What goes wrong") != 0;) {
    if (row.size() < 7 || row[2] < '0' || row[2] > '9') continue;
    const std::string meaning = row.substr(6, row.size() - 8);
    listed += std::string(".TP\n\\fB") + row[2] + "\\fR\n" +
              static_cast<char>(std::toupper(meaning[0])) + meaning.substr(1) + ".\n";
  }
  EXPECT_THAT(run({"--describe", "man"}).out, HasSubstr(".SH EXIT STATUS\n" + listed + ".SH"));
}

TEST_F(DescriptionTest, TheManualIsWellFormed) {
  write("veyla.1", run({"--describe", "man"}).out);
  if (std::system("command -v groff >/dev/null") != 0) GTEST_SKIP() << "there is no groff here";
  const std::string command =
      "groff -ww -z -man -Tutf8 " + file("veyla.1") + " 2> " + file("warnings");
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(contentsOf(file("warnings")), "");
  expectRefused(run({"--describe", "html"}), 2, {"\"html\" is none of man, bash"});
}

}  // namespace
}  // namespace veyla
