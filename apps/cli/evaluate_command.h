#pragma once

#include <string>

#include "apps/cli/evaluation.h"
#include "apps/cli/exit_status.h"

namespace veyla {

struct EvaluateOptions {
  EvaluationRequest request;
  std::string settingsFolder;
  bool json = false;
  /// A row per window is written there; empty for none.
  std::string windowsFile;
  /// Two pictures are drawn there; empty for none.
  std::string plotsFolder;
};

/// `veyla evaluate`: measures windows of every recording of a folder and compares the results with
/// the references.
ExitStatus runEvaluate(const EvaluateOptions& options);

}  // namespace veyla
