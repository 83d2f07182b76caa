#include "measuring/doubts.h"

#include <algorithm>

#include "analysis/pulse_clarity.h"

namespace veyla {

namespace {

/// Chosen on recorded fingers: it marks some 4 of 100 windows of them, and no generated pulse from
/// 45 beats per minute on, the least clear of which comes to 0.65; breath and noise come to less.
constexpr double leastClarity = 0.58;
/// A finger's beats differ by halves in no recording: half the period repeats a fifth of it at
/// most.
constexpr double mostAtDoubleRate = 0.6;
constexpr double leastAtHalfRate = 0.5;
/// Of the frames measured.
constexpr double mostWithoutFinger = 0.2;
/// Frames without a finger, a second's, that explain why a pulse is not clear.
constexpr std::size_t enoughToBlur = 15;
/// Of the estimates behind a saturation, which is the middle one of them.
constexpr double mostDoubtfulEstimates = 0.2;
/// The same of those without a pulse that shows: weak ones of real fingers come and go.
constexpr double mostWithoutPulse = 0.5;

bool isMore(std::size_t count, double share, std::size_t of) {
  return static_cast<double>(count) > share * static_cast<double>(of);
}

/// Frames from the finger's coming on that can show a rate by themselves: 8 s.
constexpr std::size_t fewestFromFinger = 120;

/// The frame at which a finger came that was not there from the beginning; 0 where too few follow.
std::size_t comingOfFinger(const FingerCoach& coach) {
  std::size_t coming = 0;
  for (const FingerCoach::Span& span : coach.spans()) {
    // It moves as it comes.
    const bool isComing =
        span.state == FingerState::noFinger || (coming > 0 && span.state == FingerState::moving);
    if (span.from != coming || !isComing) break;
    coming = span.to;
  }
  return coming + fewestFromFinger <= coach.frames() ? coming : 0;
}

std::size_t framesWithoutFinger(const FingerCoach& coach, std::size_t from) {
  std::size_t frames = 0;
  for (const FingerCoach::Span& span : coach.spans()) {
    if (span.from >= from && span.state == FingerState::noFinger) frames += span.to - span.from;
  }
  return frames;
}

}  // namespace

std::string_view nameOf(Doubt doubt) {
  switch (doubt) {
    case Doubt::noFinger:
      return "noFinger";
    case Doubt::unclearPulse:
      return "unclearPulse";
    case Doubt::halfRate:
      return "halfRate";
    case Doubt::doubleRate:
      return "doubleRate";
    case Doubt::noBlue:
      return "noBlue";
    case Doubt::noRedPulse:
      break;
  }
  return "noRedPulse";
}

std::string_view textOf(Doubt doubt) {
  switch (doubt) {
    case Doubt::noFinger:
      return "Unsure: no finger was seen for part of the time. Cover lens and light and measure "
             "again.";
    case Doubt::unclearPulse:
      return "Unsure: the pulse was unclear. Hold still, press lightly and measure again.";
    case Doubt::halfRate:
      return "Unsure: the pulse may be half as fast. Count it at the wrist for 15 seconds.";
    case Doubt::doubleRate:
      return "Unsure: the pulse may be twice as fast. Count it at the wrist for 15 seconds.";
    case Doubt::noBlue:
      return "Unsure: this camera sees next to no pulse in blue light, without which the oxygen "
             "value says nothing about the blood.";
    case Doubt::noRedPulse:
      break;
  }
  return "Unsure: the red light shows no pulse. Press more lightly and measure again.";
}

HeartrateJudgement judgeHeartrate(double heartrate, std::span<const float> red,
                                  std::span<const float> green, const FingerCoach& coach) {
  const std::size_t from = comingOfFinger(coach);
  const auto seen = [&](std::span<const float> channel) {
    return channel.subspan(std::min(from, channel.size()));
  };
  const Periodicity inRed = periodicityAt(seen(red), heartrate);
  const Periodicity inGreen = periodicityAt(seen(green), heartrate);
  // Cameras differ in where the pulse shows; the clearer channel speaks.
  const Periodicity& pulse = inRed.own >= inGreen.own ? inRed : inGreen;

  HeartrateJudgement judgement;
  judgement.clarity = std::clamp(pulse.own, 0.0, 1.0);
  const bool isUnclear = pulse.own < leastClarity;
  const std::size_t absent = framesWithoutFinger(coach, from);
  if (isMore(absent, mostWithoutFinger, coach.frames() - from) ||
      (isUnclear && absent >= enoughToBlur)) {
    judgement.doubts.push_back(Doubt::noFinger);
  }
  if (isUnclear) {
    const double atHalfRate = std::max(inRed.halfRate, inGreen.halfRate);
    judgement.doubts.push_back(atHalfRate > leastAtHalfRate ? Doubt::halfRate
                                                            : Doubt::unclearPulse);
  } else if (pulse.doubleRate > mostAtDoubleRate * pulse.own) {
    judgement.doubts.push_back(Doubt::doubleRate);
  }
  return judgement;
}

std::vector<Doubt> judgeSpo2(const Spo2Evidence& evidence) {
  std::vector<Doubt> doubts;
  const auto add = [&](std::size_t count, Doubt doubt) {
    if (isMore(count, mostDoubtfulEstimates, evidence.estimates)) doubts.push_back(doubt);
  };
  add(evidence.withoutFinger, Doubt::noFinger);
  add(evidence.withoutBlue, Doubt::noBlue);
  add(evidence.withoutRedPulse, Doubt::noRedPulse);
  if (isMore(evidence.withoutPulse, mostWithoutPulse, evidence.estimates)) {
    doubts.push_back(Doubt::unclearPulse);
  }
  return doubts;
}

}  // namespace veyla
