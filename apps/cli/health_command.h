#pragma once

#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

struct HealthOptions {
  /// Folder of the health records; empty for the user's own.
  std::string dataFolder;
  /// A file, or "-" for standard output.
  std::string output;
  /// "heartrate" or "spo2".
  std::string type;
};

/// Tells what may be kept.
ExitStatus runHealthStatus(const HealthOptions& options);
/// Writes all records, one FHIR R4 Observation a line. A line that is no record is left out, told
/// and shows in the status, 3.
ExitStatus runHealthExport(const HealthOptions& options);
ExitStatus runHealthAllow(const HealthOptions& options, bool allowed);

}  // namespace veyla
