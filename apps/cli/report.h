#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "apps/cli/measurement_run.h"

namespace veyla {

/// Which of several measurements a report is of.
struct MeasuredPart {
  /// The recording's name; empty where there is one alone.
  std::string input;
  /// Seconds into it at which START was tapped; nothing where each recording is measured once.
  std::optional<double> start;
};

/// The report as one JSON object, with a line end; begins with its part.
std::string reportAsJson(const MeasurementReport& report, const MeasuredPart& part = {});

/// The report as one line, with the name of the input in so many columns.
std::string reportAsLine(const MeasurementReport& report, const MeasurementRequest& request,
                         const MeasuredPart& part, std::size_t columns);

/// The report as a row of CSV, and the names of its columns. Fields are empty where nothing is
/// known; doubts stand between blanks.
std::string reportAsRow(const MeasurementReport& report, const std::string& input, double start);
std::string rowHeader();

/// The report as the final lines that a person reads.
std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request);

}  // namespace veyla
