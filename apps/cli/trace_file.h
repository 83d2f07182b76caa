#pragma once

#include <string>

#include "apps/cli/measurement_tally.h"

namespace veyla {

/// The column names of a trace and one estimate as a row of it, as CSV with a line end. Figures
/// that an estimate does not have are empty fields.
std::string traceHeader();
std::string traceRow(const MeasurementTally::Estimate& estimate);

}  // namespace veyla
