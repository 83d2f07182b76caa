#include "tests/cli/program.h"

namespace veyla {
namespace {

class DescriptionTest : public Program {
 protected:
  /// What bash offers for the last of these words after the program's name.
  std::vector<std::string> completed(const std::vector<std::string>& words) const {
    std::string script = done("--describe bash") + "COMP_WORDS=(veyla";
    for (const std::string& word : words) script += " \"" + word + "\"";
    write("complete.bash", script + ")\nCOMP_CWORD=" + std::to_string(words.size()) +
                               "\n_veyla\n((${#COMPREPLY[@]})) && printf '%s\\n' "
                               "\"${COMPREPLY[@]}\"\n");
    const std::string command =
        "cd '" + path().string() + "' && bash --norc complete.bash > offered 2> complaints";
    [[maybe_unused]] const int status = std::system(command.c_str());
    EXPECT_EQ(contentsOf(file("complaints")), "");
    return linesOf(contentsOf(file("offered")));
  }
};

TEST_F(DescriptionTest, BashCompletesCommandsOptionsAndValues) {
  write("my film.mp4", "");
  std::filesystem::create_directory(file("my data"));
  struct Case {
    std::vector<std::string> words, offered;
  };
  for (const auto& [words, offered] : std::vector<Case>{
           {{"history", "label", "-"}, {"-h", "--help", "--data", "--off"}},
           {{"history", ""}, {"label", "delete", "export", "mail", "backup", "restore"}},
           {{"health", "--data", "x", "al"}, {"allow"}},
           {{"measure", "--only", "=", "h"}, {"heartrate"}},
           {{"history", "label", ""}, {}},
           {{"history", "label", "1", "Training"},
            {"Training\\ \\(Before\\)", "Training\\ \\(After\\)"}},
           // The quote stays.
           {{"history", "label", "1", "'Sleep (A"}, {"Sleep (After)"}},
           {{"measure", "my"}, {"my film.mp4", "my data"}},
           {{"measure", "--json", "--data", "my"}, {"my data"}}}) {
    EXPECT_THAT(completed(words), UnorderedElementsAreArray(offered));
  }
}

TEST_F(DescriptionTest, TheManualIsWellFormedAndTheReferenceHasEveryTable) {
  const std::string end = "<!-- end -->\n";
  const auto tables = [&](const std::string& text) {
    std::vector<std::string> found;
    for (std::size_t at = 0; (at = text.find("<!-- ", at)) != std::string::npos;) {
      const std::size_t after = text.find(end, at) + end.size();
      found.push_back(text.substr(at, after - at));
      at = after;
    }
    return found;
  };
  EXPECT_THAT(tables(contentsOf(VEYLA_SETTINGS_FOLDER "/../docs/commands.md")),
              UnorderedElementsAreArray(tables(done("--describe markdown"))))
      << "make commands writes them anew";

  const std::string manual = done("--describe man");
  for (const char* named :
       {"\\fB\\-\\-no\\-save\\fR", "\\fB\\-\\-off\\fR", "label 1 \"Training (After)\""}) {
    EXPECT_THAT(manual, HasSubstr(named));
  }

  write("veyla.1", manual);
  if (std::system("command -v groff >/dev/null") != 0) GTEST_SKIP() << "there is no groff here";
  const std::string command =
      "groff -ww -z -man -Tutf8 " + file("veyla.1") + " 2> " + file("warnings");
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(contentsOf(file("warnings")), "");
}

}  // namespace
}  // namespace veyla
