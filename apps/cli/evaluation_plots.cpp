#include "apps/cli/evaluation_plots.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <vector>

#include "apps/cli/complain.h"
#include "apps/cli/plot_style.h"
#include "platform/format.h"
#include "platform/linux/gnuplot_program.h"
#include "platform/linux/pictures.h"

namespace veyla {

namespace {

struct Point {
  double x;
  double y;
};

struct Set {
  std::string name;
  std::vector<Comparison> comparisons;
};

std::vector<Set> setsOf(const Evaluation& evaluation) {
  std::vector<Set> sets;
  for (const EvaluatedWindow& window : evaluation.windows) {
    if (!window.heartrate) continue;
    const std::string name = setOf(evaluation.recordings[window.recording]);
    auto found =
        std::find_if(sets.begin(), sets.end(), [&](const Set& set) { return set.name == name; });
    if (found == sets.end()) found = sets.insert(sets.end(), {name, {}});
    found->comparisons.push_back(*window.heartrate);
  }
  return sets;
}

std::string head(const std::string& title, const std::string& xLabel, const std::string& yLabel) {
  return plotBegin(1400, 900) + plotTitles(title, xLabel, yLabel);
}

/// The sets' points as data blocks, and the part of a plot command that draws them.
std::string points(const std::vector<Set>& sets,
                   const std::function<Point(const Comparison&)>& pointOf, std::string& blocks) {
  std::string plot;
  for (std::size_t i = 0; i < sets.size(); ++i) {
    blocks += formatText("$set%zu << EOD\n", i);
    for (const Comparison& comparison : sets[i].comparisons) {
      const Point point = pointOf(comparison);
      blocks += formatText("%.4f %.4f\n", point.x, point.y);
    }
    blocks += "EOD\n";
    plot += formatText(", $set%zu with points pointtype 7 pointsize 1.1 linecolor rgb '#a0%s' ", i,
                       plotColors[i % plotColors.size()]) +
            "title " + plotText(sets[i].name);
  }
  return plot;
}

std::string blandAltmanScript(const std::vector<Set>& sets) {
  double count = 0;
  double sum = 0;
  double squares = 0;
  for (const Set& set : sets) {
    for (const Comparison& comparison : set.comparisons) {
      ++count;
      sum += comparison.error();
      squares += comparison.error() * comparison.error();
    }
  }
  const double bias = sum / count;
  const double deviation = std::sqrt(std::max(0.0, (squares - count * bias * bias) / (count - 1)));
  const double limit = count > 1 ? 1.96 * deviation : 0;
  std::string blocks;
  const std::string plot = points(
      sets,
      [](const Comparison& of) {
        return Point{(of.measured + of.reference) / 2, of.error()};
      },
      blocks);
  const auto line = [](double at, const char* dash, const std::string& title) {
    return formatText("%.4f with lines linecolor rgb '#3c3c40' linewidth 0.8 dashtype %s ", at,
                      dash) +
           "title " + plotText(title);
  };
  return head("Measured against the reference", "mean of measured and reference, beats per minute",
              "measured minus reference, beats per minute") +
         blocks + "plot " + line(bias, "1", formatText("bias %+.2f", bias)) + ", " +
         line(bias + limit, "2", formatText("95%% limits of agreement, ±%.1f", limit)) + ", " +
         formatText("%.4f with lines linecolor rgb '#3c3c40' linewidth 0.8 dashtype 2 notitle",
                    bias - limit) +
         plot + "\n";
}

std::string errorOverRateScript(const std::vector<Set>& sets) {
  std::string blocks;
  const std::string plot = points(
      sets,
      [](const Comparison& of) {
        return Point{of.reference, std::abs(of.error())};
      },
      blocks);
  return head("Error over the rate", "reference, beats per minute",
              "absolute error, beats per minute") +
         blocks + "set yrange [0:*]\n" +
         "plot 0.1 * x with lines linecolor rgb '#3c3c40' linewidth 0.8 dashtype 2 " +
         "title 'a tenth'" + plot + "\n";
}

std::unique_ptr<OutputFile> pictureIn(const std::string& folder, const char* name) {
  return std::make_unique<OutputFile>(std::filesystem::path(folder) / name);
}

}  // namespace

EvaluationPlots::EvaluationPlots(const std::string& folder)
    : folder_(folder),
      blandAltman_(pictureIn(folder, "bland-altman.png")),
      errorOverRate_(pictureIn(folder, "error-over-rate.png")) {}

bool EvaluationPlots::draw(const Evaluation& evaluation) {
  const std::vector<Set> sets = setsOf(evaluation);
  if (sets.empty()) return false;
  for (const Set& set : sets) {
    if (pictures().drawable(set.name) == set.name) continue;
    complain("--plots: no font here has all letters of " + set.name +
             "; the others are drawn as ?");
    break;
  }
  blandAltman_->write(runGnuplot(blandAltmanScript(sets)));
  errorOverRate_->write(runGnuplot(errorOverRateScript(sets)));
  blandAltman_->commit();
  errorOverRate_->commit();
  return true;
}

}  // namespace veyla
