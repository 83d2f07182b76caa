#pragma once

#include <string>
#include <vector>

#include "platform/line_chart.h"

namespace veyla {

/// Remembers what a chart was asked for, and the order of the calls.
class RecorderLineChart : public LineChart {
 public:
  LineChartSettings settings;
  LineDataSet data;
  double granularity = -1;
  std::vector<std::string> calls;

  void configure(const LineChartSettings& of) override {
    settings = of;
    calls.emplace_back("configure");
  }
  void clear() override {
    data = {};
    calls.emplace_back("clear");
  }
  void setData(const LineDataSet& of) override {
    data = of;
    calls.emplace_back("data");
  }
  void setGranularity(double seconds) override {
    granularity = seconds;
    calls.emplace_back("granularity");
  }
};

}  // namespace veyla
