#include "measuring/shortfall.h"

#include <algorithm>
#include <cctype>

#include "platform/format.h"

namespace veyla {

namespace {

using States = std::initializer_list<FingerState>;

Shortfall ofTheFinger(const FingerFault& fault) {
  std::string text = fault.what + ": " + fault.advice + ".";
  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  return {Shortfall::Cause::finger, fault.state, text};
}

/// Whether most of the time there was nothing that can be measured.
bool lackedFinger(const MeasurementEvidence& evidence) {
  const double seconds = secondsIn(evidence.finger, FingerState::noFinger) +
                         secondsIn(evidence.finger, FingerState::tooBright);
  return seconds > 0.5 * evidence.seconds;
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
  // Shorter ones explain nothing; what is nearer to each other than this is one.
  constexpr double shortest = 1;
  constexpr double nearest = 4;
  std::vector<FingerSpan> stretches;
  for (const FingerSpan& span : spans) {
    if (std::find(states.begin(), states.end(), span.state) == states.end()) continue;
    if (!stretches.empty() && span.from - stretches.back().to < nearest) {
      stretches.back().to = span.to;
    } else {
      stretches.push_back(span);
    }
  }
  std::string text;
  for (const FingerSpan& stretch : stretches) {
    if (stretch.to - stretch.from < shortest) continue;
    text += formatText("%s from %.0f to %.0f s", text.empty() ? "" : ",", stretch.from, stretch.to);
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
  consider({tooBright}, secondsIn(spans, tooBright), tooBright, "too bright",
           "expose less or press more lightly");
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
  if (fault && lackedFinger(evidence)) return ofTheFinger(*fault);

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
    return Shortfall{Shortfall::Cause::oxygen, std::nullopt,
                     "No oxygen value: this camera's colours give none of 93 % or more."};
  }
  return fault && evidence.isDoubted ? std::optional(ofTheFinger(*fault)) : std::nullopt;
}

}  // namespace veyla
