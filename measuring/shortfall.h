#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/finger_coach.h"
#include "measuring/measurement_observer.h"

namespace veyla {

/// A stretch in which the finger was seen in one state, in seconds.
struct FingerSpan {
  FingerState state = FingerState::noFinger;
  double from = 0;
  double to = 0;
};

/// Seconds in this state, all together.
double secondsIn(std::span<const FingerSpan> spans, FingerState state);

/// The stretches in which it was in one of these states, in words: " from 4 to 22 s". Empty where
/// none lasted a second.
std::string whenSeen(std::span<const FingerSpan> spans, std::initializer_list<FingerState> states);

/// What was wrong with the finger, and when.
struct FingerFault {
  FingerState state = FingerState::noFinger;
  /// "the pulse was unclear from 4 to 22 s".
  std::string what;
  /// "hold still", or what else was seen of it.
  std::string advice;
};

/// Where the finger was not as it should be for the longest; nothing where it was so for less than
/// a second at a time. `isBlack`: nothing brighter than black was seen.
std::optional<FingerFault> fingerFaultIn(std::span<const FingerSpan> spans, bool isBlack);

/// What a measurement went by, and what of it became final.
struct MeasurementEvidence {
  std::vector<FingerSpan> finger{};
  bool isBlack = false;
  /// From the light's coming on.
  double seconds = 0;
  EstimateCounts heartrate{};
  EstimateCounts spo2{};
  bool hasHeartrate = false;
  bool hasSpo2 = false;
  /// Whether the final heart rate is doubted.
  bool isDoubted = false;
};

/// Why a value has not become final, and what to do about it.
struct Shortfall {
  enum class Cause { finger, pulse, oxygen };

  Cause cause = Cause::finger;
  /// What was wrong with the finger for the longest, where something was.
  std::optional<FingerState> state;
  /// One line, a sentence.
  std::string text;
};

/// Nothing for lack of time alone. What the finger kept from both values is all that is said:
/// nothing else helps before it.
std::optional<Shortfall> shortfallOf(const MeasurementEvidence& evidence);

}  // namespace veyla
