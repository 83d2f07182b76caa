#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "benchmarks/tuning/estimates.h"

namespace veyla::tuning {

/// The heart-rate settings that decide what becomes of the estimates.
struct Thresholds {
  int minimumBpm = 0;
  int validPercent = 0;
  int maxDistance = 0;

  bool operator==(const Thresholds&) const = default;
};

/// The bin of every estimate, or `rejected`.
inline constexpr std::int16_t rejected = -1;
std::vector<std::int16_t> judge(const Estimates& estimates, const Thresholds& thresholds);

/// How a measurement ended.
struct Finish {
  float heartrate = 0;
  /// Frames stored before and including the one that finished it.
  std::int32_t frames = 0;
};

/// What the measuring flow makes of judged estimates when START is tapped `startFrame` frames into
/// the recording, an estimate is made on every `skip`-th frame and frames end with number
/// `lastCounter` of the measurement: one finish for each of `needed`, which rises; nothing for
/// those that do not finish.
void replay(const Estimates& estimates, std::span<const std::int16_t> bins, std::int32_t startFrame,
            std::int32_t lastCounter, int skip, std::span<const int> needed,
            std::vector<std::optional<Finish>>& finishes);

}  // namespace veyla::tuning
