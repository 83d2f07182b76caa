#include "benchmarks/tuning/search.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <random>

#include "apps/cli/parallel.h"
#include "platform/format.h"

namespace veyla::tuning {

namespace {

/// How much one of a hundred generated fingers costs that is wrong or unfinished.
constexpr double costOfWrongFinger = 0.2;
/// Candidates of each size that generated fingers are tried on.
constexpr std::size_t finalists = 300;

Limits limitsOf(const std::string& set) {
  Limits limits;
  // Long recordings of still hands: nobody should have to wait there as long as on some phones.
  if (set.ends_with("hypoxia")) limits.ninetieth = 22.5;
  // Whole numbers of 8 bits may cost a tenth.
  return set.starts_with("drawn") ? limits.times(1.1) : limits;
}

template <class Includes>
FiguresOfSets figuresOf(const Material& material, const std::vector<Tally>& tallies,
                        const Includes& includes) {
  std::vector<Tally> sums(material.sets.size());
  for (std::size_t i = 0; i < tallies.size(); ++i) {
    if (includes(material.recordings[i])) sums[material.recordings[i].set].add(tallies[i]);
  }
  FiguresOfSets figures;
  for (const Tally& sum : sums) figures.push_back(sum.figures());
  return figures;
}

Judgement judgementOf(const Material& material, const FiguresOfSets& figures) {
  Judgement judgement;
  for (std::size_t set = 0; set < figures.size(); ++set) {
    const Limits limits = limitsOf(material.sets[set]);
    addBeyond(figures[set], limits, judgement.beyond);
    judgement.cost += costOf(figures[set], limits);
  }
  return judgement;
}

/// `tallies` has one of each recording.
Candidate candidateOf(const Material& material, const Settings& settings,
                      const std::vector<Tally>& tallies) {
  Candidate candidate;
  candidate.settings = settings;
  candidate.figures = figuresOf(material, tallies, [](const Recording&) { return true; });
  candidate.judgement = judgementOf(material, candidate.figures);
  for (std::size_t fold = 0; fold < foldCount; ++fold) {
    const auto outside = [&](const Recording& recording) { return recording.fold != fold; };
    const auto inside = [&](const Recording& recording) { return recording.fold == fold; };
    candidate.folds[fold].outside = judgementOf(material, figuresOf(material, tallies, outside));
    candidate.folds[fold].inside = figuresOf(material, tallies, inside);
  }
  return candidate;
}

/// All candidates with these thresholds.
void tryThresholds(const Material& material, const SearchSpace& space, int rawDataSize,
                   const Thresholds& thresholds, std::vector<Candidate>& candidates) {
  std::vector<std::vector<std::int16_t>> bins;
  for (const Recording& recording : material.recordings) {
    bins.push_back(judge(recording.estimates, thresholds));
  }
  std::vector<std::optional<Finish>> finishes;
  for (const int skip : space.skips) {
    std::vector tallies(space.needed.size(), std::vector<Tally>(material.recordings.size()));
    for (const Window& window : material.windows) {
      replay(material.recordings[window.recording].estimates, bins[window.recording],
             window.startFrame, windowFrames, skip, space.needed, finishes);
      for (std::size_t n = 0; n < finishes.size(); ++n) {
        tallies[n][window.recording].add(window, finishes[n]);
      }
    }
    for (std::size_t n = 0; n < tallies.size(); ++n) {
      const Settings settings{rawDataSize, skip, space.needed[n], thresholds};
      candidates.push_back(candidateOf(material, settings, tallies[n]));
    }
  }
}

FingerFigures tryFingers(const Material& material, const Settings& settings) {
  const std::array needed{settings.needed};
  double percentages = 0;
  int finished = 0;
  int over2 = 0;
  std::vector<std::optional<Finish>> finishes;
  for (const Finger& finger : material.fingers) {
    const auto bins = judge(finger.estimates, settings.thresholds);
    for (int start = 0; start < fingerStarts; ++start) {
      replay(finger.estimates, bins, start, windowFrames, settings.skip, needed, finishes);
      if (!finishes[0]) continue;
      const double error = std::abs(static_cast<double>(finishes[0]->heartrate) - finger.bpm);
      if (error > 2) ++over2;
      percentages += 100 * error / finger.bpm;
      ++finished;
    }
  }
  const auto measured = static_cast<int>(material.fingers.size()) * fingerStarts;
  return {.unfinished = 100.0 * (measured - finished) / measured,
          .over2 = 100.0 * over2 / measured,
          .meanPercentageError = percentages / std::max(finished, 1)};
}

/// Keeps the candidates that are best by some measure.
void keepFinalists(std::vector<Candidate>& candidates) {
  std::vector<Candidate> kept;
  const auto keepBy = [&](const auto& rank, std::size_t count) {
    count = std::min(count, candidates.size());
    std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(count),
                      candidates.end(),
                      [&](const Candidate& a, const Candidate& b) { return rank(a) < rank(b); });
    for (std::size_t i = 0; i < count; ++i) {
      const auto same = [&](const Candidate& other) {
        return other.settings == candidates[i].settings;
      };
      if (std::none_of(kept.begin(), kept.end(), same)) kept.push_back(candidates[i]);
    }
  };
  keepBy([](const Candidate& of) { return of.judgement; }, finalists);
  for (std::size_t fold = 0; fold < foldCount; ++fold) {
    keepBy([=](const Candidate& of) { return of.folds[fold].outside; }, finalists / 2);
  }
  candidates = std::move(kept);
}

std::vector<Thresholds> thresholdsOf(const SearchSpace& space, int rawDataSize) {
  std::vector<Thresholds> thresholds;
  for (int bpm = space.minimumBpm[0]; bpm <= space.minimumBpm[1]; ++bpm) {
    for (int percent = space.validPercent[0]; percent <= space.validPercent[1]; ++percent) {
      for (int distance = space.maxDistance[0]; distance <= space.maxDistance[1]; ++distance) {
        thresholds.push_back({bpm, percent, distance});
      }
    }
  }
  // A shuffle of our own: the library's differs from one library to the next.
  std::mt19937 random(space.seed * 1000 + static_cast<unsigned>(rawDataSize));
  for (std::size_t i = thresholds.size(); i > 1; --i) {
    std::swap(thresholds[i - 1], thresholds[random() % i]);
  }
  thresholds.resize(std::min(thresholds.size(), space.samples));
  return thresholds;
}

void addFingers(const FingerFigures& fingers, Judgement& judgement) {
  addBeyond(fingers, judgement.beyond);
  judgement.cost += costOfWrongFinger * (fingers.unfinished + fingers.over2);
}

std::vector<Candidate> searchSize(Material& material, const SearchSpace& space, int rawDataSize) {
  gather(material, rawDataSize);
  const std::vector<Thresholds> thresholds = thresholdsOf(space, rawDataSize);
  std::vector<std::vector<Candidate>> found(thresholds.size());
  inParallel(thresholds.size(), 0, [&](std::size_t i) {
    tryThresholds(material, space, rawDataSize, thresholds[i], found[i]);
  });
  std::vector<Candidate> candidates;
  for (const auto& part : found) candidates.insert(candidates.end(), part.begin(), part.end());
  keepFinalists(candidates);
  inParallel(candidates.size(), 0, [&](std::size_t i) {
    Candidate& candidate = candidates[i];
    candidate.fingers = tryFingers(material, candidate.settings);
    addFingers(candidate.fingers, candidate.judgement);
    for (Candidate::Fold& fold : candidate.folds) addFingers(candidate.fingers, fold.outside);
  });
  return candidates;
}

}  // namespace

std::vector<Candidate> search(Material& material, const SearchSpace& space,
                              const std::function<void(const std::string&)>& progress) {
  std::vector<Candidate> candidates;
  for (const int rawDataSize : space.rawDataSizes) {
    progress(formatText("searching with %d frames per estimate", rawDataSize));
    const auto found = searchSize(material, space, rawDataSize);
    candidates.insert(candidates.end(), found.begin(), found.end());
  }
  std::stable_sort(
      candidates.begin(), candidates.end(),
      [](const Candidate& a, const Candidate& b) { return a.judgement < b.judgement; });
  return candidates;
}

}  // namespace veyla::tuning
