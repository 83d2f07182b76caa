#pragma once

#include <string>

#include "apps/cli/exit_status.h"
#include "apps/cli/measurement_run.h"

namespace veyla {

/// `veyla series`: a recording's frames as a colour series.
struct SeriesOptions {
  /// A video or a colour series.
  std::string input;
  /// A file to write when all of the recording is read; "-" is standard output.
  std::string output = "-";
  /// Hardware model whose way of averaging frames is taken.
  std::string device = defaultDevice;
  /// The folder of the settings that list the averaged cells; empty for the built-in ones.
  std::string settingsFolder;
};

/// Writes `time,R,G,B,hr` for every frame at the recording's own rate: milliseconds since the first
/// frame, to the microsecond, and the averages of the cells (of the whole frame on
/// a device that takes it), each as its shortest exact decimal.
/// Remarks and errors go to standard error. Returns the exit status: 0 done, 2 wrong options,
/// 3 the input cannot be read, 4 the output cannot be written.
ExitStatus runSeries(const SeriesOptions& options);

}  // namespace veyla
