#include "apps/cli/described.h"
#include "apps/cli/description.h"

namespace veyla {

namespace {

std::string code(const std::string& text) { return "`" + text + "`"; }

/// A cell of a table, where a bar would begin the next.
std::string cell(const std::string& text) {
  std::string escaped;
  for (const char c : text) escaped += c == '|' ? std::string("\\|") : std::string(1, c);
  return escaped;
}

std::string row(const std::string& name, const std::string& meaning) {
  return "| " + cell(name) + " | " + cell(meaning) + " |\n";
}

std::string heads(const std::string& name) { return row(name, "meaning") + "|---|---|\n"; }

std::string form(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : namesOf(option)) {
    names += (names.empty() ? "" : ", ") +
             code(takesValue(option) ? name + " " + option.get_type_name() : name);
  }
  return names;
}

std::string block(const std::string& name, const std::string& text) {
  return "<!-- " + name + " -->\n" + text + "<!-- end -->\n";
}

/// The table of a command, and those of the commands within it.
std::string commandTables(const std::string& name, const CLI::App& command) {
  std::string text = code(usageOf(name, command)) + "\n\n" + asSentence(command.get_description()) +
                     "\n\n" + heads("option");
  for (const CLI::Option* each : positionalsOf(command)) {
    const std::string& choices = each->get_type_name();
    text += row(code(each->get_name(true)) + (choices.empty() ? "" : ": " + code(choices)),
                each->get_description());
  }
  for (const CLI::Option* option : optionsOf(command)) {
    if (option->get_lnames() == std::vector<std::string>{"help"}) continue;
    text += row(form(*option), option->get_description());
  }
  text = block(name, text);
  for (const CLI::App* inner : commandsOf(command)) {
    text += commandTables(name + " " + inner->get_name(), *inner);
  }
  return text;
}

template <class Rows>
std::string table(const std::string& head, const Rows& rows) {
  std::string text = heads(head);
  for (const auto& [name, meaning] : rows) text += row(code(name), meaning);
  return text;
}

}  // namespace

std::string optionTables(const CLI::App& program) {
  std::string text;
  for (const CLI::App* command : commandsOf(program)) {
    text += commandTables(program.get_name() + " " + command->get_name(), *command);
  }
  return text + block("exit status", table("status", exitStatuses())) +
         block("environment", table("variable", environment));
}

}  // namespace veyla
