#include "apps/cli/report.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "platform/format.h"

namespace veyla {

namespace {

using Json = nlohmann::ordered_json;

/// Single-precision values as the shortest decimals that name them.
Json numberOf(std::optional<float> value) {
  if (!value || !std::isfinite(*value)) return nullptr;
  return std::stod(formatText("%.7g", static_cast<double>(*value)));
}

Json countsOf(const EstimateCounts& counts) {
  return {{"accepted", counts.accepted},
          {"rejected", counts.rejected},
          {"low", counts.low},
          {"none", counts.none}};
}

std::string valueLine(const char* caption, std::optional<float> value, const char* unit) {
  if (!value) return formatText("%-12s --\n", caption);
  return formatText("%-12s %.0f %s\n", caption, static_cast<double>(*value), unit);
}

/// Why there is no value for the missing ones, and what to do about it.
std::string explanation(const MeasurementReport& report) {
  switch (report.outcome) {
    case Outcome::finished:
      return formatText("Finished after %.1f s of the recording.\n", report.seconds);
    case Outcome::lowSignal:
    case Outcome::alert:
      return report.alertTitle + " " + report.alertSubtitle + "\n";
    case Outcome::endOfInput:
      break;
  }
  if (report.seconds <= 0) {
    return "The recording ended before the measurement began: it needs 2 seconds of countdown and "
           "then 10 to 20 seconds with a finger on the lens.\n";
  }
  return formatText(
      "The recording ended after %.1f s, before every value was final. Record longer, "
      "or hold the finger steadier.\n",
      report.seconds);
}

}  // namespace

std::string reportAsJson(const MeasurementReport& report) {
  const Json object{{"outcome", nameOf(report.outcome)},
                    {"heartrate", numberOf(report.heartrate)},
                    {"spo2", numberOf(report.spo2)},
                    {"seconds", std::round(report.seconds * 1000) / 1000},
                    {"frames", report.frames},
                    {"framedrops", report.framedrops},
                    {"estimates",
                     {{"heartrate", countsOf(report.heartrateEstimates)},
                      {"spo2", countsOf(report.spo2Estimates)}}},
                    {"device", report.device}};
  return object.dump() + "\n";
}

std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request) {
  std::string text;
  if (request.heartrate) text += valueLine("Heart rate", report.heartrate, "beats per minute");
  if (request.spo2) text += valueLine("SpO2", report.spo2, "%");
  return text + explanation(report);
}

}  // namespace veyla
