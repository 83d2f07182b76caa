#pragma once

#include <string>

#include "apps/cli/measurement_run.h"

namespace veyla {

/// The report as one JSON object, with a line end.
std::string reportAsJson(const MeasurementReport& report);

/// The report as the final lines that a person reads.
std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request);

}  // namespace veyla
