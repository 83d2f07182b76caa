#pragma once

#include <optional>
#include <string>

#include "apps/cli/exit_status.h"
#include "apps/cli/measurement_run.h"
#include "apps/cli/screen_pictures.h"

namespace veyla {

struct MeasureOptions {
  MeasurementRequest request;
  /// A video or a colour series; empty for the built-in synthetic fingertip.
  std::string input;
  /// Folder of the three settings resources; empty for the built-in ones.
  std::string settingsFolder;
  /// Folder of the history and the health records; empty for the user's own.
  std::string dataFolder;
  bool save = true;
  bool json = false;
  /// Files; empty for none.
  std::string traceFile;
  std::string logFile;
  PictureOptions pictures;
  bool realtime = false;
};

/// `veyla measure`: one measurement from START to the saved result.
ExitStatus runMeasure(const MeasureOptions& options);

}  // namespace veyla
