#pragma once

#include <cstddef>
#include <string>

#include "apps/cli/measurement_run.h"

namespace veyla {

/// The report as one JSON object, with a line end; begins with the `input` where there are several.
std::string reportAsJson(const MeasurementReport& report, const std::string& input = {});

/// The report as one line, with the name of the input in so many columns.
std::string reportAsLine(const MeasurementReport& report, const std::string& input,
                         std::size_t columns);

/// The report as the final lines that a person reads.
std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request);

}  // namespace veyla
