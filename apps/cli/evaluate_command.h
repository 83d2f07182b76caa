#pragma once

#include <string>

#include "apps/cli/exit_status.h"
#include "apps/cli/measurement_run.h"

namespace veyla {

struct EvaluateOptions {
  /// Holds recordings with a `NAME.reference.csv` each.
  std::string folder;
  /// Seconds of recording per measurement, the countdown included, and from one start to the next.
  double window = 42;
  double every = 20;
  bool heartrate = true;
  bool spo2 = false;
  std::string device = defaultDevice;
  std::string settingsFolder;
  int jobs = 0;
  bool json = false;
};

/// `veyla evaluate`: measures windows of every recording of a folder and compares the results with
/// the references.
ExitStatus runEvaluate(const EvaluateOptions& options);

}  // namespace veyla
