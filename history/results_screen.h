#pragma once

#include "platform/color.h"
#include "platform/display.h"

/// The elements of the results screen.
namespace veyla::ResultsScreen {

inline constexpr Element resultsTableView{"resultsTableView"};
/// The label chooser, and the black view at half opacity behind it.
inline constexpr Element resultsTableViewForLabels{"resultsTableViewForLabels"};
inline constexpr Element dimView{"dimView"};
inline constexpr Element resultsToolbar{"resultsToolbar"};

/// In points.
inline constexpr double chooserCornerRadius = 15;
inline constexpr Color dimColor{0, 0, 0, 0.5};

}  // namespace veyla::ResultsScreen
