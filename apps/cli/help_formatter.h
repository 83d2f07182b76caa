#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace veyla {

/// What `--help` prints, in lines of the terminal's width, or of 80 columns where there is none.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_description(const CLI::App* command) const override;
  std::string make_usage(const CLI::App* command, std::string name) const override;
  std::string make_subcommand(const CLI::App* command) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;
};

}  // namespace veyla
