#include "apps/cli/description.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "apps/cli/described.h"
#include "platform/linux/output_file.h"

namespace veyla {

namespace {

/// What an option takes: the name of its value, or, where that is nothing, its own.
std::string valueName(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.empty() && option.get_positional() ? option.get_name(true) : type;
}

// The manual page.

constexpr std::array<std::pair<const char*, const char*>, 3> files{
    {{"~/.local/share/veyla/veyla.db", "the history and small state, an SQLite file"},
     {"~/.local/share/veyla/Observations.ndjson",
      "with your permission, health records as FHIR R4 Observations"},
     {"~/.local/share/veyla/drafts/", "drafts of mails"}}};

constexpr std::array<std::pair<const char*, const char*>, 6> examples{
    {{"veyla measure finger.mp4 --start 5",
      "measures a video, START tapped 5 seconds into it, and saves the result"},
     {"veyla measure finger.csv --no-save --json",
      "measures a colour series for a script and keeps nothing"},
     {"veyla chart --period month -o month.png", "draws the last 30 days as a picture"},
     {"veyla history label 1 \"Training (After)\"", "labels the newest entry"},
     {"veyla history export -o history.csv", "writes the history as CSV"},
     {"veyla evaluate recordings --json",
      "measures a folder of recordings and compares them with their references"}}};

/// A text as roff prints it.
std::string roff(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c;
    }
  }
  // At a line's start these would begin a request.
  if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped.insert(0, "\\&");
  return escaped;
}

std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + roff(text) + "\\fR"; }

std::string sentence(const std::string& text) { return roff(asSentence(text)); }

std::string tagged(const std::string& tag, const std::string& text) {
  return ".TP\n" + tag + "\n" + text + "\n";
}

std::string optionTag(const CLI::Option& option) {
  std::string tag;
  for (const std::string& name : namesOf(option)) tag += (tag.empty() ? "" : ", ") + bold(name);
  return takesValue(option) ? tag + " " + italic(option.get_type_name()) : tag;
}

/// A positional's name as a command line shows it.
std::string positionalForm(const CLI::Option& option) {
  const bool repeats = option.get_items_expected_max() > 1;
  const std::string form = italic(option.get_name(true)) + (repeats ? "..." : "");
  return option.get_required() ? form : "[" + form + "]";
}

/// What a positional takes, where it is one of a few texts.
std::string positionalTag(const CLI::Option& option) {
  const std::string choices = option.get_type_name();
  return italic(option.get_name(true)) + (choices.empty() ? "" : ": " + roff(choices));
}

std::string synopsis(const std::string& name, const CLI::App& command) {
  std::string line = bold(name);
  for (const CLI::Option* option : optionsOf(command)) {
    if (option->get_required()) line += " " + optionTag(*option);
  }
  for (const CLI::Option* positional : positionalsOf(command)) {
    line += " " + positionalForm(*positional);
  }
  return line + " [" + italic("OPTION") + "]...";
}

/// The section of a command and those of the commands within it.
std::string commandSections(const std::string& name, const CLI::App& command) {
  std::string text =
      ".SS " + synopsis(name, command) + "\n" + sentence(command.get_description()) + "\n";
  for (const CLI::Option* positional : positionalsOf(command)) {
    text += tagged(positionalTag(*positional), sentence(positional->get_description()));
  }
  for (const CLI::Option* option : optionsOf(command)) {
    if (option->get_lnames() == std::vector<std::string>{"help"}) continue;
    text += tagged(optionTag(*option), sentence(option->get_description()));
  }
  for (const CLI::App* inner : commandsOf(command)) {
    text += commandSections(name + " " + inner->get_name(), *inner);
  }
  return text;
}

template <class Rows>
std::string section(const char* title, const Rows& rows) {
  std::string text = std::string(".SH ") + title + "\n";
  for (const auto& [tag, meaning] : rows) text += tagged(bold(tag), sentence(meaning));
  return text;
}

// The completion.

enum class Values { none, file, folder, choice };

Values valuesOf(const CLI::Option& option) {
  const std::string name = valueName(option);
  if (name.find('|') != std::string::npos) return Values::choice;
  if (name == "DIR" || name == "FOLDER") return Values::folder;
  if (name.find("FILE") != std::string::npos || name.find('.') != std::string::npos ||
      name == "INPUT" || name == "OUT") {
    return Values::file;
  }
  return Values::none;
}

/// What an option's value may be, as a program gets it: what needs quotes in a shell is shown with
/// them.
std::vector<std::string> choicesOf(const CLI::Option& option) {
  std::vector<std::string> choices = CLI::detail::split(valueName(option), '|');
  for (std::string& choice : choices) std::erase(choice, '"');
  return choices;
}

/// As one word of a shell.
std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

/// A command of the script that offers what an option takes.
std::string offer(const CLI::Option& option) {
  switch (valuesOf(option)) {
    case Values::file:
      return "_veyla_files -f";
    case Values::folder:
      return "_veyla_files -d";
    case Values::choice: {
      std::string line = "_veyla_words";
      for (const std::string& choice : choicesOf(option)) {
        line += " " + quoted(choice);
      }
      return line;
    }
    case Values::none:
      break;
  }
  return ":";
}

/// A branch of a case statement.
std::string branch(const std::string& pattern, const std::string& action) {
  return "    " + pattern + ") " + action + " ;;\n";
}

std::string spaced(const std::string& first, const std::string& second) {
  return first + " " + second;
}

/// Collects the branches of the script's case statements over all commands.
struct Branches {
  std::string commands;
  std::string valued;
  std::string values;
  std::string positionals;
  std::string options;

  void add(const std::string& path, const CLI::App& command) {
    std::string words = "_veyla_words";
    for (const CLI::Option* option : optionsOf(command)) {
      for (const std::string& name : namesOf(*option)) {
        words.append(" ").append(quoted(name));
        if (!takesValue(*option)) continue;
        const std::string typed = quoted(spaced(path, name));
        valued += branch(typed, "i=$((i + 1))");
        values += branch(typed, offer(*option) + "; return");
      }
    }
    options += branch(quoted(path), words);

    int number = 0;
    for (const CLI::Option* positional : positionalsOf(command)) {
      // One that repeats takes all that follow.
      const bool repeats = positional->get_items_expected_max() > 1;
      positionals += branch(quoted(spaced(path, "")) + (repeats ? "*" : std::to_string(number)),
                            offer(*positional));
      ++number;
    }
    std::string inner = "_veyla_words";
    for (const CLI::App* each : commandsOf(command)) {
      const std::string& name = each->get_name();
      const std::string longer = spaced(path, name);
      inner.append(" ").append(quoted(name));
      commands += branch(quoted(longer), "path=" + quoted(longer) + "; positional=0");
      add(longer, *each);
    }
    if (inner != "_veyla_words") positionals += branch(quoted(spaced(path, "0")), inner);
  }
};

constexpr const char* completionHead = R"bash(# bash completion for veyla

_veyla_words() {
  local word
  for word in "$@"; do
    [[ $word == "$typed"* ]] || continue
    # Within quotes that were opened the shell takes it as it is.
    [[ $current == [\'\"]* ]] || word=$(printf '%q' "$word")
    COMPREPLY+=("$word")
  done
}

_veyla_files() {
  local name
  compopt -o filenames 2>/dev/null
  while IFS= read -r name; do COMPREPLY+=("$name"); done < <(compgen "$1" -- "$typed")
}

_veyla() {
  local current=${COMP_WORDS[COMP_CWORD]} typed path=veyla positional=0 i word before=
  COMPREPLY=()
  # The word without its quotes and backslashes.
  typed=${current#[\'\"]}
  typed=${typed//\\/}
)bash";

}  // namespace

std::string manualPage(const CLI::App& program) {
  const std::string& name = program.get_name();
  std::string text = ".TH VEYLA 1 \"\" \"veyla " VEYLA_VERSION
                     "\" \"User Commands\"\n.nh\n.ad l\n.SH NAME\n" +
                     roff(name) +
                     " \\- measure heart rate and SpO2 from a camera's recordings of "
                     "a fingertip\n.SH SYNOPSIS\n";
  text += bold(name) + " " + italic("COMMAND") + " [" + italic("OPTION") + "]...\n";
  text += ".SH DESCRIPTION\n" + sentence(program.get_description()) +
          "\nIt is for sports users and not for medical use. Nothing leaves the machine.\n.PP\n"
          "What goes wrong is told in one line on standard error, with the file, the reason and "
          "the way out.\n.SH OPTIONS\n";
  for (const CLI::Option* option : optionsOf(program)) {
    text += tagged(optionTag(*option), sentence(option->get_description()));
  }
  text += ".SH COMMANDS\n";
  for (const CLI::App* command : commandsOf(program)) {
    text += commandSections(name + " " + command->get_name(), *command);
  }
  return text + section("EXIT STATUS", exitStatuses()) + section("FILES", files) +
         section("ENVIRONMENT", environment) + section("EXAMPLES", examples);
}

std::string bashCompletion(const CLI::App& program) {
  Branches branches;
  branches.add(program.get_name(), program);
  return completionHead + std::string("  for ((i = 1; i < COMP_CWORD; i++)); do\n") +
         "    word=${COMP_WORDS[i]}\n"
         "    if [[ $word == = ]]; then continue; fi\n"
         "    case \"$path $word\" in\n" +
         branches.commands + branches.valued +
         "      *' -'*) ;;\n"
         "      *) positional=$((positional + 1)) ;;\n"
         "    esac\n"
         "  done\n"
         "  # The option whose value is typed; --option=value comes as three words.\n"
         "  before=${COMP_WORDS[COMP_CWORD - 1]}\n"
         "  if [[ $current == = ]]; then typed=; "
         "elif [[ $before == = ]]; then before=${COMP_WORDS[COMP_CWORD - 2]}; fi\n"
         "  case \"$path $before\" in\n" +
         branches.values +
         "  esac\n"
         "  if [[ $current == -* ]]; then\n"
         "    case $path in\n" +
         branches.options +
         "    esac\n"
         "    return\n"
         "  fi\n"
         "  case \"$path $positional\" in\n" +
         branches.positionals +
         "  esac\n"
         "}\n\n"
         "complete -F _veyla veyla\n";
}

ExitStatus describe(const CLI::App& program, const std::string& form) {
  return exitStatusOf([&] {
    if (form == "man") {
      printOut(manualPage(program));
    } else if (form == "bash") {
      printOut(bashCompletion(program));
    } else if (form == "markdown") {
      printOut(optionTables(program));
    } else {
      throw UsageError("--describe: \"" + form + "\" is none of man, bash, markdown");
    }
    return ExitStatus::done;
  });
}

}  // namespace veyla
