#pragma once

#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

/// `veyla chart`: the daily means of the history, as the charts screen shows them.
struct ChartOptions {
  /// "week", "month", "3months" or "all".
  std::string period = "week";
  /// A label's name in any case; empty, or "none", for all entries.
  std::string label;
  /// A picture by its ending, .png or .svg; empty to draw in the terminal.
  std::string output;
  /// Folder of the history; empty for the user's own.
  std::string dataFolder;
};

ExitStatus runChart(const ChartOptions& options);

}  // namespace veyla
