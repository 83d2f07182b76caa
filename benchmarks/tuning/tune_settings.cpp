#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <string>

#include "apps/cli/plot_style.h"
#include "benchmarks/tuning/search.h"
#include "platform/format.h"
#include "platform/linux/gnuplot_program.h"
#include "platform/linux/output_file.h"

// Searches the heart-rate settings over recordings with references and prints the best ones, what
// they are worth on recordings that had no part in the choice, and what each number does.

namespace veyla::tuning {

namespace {

std::string rowOf(const Figures& of) {
  return formatText(" | %5.2f %5.2f %5.1f %5.1f %5.1f %5.1f %5.1f", of.meanError,
                    of.meanErrorPerTime, of.over5, of.over10, of.unfinished, of.median,
                    of.ninetieth);
}

std::string rowOf(const Settings& of) {
  return formatText("%4d %4d %6d %5d %7d %8d", of.rawDataSize, of.skip, of.needed,
                    of.thresholds.validPercent, of.thresholds.minimumBpm,
                    of.thresholds.maxDistance);
}

std::string rowOf(const Candidate& of, const FiguresOfSets& figures) {
  std::string row = rowOf(of.settings);
  for (const Figures& set : figures) row += rowOf(set);
  return row;
}

std::string rowOf(const Candidate& of) {
  return rowOf(of, of.figures) + formatText(" | %5.2f %5.2f %5.2f", of.fingers.unfinished,
                                            of.fingers.over2, of.fingers.meanPercentageError);
}

void printHead(const Material& material, bool fingers) {
  std::string sets = std::string(39, ' ');
  std::string head = "size skip needed valid minimum distance";
  for (const std::string& set : material.sets) {
    sets += formatText(" | %-41s", set.c_str());
    head += " |   MAE  time    >5   >10 unfin median  90th";
  }
  std::printf("%s%s\n%s%s\n", sets.c_str(), fingers ? " | fingers" : "", head.c_str(),
              fingers ? " | unfin    >2  MAPE" : "");
}

/// The mean error of each set and its median time to the finish over the frames per estimate.
std::string waitingScript(const Material& material, const std::vector<Candidate>& found) {
  std::string script =
      plotBegin(1400, 900) +
      plotTitles("What waiting is worth", "frames per estimate, 15 a second",
                 "mean absolute error, beats per minute") +
      "set yrange [0:*]\nset y2range [0:*]\nset ytics nomirror\nset y2tics\nset border 11\n"
      "set y2label 'median time to finish, seconds'\nset rmargin 12\n";
  std::string plot;
  for (std::size_t set = 0; set < material.sets.size(); ++set) {
    script += formatText("$set%zu << EOD\n", set);
    for (const Candidate& candidate : found) {
      script += formatText("%d %.3f %.3f\n", candidate.settings.rawDataSize,
                           candidate.figures[set].meanError, candidate.figures[set].median);
    }
    script += "EOD\n";
    const char* colour = plotColors[set % plotColors.size()];
    plot +=
        (plot.empty() ? "plot " : ", ") +
        formatText("$set%zu with linespoints pointtype 7 linecolor rgb '#%s' title ", set, colour) +
        plotText(material.sets[set] + ", error") +
        formatText(", $set%zu using 1:3 axes x1y2 with lines dashtype 2 linecolor rgb '#%s' ", set,
                   colour) +
        "title " + plotText(material.sets[set] + ", seconds");
  }
  return script + plot + "\n";
}

/// The candidates that differ from `best` in one number at most, by that number.
void printAround(const Material& material, SearchSpace space, const Settings& best,
                 const std::string& waitingPlot) {
  Material around = material;
  const auto only = [&](int rawDataSize) {
    space.rawDataSizes = {rawDataSize};
    space.samples = 1U << 30U;
    space.minimumBpm = {best.thresholds.minimumBpm, best.thresholds.minimumBpm};
    space.validPercent = {best.thresholds.validPercent, best.thresholds.validPercent};
    space.maxDistance = {best.thresholds.maxDistance, best.thresholds.maxDistance};
    space.skips = {best.skip};
    space.needed = {best.needed};
  };
  const auto print = [&](const char* what) {
    auto found = search(around, space, [](const std::string&) {});
    std::sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) {
      return rowOf(a.settings) < rowOf(b.settings);
    });
    std::printf("\n%s\n", what);
    printHead(material, true);
    for (const Candidate& candidate : found) std::printf("%s\n", rowOf(candidate).c_str());
    return found;
  };

  only(best.rawDataSize);
  space.rawDataSizes.clear();
  for (int size = 80; size <= 200; size += 10) space.rawDataSizes.push_back(size);
  const auto waiting = print("Frames per estimate: what waiting is worth");
  if (!waitingPlot.empty()) {
    OutputFile picture(waitingPlot);
    picture.write(runGnuplot(waitingScript(material, waiting)));
    picture.commit();
  }
  only(best.rawDataSize);
  space.minimumBpm = {lowestMinimumBpm + 1, 50};
  print("The lowest rate that is looked for");
  only(best.rawDataSize);
  space.skips = {1, 2, 3, 4, 5, 6};
  print("Frames from one estimate to the next");
  only(best.rawDataSize);
  space.needed = {6, 8, 10, 12, 14, 16, 20, 24, 30};
  print("Accepted estimates that finish a measurement");
  only(best.rawDataSize);
  space.validPercent = {best.thresholds.validPercent - 6, best.thresholds.validPercent + 6};
  print("How clear an accepted estimate is");
  only(best.rawDataSize);
  space.maxDistance = {1, 8};
  print("How far a rival may lie and belong to the same peak");
}

struct Options {
  std::vector<std::string> folders;
  SearchSpace space;
  std::array<int, 2> sizes{105, 120};
  std::array<int, 2> needed{5, 24};
  int beatsApart = 1;
  std::size_t shown = 12;
  std::vector<int> around;
  std::string waitingPlot;
};

void tune(Options options) {
  Material material = materialIn(options.folders, options.beatsApart);
  for (int size = options.sizes[0]; size <= options.sizes[1]; ++size) {
    options.space.rawDataSizes.push_back(size);
  }
  for (int needed = options.needed[0]; needed <= options.needed[1]; ++needed) {
    options.space.needed.push_back(needed);
  }
  if (!options.around.empty()) {
    const auto& given = options.around;
    printAround(material, options.space,
                {given[0], given[1], given[2], {given[4], given[3], given[5]}},
                options.waitingPlot);
    return;
  }
  const auto candidates = search(material, options.space, [](const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
  });

  const auto within = std::count_if(candidates.begin(), candidates.end(), [](const Candidate& of) {
    return of.judgement.beyond == Beyond{};
  });
  std::printf("Within every limit: %td. The best:\n", within);
  printHead(material, true);
  for (std::size_t i = 0; i < std::min(options.shown, candidates.size()); ++i) {
    std::printf("%s\n", rowOf(candidates[i]).c_str());
  }
  std::printf("\nChosen without a third of the recordings, measured on that third\n");
  printHead(material, false);
  for (std::size_t fold = 0; fold < foldCount; ++fold) {
    const auto chosen = std::min_element(candidates.begin(), candidates.end(),
                                         [=](const Candidate& a, const Candidate& b) {
                                           return a.folds[fold].outside < b.folds[fold].outside;
                                         });
    std::printf("%s\n", rowOf(*chosen, chosen->folds[fold].inside).c_str());
  }
}

}  // namespace

}  // namespace veyla::tuning

int main(int argc, char** argv) {
  veyla::tuning::Options options;
  CLI::App program("Searches the heart-rate settings over recordings with references.");
  program
      .add_option("FOLDER", options.folders,
                  "recordings, each with a NAME.reference.csv; in sets that are named drawn..., "
                  "limits are a tenth larger")
      ->required();
  program.add_option("--sizes", options.sizes, "fewest and most frames per estimate (105 120)");
  program.add_option("--valid", options.space.validPercent, "range of TTValidPercent (40 56)");
  program.add_option("--distance", options.space.maxDistance, "range of TTMaxDistance (1 7)");
  program.add_option("--minimum", options.space.minimumBpm, "range of minimumBpm (41 46)");
  program.add_option("--needed", options.needed, "range of neededValidHeartrate (5 24)");
  program.add_option("--skips", options.space.skips,
                     "frames from one estimate to the next (1 2 3 4 5)");
  program.add_option("--samples", options.space.samples, "thresholds tried with each size (120)");
  program.add_option("--seed", options.space.seed, "which thresholds those are (1)");
  program
      .add_option("--beats-apart", options.beatsApart,
                  "generated fingers have rates so many beats apart (1)")
      ->check(CLI::Range(1, 132));
  program.add_option("--shown", options.shown, "candidates printed (12)");
  program
      .add_option("--around", options.around,
                  "no search, but what each number does: size skip needed valid minimum distance")
      ->expected(6);
  program.add_option("--plot", options.waitingPlot,
                     "with --around, a PNG of the error over the time to finish");
  CLI11_PARSE(program, argc, argv);
  const auto rises = [](const std::array<int, 2>& range) { return range[0] <= range[1]; };
  if (!rises(options.sizes) || !rises(options.needed) || !rises(options.space.validPercent) ||
      !rises(options.space.maxDistance) || !rises(options.space.minimumBpm) ||
      options.space.samples == 0 || options.space.skips.empty()) {
    std::fprintf(stderr, "tune_settings: a range is empty; give its lower end first\n");
    return 2;
  }
  try {
    veyla::tuning::tune(options);
  } catch (const veyla::InputError& error) {
    std::fprintf(stderr, "tune_settings: %s\n", error.what());
    return 3;
  } catch (const veyla::OutputError& error) {
    std::fprintf(stderr, "tune_settings: %s\n", error.what());
    return 4;
  }
  return 0;
}
