#pragma once

#include <span>

namespace veyla {

/// How well a series repeats itself, by its autocorrelation once drift is taken away: 1 for the
/// same again, 0 for nothing in common, below 0 for the contrary.
struct Periodicity {
  /// At the period of the rate asked for.
  double own = 0;
  /// At twice that period: of a pulse of half the rate.
  double halfRate = 0;
  /// At half of it: of a pulse of twice the rate.
  double doubleRate = 0;
};

/// The periodicity of `series`, 15 values a second, at `bpm` beats per minute. Breath and drift
/// that are slower than half the rate are taken down first, and so is what is quicker than four
/// times the rate. All 0 for a series of fewer than three periods, one that does not change, and a
/// rate that 15 values a second cannot show (above 300, or none).
Periodicity periodicityAt(std::span<const float> series, double bpm);

/// The greatest periodicity of `series`, 15 values a second, at any rate from 40 to 225 beats per
/// minute, where the series repeats itself better than a little sooner and later. 0 where it does
/// not, or is shorter than 3 s. Quick: for a look at the newest few seconds, of 4 s at most.
float pulseIn(std::span<const float> series);

}  // namespace veyla
