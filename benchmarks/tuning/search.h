#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "benchmarks/tuning/figures.h"
#include "benchmarks/tuning/material.h"
#include "benchmarks/tuning/replay.h"

namespace veyla::tuning {

/// Everything in the heart-rate settings.
struct Settings {
  int rawDataSize = 0;
  /// "skipFramesBetweenMeasurements".
  int skip = 0;
  /// "neededValidHeartrate".
  int needed = 0;
  Thresholds thresholds;

  bool operator==(const Settings&) const = default;
};

/// Figures of each set, in the order of `Material::sets`.
using FiguresOfSets = std::vector<Figures>;

/// The less the better: as near to all limits as can be, then the least cost.
struct Judgement {
  Beyond beyond;
  double cost = 0;

  auto operator<=>(const Judgement&) const = default;
};

/// Settings and what they make of the material.
struct Candidate {
  Settings settings;
  FiguresOfSets figures;
  FingerFigures fingers;
  /// Of all recordings and the fingers: what a choice is made by.
  Judgement judgement;
  struct Fold {
    /// Of the recordings outside the fold and the fingers.
    Judgement outside;
    /// Of those inside, which have no part in it.
    FiguresOfSets inside;
  };
  std::array<Fold, foldCount> folds;
};

struct SearchSpace {
  std::vector<int> rawDataSizes;
  std::vector<int> skips{1, 2, 3, 4, 5};
  /// Rising.
  std::vector<int> needed;
  /// Lowest and highest.
  std::array<int, 2> minimumBpm{41, 46};
  std::array<int, 2> validPercent{40, 56};
  std::array<int, 2> maxDistance{1, 7};
  /// How many thresholds are tried with each size; all combinations where there are no more.
  std::size_t samples = 120;
  unsigned seed = 1;
};

/// The best candidates of the space, the best first; those that are best outside of some fold are
/// among them. The same arguments give the same candidates. `progress` is called with a line of
/// text now and then.
std::vector<Candidate> search(Material& material, const SearchSpace& space,
                              const std::function<void(const std::string&)>& progress);

}  // namespace veyla::tuning
