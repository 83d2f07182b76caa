#pragma once

namespace veyla {

/// A point of a chart.
struct DataItem {
  double xValue = 0;
  double yValue = 0;
};

}  // namespace veyla
