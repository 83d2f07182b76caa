#include "apps/cli/report.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "apps/cli/json_number.h"
#include "measuring/measurement.h"
#include "platform/format.h"

namespace veyla {

namespace {

using Json = nlohmann::ordered_json;

Json numberOf(std::optional<float> value) {
  return value ? jsonNumber(static_cast<double>(*value)) : Json();
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

/// Why a value that was requested has not become final, and what to do about it; empty for one that
/// has, or for lack of time alone.
std::string shortfall(const MeasurementReport& report, const MeasurementRequest& request) {
  std::string text;
  const EstimateCounts& heartrate = report.heartrateEstimates;
  if (request.heartrate && !report.heartrate && heartrate.rejected > heartrate.accepted) {
    text += formatText(
        "The pulse was unclear in %i of %i heart-rate estimates: hold the finger "
        "stiller, press less, warm it.\n",
        heartrate.rejected + heartrate.none,
        heartrate.accepted + heartrate.rejected + heartrate.none);
  }
  const EstimateCounts& spo2 = report.spo2Estimates;
  const int withoutValue = spo2.none + spo2.low;
  if (request.spo2 && !report.spo2 && withoutValue > spo2.accepted) {
    text += formatText(
        "This camera's colours gave no oxygen saturation of 93 %% or more in %i of %i estimates; "
        "--only heartrate measures without it.\n",
        withoutValue, spo2.accepted + withoutValue);
  }
  return text;
}

/// The option that ended the measurement or kept the recording's first part from it, and what to
/// give instead; empty without one.
std::string shortenedBy(const MeasurementReport& report, const MeasurementRequest& request) {
  // Some frames before and after what was measured.
  constexpr double unusedSeconds = 0.3;
  const double used = Measurement::countdownSeconds + report.seconds + unusedSeconds;
  if (request.duration && *request.duration <= used) {
    return formatText("--duration %g ended it: 45 s are plenty.", *request.duration);
  }
  if (request.start <= 0) return {};
  return formatText("--start %g left no more of the recording: start earlier or record longer.",
                    request.start);
}

std::string explanation(const MeasurementReport& report, const MeasurementRequest& request) {
  switch (report.outcome) {
    case Outcome::finished:
      return formatText("Finished after %.1f s of the recording.\n", report.seconds);
    case Outcome::lowSignal:
      return report.alertTitle + " " + report.alertSubtitle + "\n" + shortfall(report, request);
    case Outcome::alert:
      return report.alertTitle + " " + report.alertSubtitle + "\n";
    case Outcome::endOfInput:
      break;
  }
  const std::string option = shortenedBy(report, request);
  if (report.seconds <= 0) {
    return "The recording ended before the measurement began: it needs 2 seconds of countdown and "
           "then 15 to 20 seconds with a finger on the lens.\n" +
           (option.empty() ? "" : option + "\n");
  }
  const std::string ended =
      formatText("The recording ended after %.1f s, before every value was final.", report.seconds);
  const std::string reasons = shortfall(report, request);
  if (reasons.empty() && option.empty()) return ended + " Record longer.\n";
  return ended + "\n" + (option.empty() ? "" : option + "\n") + reasons;
}

}  // namespace

std::string reportAsJson(const MeasurementReport& report) {
  const Json object{{"outcome", nameOf(report.outcome)},
                    {"heartrate", numberOf(report.heartrate)},
                    {"spo2", numberOf(report.spo2)},
                    {"spo2LacksBlue", report.spo2LacksBlue},
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
  if (report.spo2LacksBlue) {
    text +=
        "The camera saw next to no blue light, without which the saturation says nothing about the "
        "blood. Do not rely on it.\n";
  }
  return text + explanation(report, request);
}

}  // namespace veyla
