#pragma once

#include <cstdint>
#include <vector>

#include "acquisition/fft_value.h"

namespace veyla {

/// What one heart-rate estimate found.
struct HeartrateResult {
  /// Number of the strongest bin.
  std::int64_t index = 0;
  /// Beats per minute of that bin.
  float heartrate = 0;
  /// The smallest and the largest magnitude above the low cut-off.
  float min = 0;
  float max = 0;
  /// By how many per cent the strongest rival outside the top peak falls short of it; not-a-number
  /// for an empty spectrum.
  float diffPercent = 0;
  /// The bins from just above the cut-off to about 180 beats per minute above it.
  std::vector<FFTValue> values;
};

}  // namespace veyla
