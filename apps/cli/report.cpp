#include "apps/cli/report.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <initializer_list>
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

double secondsIn(const MeasurementReport& report, FingerState state) {
  double seconds = 0;
  for (const auto& span : report.finger) {
    if (span.state == state) seconds += span.to - span.from;
  }
  return seconds;
}

/// Of both values, each reason once.
Json doubtsOf(const MeasurementReport& report) {
  Json names = Json::array();
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
    seconds[std::string(nameOf(state))] = std::round(secondsIn(report, state) * 10) / 10;
  }
  return seconds;
}

std::string valueLine(const char* caption, std::optional<float> value, const char* unit) {
  if (!value) return formatText("%-12s --\n", caption);
  return formatText("%-12s %.0f %s\n", caption, static_cast<double>(*value), unit);
}

/// The stretches in which the finger was in one of these states, in words: "from 4 to 22 s".
std::string whenSeen(const MeasurementReport& report, std::initializer_list<FingerState> states) {
  // Shorter ones explain nothing; what is nearer to each other than this is one.
  constexpr double shortest = 1;
  constexpr double nearest = 4;
  struct Stretch {
    double from;
    double to;
  };
  std::vector<Stretch> stretches;
  for (const auto& span : report.finger) {
    if (std::find(states.begin(), states.end(), span.state) == states.end()) continue;
    if (!stretches.empty() && span.from - stretches.back().to < nearest) {
      stretches.back().to = span.to;
    } else {
      stretches.push_back({span.from, span.to});
    }
  }
  std::string text;
  for (const Stretch& stretch : stretches) {
    if (stretch.to - stretch.from < shortest) continue;
    text += formatText("%s from %.0f to %.0f s", text.empty() ? "" : ",", stretch.from, stretch.to);
  }
  return text;
}

/// Where the finger was not as it should be for the longest, and what follows from it; empty where
/// nothing can be said.
struct FingerFault {
  std::string what;
  std::string advice;
};

FingerFault fingerFault(const MeasurementReport& report) {
  using States = std::initializer_list<FingerState>;
  FingerFault fault;
  double longest = 0;
  const auto consider = [&](States states, const char* name, const char* advice) {
    double seconds = 0;
    for (const FingerState state : states) seconds += secondsIn(report, state);
    const std::string when = whenSeen(report, states);
    if (when.empty() || seconds <= longest) return;
    longest = seconds;
    fault = {name + when, advice};
  };
  consider({FingerState::noFinger}, "no finger", report.isBlack ? ": the picture is black" : "");
  consider({FingerState::tooBright}, "too bright", ": expose less or press more lightly");
  consider({FingerState::moving, FingerState::weak}, "the pulse was unclear", ": hold still");
  return fault;
}

/// Whether most of the time there was nothing that can be measured.
bool lackedFinger(const MeasurementReport& report) {
  const double seconds =
      secondsIn(report, FingerState::noFinger) + secondsIn(report, FingerState::tooBright);
  return seconds > 0.5 * report.seconds;
}

std::string sentence(const FingerFault& fault) {
  std::string text = fault.what + fault.advice;
  if (text.empty()) return text;
  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  return text + ".\n";
}

/// Why a value that was requested has not become final, and what to do about it; empty for one that
/// has, or for lack of time alone. What the finger kept from both values is all that is said:
/// nothing else helps before it.
std::string shortfall(const MeasurementReport& report, const MeasurementRequest& request) {
  const bool lacksHeartrate = request.heartrate && !report.heartrate;
  const bool lacksSpo2 = request.spo2 && !report.spo2;
  if (!lacksHeartrate && !lacksSpo2) return {};
  const FingerFault fault = fingerFault(report);
  const bool isDoubted = report.heartrateJudgement && !report.heartrateJudgement->doubts.empty();
  if (lackedFinger(report)) return sentence(fault);

  const EstimateCounts& heartrate = report.heartrateEstimates;
  if (lacksHeartrate && heartrate.rejected + heartrate.none > heartrate.accepted) {
    if (!fault.what.empty()) return sentence(fault);
    return formatText(
        "The pulse was unclear in %i of %i heart-rate estimates: hold still, press lightly, warm "
        "the finger.\n",
        heartrate.rejected + heartrate.none,
        heartrate.accepted + heartrate.rejected + heartrate.none);
  }
  const EstimateCounts& spo2 = report.spo2Estimates;
  if (lacksSpo2 && spo2.none + spo2.low > spo2.accepted) {
    return std::string("No oxygen value: this camera's colours give none of 93 % or more.") +
           (isDoubted || !request.heartrate ? "\n" : " --only heartrate measures without it.\n");
  }
  return isDoubted ? sentence(fault) : "";
}

/// What speaks against a final value; empty for one to be relied on.
std::string doubtLine(const char* caption, const std::vector<Doubt>& doubts,
                      const MeasurementReport& report) {
  if (doubts.empty()) return {};
  const auto reason = [&]() -> std::string {
    switch (doubts.front()) {
      case Doubt::noFinger:
        return "no finger" + whenSeen(report, {FingerState::noFinger});
      case Doubt::halfRate:
        return "the pulse may be half as fast";
      case Doubt::doubleRate:
        return "the pulse may be twice as fast";
      case Doubt::noBlue:
        return "the camera saw next to no blue light, without which the value says nothing about "
               "the blood";
      case Doubt::noRedPulse:
        return "the red light shows no pulse";
      case Doubt::unclearPulse:
        break;
    }
    const std::string fault = fingerFault(report).what;
    return fault.empty() ? "the pulse was unclear" : fault;
  };
  return formatText("%-12s unsure: %s.\n", caption, reason().c_str());
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
  // What does not suffice in so much time, more of it does not help.
  constexpr double enoughSeconds = 20;
  if (request.start <= 0 || report.seconds > enoughSeconds) return {};
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
             shortfall(report, request);
    case Outcome::alert:
      return report.alertTitle + " " + report.alertSubtitle + "\n";
    case Outcome::endOfInput:
      break;
  }
  const std::string option = shortenedBy(report, request);
  if (report.seconds <= 0) {
    return "The recording ended before the measurement began: it needs 2 seconds of countdown and "
           "then 10 to 20 seconds with a finger on the lens.\n" +
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
  const Json object{
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
      {"device", report.device}};
  return object.dump() + "\n";
}

std::string reportAsText(const MeasurementReport& report, const MeasurementRequest& request) {
  std::string text;
  if (request.heartrate) text += valueLine("Heart rate", report.heartrate, "beats per minute");
  if (request.spo2) text += valueLine("SpO2", report.spo2, "%");
  if (report.heartrateJudgement) {
    text += doubtLine("Heart rate", report.heartrateJudgement->doubts, report);
  }
  if (report.spo2Doubts) text += doubtLine("SpO2", *report.spo2Doubts, report);
  return text + explanation(report, request);
}

}  // namespace veyla
