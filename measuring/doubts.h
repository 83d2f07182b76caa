#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "analysis/finger_coach.h"

namespace veyla {

/// Why a final value may not be relied on.
enum class Doubt {
  /// For a good part of the time there was no finger before the camera.
  noFinger,
  /// The colours do not repeat themselves at the rate found; of a saturation, no pulse was seen in
  /// most of what stands behind it.
  unclearPulse,
  /// A pulse of half or of twice the rate explains them as well.
  halfRate,
  doubleRate,
  /// Of a saturation: next to no pulse in the blue behind it, or none in the red.
  noBlue,
  noRedPulse,
};

/// "noFinger" and so on, as reports name it.
std::string_view nameOf(Doubt doubt);

/// What it means for the user and what to do: "Unsure: …".
std::string_view textOf(Doubt doubt);

/// What a final heart rate is worth.
struct HeartrateJudgement {
  /// How clearly the colours repeat themselves at the rate, 0 to 1.
  double clarity = 0;
  /// The weightiest first; empty for a value to be relied on.
  std::vector<Doubt> doubts;
};

/// Judges a final heart rate by means that its estimates did not use: whether all frames measured,
/// in red or in green, repeat themselves at its period, and what the coach saw. The coach has
/// looked at the same frames. Those before a finger first came count for nothing, where enough
/// come after it.
HeartrateJudgement judgeHeartrate(double heartrate, std::span<const float> red,
                                  std::span<const float> green, const FingerCoach& coach);

/// What the estimates behind a saturation stood on, counted as they are accepted.
struct Spo2Evidence {
  std::size_t estimates = 0;
  std::size_t withoutBlue = 0;
  std::size_t withoutRedPulse = 0;
  /// Formed while the coach saw no finger.
  std::size_t withoutFinger = 0;
  /// Formed while it saw a finger that moved or showed no pulse, or could not tell yet.
  std::size_t withoutPulse = 0;
};

/// The doubts about a final saturation, the weightiest first.
std::vector<Doubt> judgeSpo2(const Spo2Evidence& evidence);

}  // namespace veyla
