#include "apps/cli/report.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "apps/cli/complain.h"
#include "apps/cli/csv_field.h"
#include "apps/cli/json_number.h"
#include "apps/cli/recording_time.h"
#include "measuring/measurement.h"
#include "platform/format.h"
#include "platform/linux/text_columns.h"

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

/// Of both values, each reason once.
std::vector<std::string> doubtsOf(const MeasurementReport& report) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<Doubt>& doubts) {
    for (const Doubt doubt : doubts) {
      const std::string name(nameOf(doubt));
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
  };
  if (report.heartrateJudgement) add(report.heartrateJudgement->doubts);
  if (report.spo2Doubts) add(*report.spo2Doubts);
  return names;
}

/// Seconds in each state.
Json fingerOf(const MeasurementReport& report) {
  Json seconds = Json::object();
  for (const FingerState state : {FingerState::noFinger, FingerState::tooBright,
                                  FingerState::moving, FingerState::weak, FingerState::good}) {
    seconds[std::string(nameOf(state))] = std::round(secondsIn(report.finger, state) * 10) / 10;
  }
  return seconds;
}

std::string valueLine(const char* caption, std::optional<float> value, const char* unit) {
  if (!value) return formatText("%-12s --\n", caption);
  return formatText("%-12s %.0f %s\n", caption, static_cast<double>(*value), unit);
}

/// Empty where nothing is known; with what this program offers to do about it.
std::string shortfallLine(const MeasurementReport& report, const MeasurementRequest& request) {
  if (!report.shortfall) return {};
  const bool isDoubted = report.heartrateJudgement && !report.heartrateJudgement->doubts.empty();
  const bool measuresWithout =
      report.shortfall->cause == Shortfall::Cause::oxygen && request.heartrate && !isDoubted;
  return report.shortfall->text +
         (measuresWithout ? " --only heartrate measures without it.\n" : "\n");
}

/// What was seen of the finger up to a moment.
std::vector<FingerSpan> until(double second, std::vector<FingerSpan> finger) {
  std::erase_if(finger, [&](const FingerSpan& span) { return span.from >= second; });
  if (!finger.empty()) finger.back().to = std::min(finger.back().to, second);
  return finger;
}

/// What speaks against a final value; empty for one to be relied on. `finger`: as it was seen until
/// the value became final.
std::string doubtLine(const char* caption, const std::vector<Doubt>& doubts,
                      const std::vector<FingerSpan>& finger) {
  if (doubts.empty()) return {};
  const auto reason = [&]() -> std::string {
    switch (doubts.front()) {
      case Doubt::noFinger:
        return "no finger" + whenSeen(finger, {FingerState::noFinger});
      case Doubt::halfRate:
        return "the pulse may be half as fast";
      case Doubt::doubleRate:
        return "the pulse may be twice as fast";
      case Doubt::noBlue:
        return "the camera saw next to no pulse in blue light, without which the value says "
               "nothing "
               "about the blood";
      case Doubt::noRedPulse:
        return "the red light shows no pulse";
      case Doubt::unclearPulse:
        break;
    }
    const auto fault = fingerFaultIn(finger, false);
    return fault ? fault->what : "the pulse was unclear";
  };
  return formatText("%-12s unsure: %s.\n", caption, reason().c_str());
}

/// The option that ended the measurement or kept the recording's first part from it, and what to
/// give instead; empty without one.
std::string shortenedBy(const MeasurementReport& report, const MeasurementRequest& request) {
  // Some frames before and after what was measured.
  constexpr double unusedSeconds = 0.3;
  // What does not suffice in so much time, more of it does not help.
  constexpr double enoughSeconds = 30;
  if (report.seconds > enoughSeconds) return {};
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
      return formatText("Ended after %.1f s by too many oxygen values below 93 %%.\n",
                        report.seconds) +
             shortfallLine(report, request);
    case Outcome::alert:
      return report.alertTitle + " " + report.alertSubtitle + "\n";
    case Outcome::endOfInput:
      break;
  }
  const std::string option = shortenedBy(report, request);
  if (report.seconds <= 0) {
    return formatText(
               "The recording ended before the measurement began: it needs %d seconds of "
               "countdown and then 10 to 20 seconds with a finger on the lens.\n",
               Measurement::countdownSeconds) +
           (option.empty() ? "" : option + "\n");
  }
  const std::string ended =
      formatText("The recording ended after %.1f s, before every value was final.", report.seconds);
  const std::string reasons = shortfallLine(report, request);
  if (reasons.empty() && option.empty()) return ended + " Record longer.\n";
  return ended + "\n" + (option.empty() ? "" : option + "\n") + reasons;
}

/// The same in a few words.
std::string reasonOf(const MeasurementReport& report, const MeasurementRequest& request) {
  if (report.outcome == Outcome::alert) return report.alertTitle + " " + report.alertSubtitle;
  std::string reason;
  const bool isLow = report.outcome == Outcome::lowSignal;
  for (std::string known :
       {isLow ? "" : shortenedBy(report, request), shortfallLine(report, request)}) {
    if (known.ends_with('\n')) known.pop_back();
    if (!known.empty()) reason += (reason.empty() ? "" : " ") + known;
  }
  if (!reason.empty()) return reason;
  if (isLow) {
    return formatText("Too many oxygen values below 93 %% in %.1f s.", report.seconds);
  }
  return (report.seconds > 0 ? formatText("The recording ended after %.1f s.", report.seconds)
                             : "The recording ended before the measurement began.") +
         " Record longer.";
}

}  // namespace

std::string reportAsJson(const MeasurementReport& report, const MeasuredPart& part) {
  Json object = Json::object();
  if (!part.input.empty()) object["input"] = part.input;
  if (part.start) object["start"] = jsonNumber(*part.start);
  object.update(Json{
      {"outcome", nameOf(report.outcome)},
      {"heartrate", numberOf(report.heartrate)},
      {"spo2", numberOf(report.spo2)},
      {"clarity", report.heartrateJudgement
                      ? jsonNumber(std::round(report.heartrateJudgement->clarity * 1000) / 1000)
                      : Json()},
      {"doubts", doubtsOf(report)},
      {"finger", fingerOf(report)},
      {"seconds", std::round(report.seconds * 1000) / 1000},
      {"frames", report.frames},
      {"framedrops", report.framedrops},
      {"estimates",
       {{"heartrate", countsOf(report.heartrateEstimates)},
        {"spo2", countsOf(report.spo2Estimates)}}},
      {"device", report.device}});
  return jsonText(object);
}

std::string reportAsRow(const MeasurementReport& report, const std::string& input, double start) {
  const auto field = [](const auto& value) {
    return value ? formatText(",%.7g", static_cast<double>(*value)) : std::string(",");
  };
  std::string doubts;
  for (const std::string& name : doubtsOf(report)) doubts += (doubts.empty() ? "" : " ") + name;
  return csvField(input) +
         formatText(",%.10g,%s,%.3f", start, nameOf(report.outcome), report.seconds) +
         field(report.heartrate) + field(report.spo2) +
         field(report.heartrateJudgement ? std::optional(report.heartrateJudgement->clarity)
                                         : std::nullopt) +
         "," + doubts + "\n";
}

std::string rowHeader() { return "input,start,outcome,seconds,heartrate,spo2,clarity,doubts\n"; }

std::string reportAsLine(const MeasurementReport& report, const MeasurementRequest& request,
                         const MeasuredPart& part, std::size_t columns) {
  const auto cell = [](std::optional<float> value, const char* unit) {
    return value ? formatText("%4.0f %s", static_cast<double>(*value), unit)
                 : std::string(4 - 2, ' ') + "--" + std::string(std::strlen(unit) + 1, ' ');
  };
  std::string line = printable(part.input);
  line.append(columns - std::min(columns, columnsOf(line)), ' ');
  // Up to an hour and a half in columns of its own.
  if (part.start)
    line += formatText("%sfrom %7s", columns > 0 ? "  " : "", timeOf(*part.start).c_str());
  line += cell(report.heartrate, "bpm") + cell(report.spo2, "%");
  if (report.outcome == Outcome::finished) line += formatText("  %5.1f s", report.seconds);
  const char* separator = "  unsure: ";
  for (const std::string& name : doubtsOf(report)) line += std::exchange(separator, ", ") + name;
  if (report.outcome != Outcome::finished) {
    const bool isLow = report.outcome == Outcome::lowSignal;
    line += (isLow ? "  low signal: " : "  unfinished: ") + reasonOf(report, request);
  }
  return line + "\n";
}

std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request) {
  std::string text;
  if (request.heartrate) text += valueLine("Heart rate", report.heartrate, "beats per minute");
  if (request.spo2) text += valueLine("SpO2", report.spo2, "%");
  const auto fingerUntil = [&](double secondsMeasured) {
    return until(request.start + Measurement::countdownSeconds + secondsMeasured, report.finger);
  };
  if (report.heartrateJudgement) {
    text += doubtLine("Heart rate", report.heartrateJudgement->doubts,
                      fingerUntil(report.heartrateSeconds));
  }
  if (report.spo2Doubts) {
    text += doubtLine("SpO2", *report.spo2Doubts, fingerUntil(report.spo2Seconds));
  }
  return text + explanation(report, request);
}

}  // namespace veyla
