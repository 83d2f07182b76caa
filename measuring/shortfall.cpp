#include "measuring/shortfall.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "platform/format.h"

namespace veyla {

namespace {

using States = std::initializer_list<FingerState>;

Shortfall ofTheFinger(const FingerFault& fault) {
  std::string text = fault.what + ": " + fault.advice + ".";
  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  return {Shortfall::Cause::finger, fault.state, text};
}

/// Whether for more than this part of the time the finger was in one of these states.
bool wasMostly(States states, double part, const MeasurementEvidence& evidence) {
  double seconds = 0;
  for (const FingerState state : states) seconds += secondsIn(evidence.finger, state);
  return seconds > part * evidence.seconds;
}

}  // namespace

double secondsIn(std::span<const FingerSpan> spans, FingerState state) {
  double seconds = 0;
  for (const FingerSpan& span : spans) {
    if (span.state == state) seconds += span.to - span.from;
  }
  return seconds;
}

std::string whenSeen(std::span<const FingerSpan> spans, States states) {
  using enum FingerState;
  // Shorter ones explain nothing; what is nearer to each other than this is one. A pulse comes back
  // to sight some seconds after it is there again.
  constexpr double shortest = 1;
  const bool isOfPulse = std::find(states.begin(), states.end(), weak) != states.end();
  const double nearest = isOfPulse ? 4 : 1;
  std::vector<FingerSpan> stretches;
  for (const FingerSpan& span : spans) {
    if (std::find(states.begin(), states.end(), span.state) == states.end()) continue;
    if (!stretches.empty() && span.from - stretches.back().to < nearest) {
      stretches.back().to = span.to;
    } else {
      stretches.push_back(span);
    }
  }
  std::erase_if(stretches, [&](const FingerSpan& each) { return each.to - each.from < shortest; });
  constexpr std::size_t mostTold = 3;
  std::string text;
  for (std::size_t i = 0; i < std::min(stretches.size(), mostTold); ++i) {
    text += formatText("%s from %li to %li s", i == 0 ? "" : ",", std::lround(stretches[i].from),
                       std::lround(stretches[i].to));
  }
  if (stretches.size() > mostTold) {
    const std::size_t more = stretches.size() - mostTold;
    text += formatText(" and %zu time%s more", more, more == 1 ? "" : "s");
  }
  return text;
}

std::optional<FingerFault> fingerFaultIn(std::span<const FingerSpan> spans, bool isBlack) {
  using enum FingerState;
  const double movingSeconds = secondsIn(spans, moving);
  const double weakSeconds = secondsIn(spans, weak);
  std::optional<FingerFault> fault;
  double longest = 0;
  const auto consider = [&](States states, double seconds, FingerState state, const char* what,
                            const char* advice) {
    const std::string when = whenSeen(spans, states);
    if (when.empty() || seconds <= longest) return;
    longest = seconds;
    fault = {state, what + when, advice};
  };
  consider({noFinger}, secondsIn(spans, noFinger), noFinger, "no finger",
           isBlack ? "the picture is black" : "cover lens and light");
  consider({tooBright}, secondsIn(spans, tooBright), tooBright, "too bright", "press more lightly");
  // Movement hides the pulse for a while after it, too: one stretch tells of both.
  if (movingSeconds >= weakSeconds) {
    consider({moving, weak}, movingSeconds + weakSeconds, moving, "the pulse was unclear",
             "hold still");
  } else {
    consider({moving, weak}, movingSeconds + weakSeconds, weak, "the pulse was unclear",
             movingSeconds > 0 ? "hold still and press more lightly" : "press more lightly");
  }
  return fault;
}

std::optional<Shortfall> shortfallOf(const MeasurementEvidence& evidence) {
  if (evidence.hasHeartrate && evidence.hasSpo2) return std::nullopt;
  const auto fault = fingerFaultIn(evidence.finger, evidence.isBlack);
  using enum FingerState;
  if (fault && wasMostly({noFinger, tooBright}, 0.5, evidence)) return ofTheFinger(*fault);

  const EstimateCounts& heartrate = evidence.heartrate;
  if (!evidence.hasHeartrate && heartrate.rejected + heartrate.none > heartrate.accepted) {
    if (fault) return ofTheFinger(*fault);
    return Shortfall{Shortfall::Cause::pulse, std::nullopt,
                     formatText("The pulse was unclear in %i of %i heart-rate estimates: hold "
                                "still, press lightly, warm the finger.",
                                heartrate.rejected + heartrate.none,
                                heartrate.accepted + heartrate.rejected + heartrate.none)};
  }
  const EstimateCounts& spo2 = evidence.spo2;
  if (!evidence.hasSpo2 && spo2.none + spo2.low > spo2.accepted) {
    // The camera is to blame only for colours of a finger that lay well.
    const bool layBadly = wasMostly({noFinger, tooBright, moving, weak}, 0.33, evidence);
    if (fault && layBadly) return ofTheFinger(*fault);
    return Shortfall{Shortfall::Cause::oxygen, std::nullopt,
                     formatText("No oxygen value: this camera's colours give %s of 93 %% or more.",
                                spo2.accepted > 0 ? "hardly any" : "none")};
  }
  return fault && evidence.isDoubted ? std::optional(ofTheFinger(*fault)) : std::nullopt;
}

}  // namespace veyla
