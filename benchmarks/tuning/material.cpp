#include "benchmarks/tuning/material.h"

#include <algorithm>
#include <memory>

#include "apps/cli/evaluation.h"
#include "apps/cli/parallel.h"
#include "measuring/measurement.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/synthetic_finger.h"

namespace veyla::tuning {

namespace {

constexpr int secondsBetweenStarts = 5;

/// The place of `text` in `list`, which it joins if it is new there.
std::size_t placeIn(std::vector<std::string>& list, const std::string& text) {
  const auto found = std::find(list.begin(), list.end(), text);
  if (found != list.end()) return static_cast<std::size_t>(found - list.begin());
  list.push_back(text);
  return list.size() - 1;
}

/// A name up to what follows its first number: both hands of a person have it in common.
std::string personOf(const std::string& name) {
  const std::size_t number = name.find_first_of("0123456789");
  return name.substr(0, name.find_first_not_of("0123456789", number));
}

Window windowOf(const Reference& reference, std::size_t recording, int start) {
  Window window;
  window.recording = recording;
  window.startFrame = start * framesPerSecond;
  const double from = start + Measurement::countdownSeconds;
  for (int frames = 0; frames <= windowFrames; ++frames) {
    const double to = from + static_cast<double>(frames - 1) / framesPerSecond;
    window.reference.push_back(static_cast<float>(reference.heartrate(from, to).value_or(0)));
    window.referencePerTime.push_back(
        static_cast<float>(reference.heartratePerTime(from, to).value_or(0)));
  }
  return window;
}

}  // namespace

Material materialIn(const std::vector<std::string>& folders, int beatsApart) {
  Material material;
  std::vector<std::vector<std::string>> personsOfSet;
  for (const std::string& folder : folders) {
    const ReferencedFolder recorded = recordingsIn(folder, EmbeddedResources(), defaultDevice);
    if (!recorded.faults.empty()) throw InputError(recorded.faults.front());
    for (const ReferencedRecording& found : recorded.recordings) {
      Recording recording{.name = found.name, .kept = found.recording, .estimates = {}};
      recording.set = placeIn(material.sets, setOf(found.name));
      personsOfSet.resize(material.sets.size());
      recording.fold = placeIn(personsOfSet[recording.set], personOf(found.name)) % foldCount;
      const double seconds = found.recording.seconds();
      for (int start = 0; start + windowSeconds <= seconds; start += secondsBetweenStarts) {
        material.windows.push_back(windowOf(found.reference, material.recordings.size(), start));
      }
      material.recordings.push_back(std::move(recording));
    }
  }
  for (std::uint64_t seed = 1; seed <= 2; ++seed) {
    for (const double rate : {15.0, 24.0, 25.0, 30.0, 60.0}) {
      for (int bpm = 48; bpm <= 180; bpm += beatsApart) {
        material.fingers.push_back({bpm, rate, seed, {}});
      }
    }
  }
  return material;
}

void gather(Material& material, int rawDataSize) {
  inParallel(material.recordings.size(), 0, [&](std::size_t i) {
    Recording& recording = material.recordings[i];
    recording.estimates =
        gatherEstimates(recording.kept.source(), rawDataSize, recording.kept.seconds() + 1);
  });
  constexpr int seconds = windowSeconds + 1;
  inParallel(material.fingers.size(), 0, [&](std::size_t i) {
    Finger& finger = material.fingers[i];
    FingerOptions options;
    options.bpm = finger.bpm;
    options.seed = finger.seed;
    finger.estimates =
        gatherEstimates(std::make_unique<SyntheticSeries>(options, seconds, finger.framesPerSecond),
                        rawDataSize, seconds);
  });
}

}  // namespace veyla::tuning
