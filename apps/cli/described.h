#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "apps/cli/exit_status.h"

/// What every description of the program is made of.
namespace veyla {

/// The commands of `app`, in the order in which they were declared.
inline std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_name().empty(); });
}

inline bool isShown(const CLI::Option* option) { return !option->get_group().empty(); }

inline std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  return app.get_options(
      [](const CLI::Option* option) { return isShown(option) && !option->get_positional(); });
}

inline std::vector<const CLI::Option*> positionalsOf(const CLI::App& app) {
  return app.get_options(
      [](const CLI::Option* option) { return isShown(option) && option->get_positional(); });
}

inline bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

inline std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

/// What the command takes, in a line.
inline std::string usageOf(std::string name, const CLI::App& command) {
  if (!commandsOf(command).empty()) {
    name += command.get_require_subcommand_min() > 0 ? " COMMAND" : " [COMMAND]";
  }
  for (const CLI::Option* option : optionsOf(command)) {
    if (!option->get_required()) continue;
    name += " " + namesOf(*option).front() + " " + option->get_type_name();
  }
  for (const CLI::Option* each : positionalsOf(command)) {
    const std::string form =
        each->get_name(true) + (each->get_items_expected_max() > 1 ? "..." : "");
    name += " " + (each->get_required() ? form : "[" + form + "]");
  }
  return name + " [OPTION]...";
}

inline constexpr std::array<std::pair<const char*, const char*>, 6> environment{
    {{"XDG_DATA_HOME", "the data folder is its folder veyla, where it is set"},
     {"TZ", "the time zone of dates"},
     {"LC_ALL, LC_TIME, LANG", "the locale of dates, the first that is set"},
     {"EMAIL", "the sender of drafts of mails"},
     {"COLUMNS", "at most so many columns of a terminal are used, and so many of a pipe"},
     {"NO_COLOR", "no colours, where it is set"}}};

inline std::vector<std::pair<std::string, const char*>> exitStatuses() {
  std::vector<std::pair<std::string, const char*>> rows;
  rows.reserve(exitStatusMeanings.size());
  for (const auto& [status, meaning] : exitStatusMeanings) {
    rows.emplace_back(std::to_string(static_cast<int>(status)), meaning);
  }
  rows.emplace_back("128+N", "signal N stopped it: 130 for Ctrl-C; no file is half written");
  return rows;
}

/// A description as a sentence: with a capital, and a full stop.
inline std::string asSentence(std::string text) {
  if (!text.empty() && text.back() != '.') text += '.';
  if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
    text.front() = static_cast<char>(text.front() - 'a' + 'A');
  }
  return text;
}

}  // namespace veyla
