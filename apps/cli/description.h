#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

/// The manual page of the program, made of its own commands and options, in the form of man(7).
std::string manualPage(const CLI::App& program);

/// A script by which bash completes the program's commands, options and values: one of the texts
/// that the name of an option's value joins with "|", or a file or folder where it says so.
std::string bashCompletion(const CLI::App& program);

/// Tables of the commands' options, the exit statuses and the environment in Markdown, each between
/// a comment with its name and "<!-- end -->": as they stand in docs/commands.md.
std::string optionTables(const CLI::App& program);

/// Prints the one that `form` names, "man", "bash" or "markdown".
ExitStatus describe(const CLI::App& program, const std::string& form);

}  // namespace veyla
