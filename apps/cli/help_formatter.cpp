#include "apps/cli/help_formatter.h"

#include <unistd.h>

#include <utility>

#include "apps/cli/described.h"
#include "apps/cli/terminal.h"
#include "platform/linux/text_columns.h"

namespace veyla {

namespace {

std::string inLines(const std::string& text, std::size_t indent) {
  return brokenAt(terminalBehind(STDOUT_FILENO).columns, text, indent) + "\n";
}

/// A name and what it means: beside each other where there is room for both.
std::string entry(const std::string& name, const std::string& meaning) {
  constexpr std::size_t besides = 26;
  constexpr std::size_t below = 6;
  constexpr std::size_t leastColumns = 60;
  const bool isNarrow = terminalBehind(STDOUT_FILENO).columns < leastColumns;
  std::string text = "  " + name;
  if (isNarrow || columnsOf(text) + 2 > besides) {
    const std::size_t indent = isNarrow ? below : besides;
    return inLines(text, below) + inLines(std::string(indent, ' ') + meaning, indent);
  }
  text.resize(text.size() + besides - columnsOf(text), ' ');
  return inLines(text + meaning, besides);
}

/// What the option cannot stand beside.
std::string exclusionsOf(const CLI::Option& option) {
  std::string text;
  for (const CLI::Option* other : option.get_excludes()) {
    text += (text.empty() ? "; not with " : ", ") + other->get_name();
  }
  return text;
}

}  // namespace

std::string HelpFormatter::make_description(const CLI::App* command) const {
  return inLines(asSentence(command->get_description()), 0);
}

std::string HelpFormatter::make_usage(const CLI::App* command, std::string name) const {
  constexpr std::size_t hanging = 4;
  return inLines("Usage: " + usageOf(name, *command), hanging);
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
  return entry(command->get_name(), command->get_description());
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
  std::string name =
      isPositional ? option->get_name(true) : CLI::detail::join(namesOf(*option), ", ");
  const std::string& values = option->get_type_name();
  if (!values.empty() && takesValue(*option)) name += (isPositional ? ": " : " ") + values;
  return entry(name, option->get_description() + exclusionsOf(*option));
}

}  // namespace veyla
