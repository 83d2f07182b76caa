#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "apps/cli/exit_status.h"
#include "apps/cli/number_range.h"

namespace veyla {

/// `veyla synth`: a generated fingertip, or a recorded colour series as a camera would show it.
struct SynthOptions {
  static constexpr NumberRange rates{20, 300};
  static constexpr NumberRange saturations{50, 100};
  /// A thousandth of a second is still one frame.
  static constexpr NumberRange lengths{0.001, 86400};
  static constexpr NumberRange frameRates{1, 240};
  static constexpr NumberRange widths{16, 7680};
  static constexpr NumberRange heights{16, 4320};
  static constexpr NumberRange noises{0, 50};
  static constexpr NumberRange motions{0, 10};

  /// A video by its ending (.mp4, .mov, .mkv, .avi, .webm, .y4m), or a colour series (.csv).
  std::string output;
  /// Beats per minute.
  double bpm = 72;
  /// Per cent; above 99.5 is drawn as 99.5.
  double spo2 = 97;
  /// Without it 30, or a recorded series' own length.
  std::optional<double> seconds;
  /// Frames per second, fractions included.
  double fps = 30;
  /// In pixels. Odd sizes are rounded up to even ones, which videos need.
  std::size_t width = 640;
  std::size_t height = 480;
  /// Standard deviation of a pixel's noise in 8-bit steps.
  double noise = 1;
  /// Bursts of motion.
  double motion = 0;
  std::uint64_t seed = 1;
  /// A colour series to draw in place of a generated fingertip; `bpm`, `spo2` and `motion` are then
  /// the series' own.
  std::optional<std::string> from;
};

/// Reads a size such as "640x480" into the options. Throws `UsageError`.
void setSize(SynthOptions& options, const std::string& text);

/// Writes the recording; returns its seconds. Throws `UsageError`, `InputError`, `OutputError`.
double drawRecording(const SynthOptions& options);

/// Does so and tells it. Errors go to standard error. Returns the exit status: 0 done, 2 wrong
/// options, 3 the series cannot be read, 4 the output cannot be written.
ExitStatus runSynth(const SynthOptions& options);

}  // namespace veyla
