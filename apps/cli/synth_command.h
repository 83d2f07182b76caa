#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "apps/cli/exit_status.h"

namespace veyla {

/// `veyla synth`: a generated fingertip, or a recorded colour series as a camera would show it.
struct SynthOptions {
  /// A video by its ending (.mp4, .mov, .mkv, .avi, .webm, .y4m), or a colour series (.csv).
  std::string output;
  /// Beats per minute, 20 to 300.
  double bpm = 72;
  /// Per cent, 50 to 100; above 99.5 is drawn as 99.5.
  double spo2 = 97;
  /// Above 0, to 86400; without it 30, or a recorded series' own length.
  std::optional<double> seconds;
  /// Frames per second, 1 to 240, fractions included.
  double fps = 30;
  /// In pixels, 16 × 16 to 7680 × 4320. Odd sizes are rounded up to even ones, which videos need.
  std::size_t width = 640;
  std::size_t height = 480;
  /// Standard deviation of a pixel's noise in 8-bit steps, 0 to 50.
  double noise = 1;
  /// Bursts of motion, 0 to 10.
  double motion = 0;
  std::uint64_t seed = 1;
  /// A colour series to draw in place of a generated fingertip; `bpm`, `spo2` and `motion` are then
  /// without effect.
  std::optional<std::string> from;
};

/// Reads a size such as "640x480" into the options. Throws `UsageError`.
void setSize(SynthOptions& options, const std::string& text);

/// Errors go to standard error. Returns the exit status: 0 done, 2 wrong options, 3 the series
/// cannot be read, 4 the output cannot be written.
ExitStatus runSynth(const SynthOptions& options);

}  // namespace veyla
