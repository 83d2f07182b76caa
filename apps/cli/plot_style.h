#pragma once

#include <array>
#include <string>

namespace veyla {

/// The colours of what is told apart in a plot, for gnuplot without its "#".
inline constexpr std::array<const char*, 5> plotColors{"1d6fd8", "d8382a", "2a9d5c", "8a5cc8",
                                                       "c88a1e"};

/// A text between quotes that gnuplot takes to the letter, of those letters that fonts here have.
std::string plotText(std::string text);

/// Begins a plot's script: a PNG of this many pixels in the style of all plots.
std::string plotBegin(int width, int height);

/// Titles what is plotted next and its axes.
std::string plotTitles(const std::string& title, const std::string& xLabel,
                       const std::string& yLabel);

}  // namespace veyla
