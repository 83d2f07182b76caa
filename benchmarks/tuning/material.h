#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/cli/kept_recording.h"
#include "benchmarks/tuning/estimates.h"
#include "platform/capture.h"

// What the settings are judged on: windows of recordings with references, and generated fingers.

namespace veyla::tuning {

inline constexpr int framesPerSecond = VideoDataOutput::framesPerSecond;
/// Of a window: 2 s of countdown, then at most 40 s.
inline constexpr int windowSeconds = 42;
inline constexpr int windowFrames = windowSeconds * framesPerSecond;

struct Recording {
  std::string name;
  KeptRecording kept;
  /// Recordings that are alike, such as "resting": figures are given for each set.
  std::size_t set = 0;
  /// Which part of the recordings it belongs to when they are split; those of one person, whose
  /// names begin alike, stay together.
  std::size_t fold = 0;
  Estimates estimates;
};

/// A start in a recording, and what the reference says by the time the measurement is finished.
struct Window {
  std::size_t recording = 0;
  std::int32_t startFrame = 0;
  /// By number of frames stored up to the finish: the plain mean of the reference's rows, and the
  /// one weighted by time; 0 where it has none.
  std::vector<float> reference;
  std::vector<float> referencePerTime;
};

struct Finger {
  int bpm = 0;
  double framesPerSecond = 0;
  std::uint64_t seed = 0;
  Estimates estimates;
};

struct Material {
  std::vector<std::string> sets;
  std::vector<Recording> recordings;
  std::vector<Window> windows;
  std::vector<Finger> fingers;
};

/// How many parts the recordings are split into.
inline constexpr std::size_t foldCount = 3;
/// A generated finger is measured as often, each time from a frame later on: its beats then meet
/// the estimates in other phases.
inline constexpr int fingerStarts = 5;

/// Out of several folders, without estimates yet; windows as of `veyla evaluate --every 5`. The
/// generated fingers' rates are `beatsApart` beats per minute from each other. Throws `InputError`.
Material materialIn(const std::vector<std::string>& folders, int beatsApart);

/// Fills in the estimates from `rawDataSize` frames each.
void gather(Material& material, int rawDataSize);

}  // namespace veyla::tuning
