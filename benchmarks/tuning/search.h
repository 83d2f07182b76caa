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

/// Settings and what they make of the material.
struct Candidate {
  Settings settings;
  /// Of the windows that `veyla evaluate` takes, and of all windows of the search.
  FiguresOfSets declared;
  FiguresOfSets all;
  FingerFigures fingers;
  /// On the recordings of all folds: half from each of the two kinds of windows, and the fingers.
  double cost = 0;
  /// Of the declared figures of all sets together; see `tuning::beyond`.
  double beyond = 0;
  struct Fold {
    /// On the recordings outside the fold, and the fingers: what a choice is made by.
    double costOutside = 0;
    /// Of the declared figures outside.
    double beyondOutside = 0;
    /// On those inside, which had no part in it.
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

/// The best candidates of the space, cheapest first; those that are best outside of some fold, and
/// those that come closest to all limits, are among them. The same arguments give the same
/// candidates. `progress` is called with a line of text now and then.
std::vector<Candidate> search(Material& material, const SearchSpace& space,
                              const std::function<void(const std::string&)>& progress);

}  // namespace veyla::tuning
