#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/cli/exit_status.h"
#include "apps/cli/measurement_run.h"
#include "apps/cli/screen_pictures.h"

namespace veyla {

struct MeasureOptions {
  MeasurementRequest request;
  /// Videos, colour series and folders of these; none for the built-in synthetic fingertip.
  std::vector<std::string> inputs;
  /// Folder of the three settings resources; empty for the built-in ones.
  std::string settingsFolder;
  /// Folder of the history and the health records; empty for the user's own.
  std::string dataFolder;
  bool save = true;
  /// Whether that was asked for: of more than one measurement nothing is kept unasked.
  bool asksToSave = false;
  /// Seconds from one START to the next over a whole recording; nothing for one measurement of it.
  std::optional<double> every;
  /// Of these measurements the one to go by alone.
  bool best = false;
  /// How many of several recordings are measured at once; 0 for one per processor.
  int jobs = 0;
  bool json = false;
  /// Files; empty for none.
  std::string csvFile;
  std::string traceFile;
  std::string logFile;
  PictureOptions pictures;
  bool realtime = false;
};

/// `veyla measure`: one measurement from START to the saved result, or many (`measureMany`).
ExitStatus runMeasure(const MeasureOptions& options);

}  // namespace veyla
