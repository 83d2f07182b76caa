#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/recording_source.h"

namespace veyla::tuning {

/// One heart-rate estimate before any threshold has judged it: its strongest bins.
struct Estimate {
  struct Bin {
    float strength = 0;
    std::int32_t index = 0;
  };
  /// More than any walk past rivals has needed, and room for the bins below a higher
  /// "minimumBpm".
  static constexpr std::size_t binCount = 32;

  /// Strongest first.
  std::array<Bin, binCount> bins;
};

/// The estimates of a whole recording, one for every frame once there are enough of them.
struct Estimates {
  /// The value of the frame counter at the first estimate.
  std::int32_t firstCounter = 0;
  std::vector<Estimate> perFrame;
};

/// "minimumBpm" while estimates are gathered; higher ones can be told from them.
inline constexpr int lowestMinimumBpm = 40;

/// Plays `source` through the measuring flow with an estimate at every frame from `rawDataSize`
/// frames each, for at most `seconds`.
Estimates gatherEstimates(std::unique_ptr<RecordingSource> source, int rawDataSize, double seconds);

}  // namespace veyla::tuning
