#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <string>
#include <utility>

#include "platform/action_sheet.h"
#include "platform/line_chart.h"

namespace veyla {

/// One line chart of the page's: `page` answers the operations by their names, each with the
/// chart's name first. What stands at an axis is asked for by `axisText`.
class PageChart : public LineChart {
 public:
  PageChart(emscripten::val page, std::string name)
      : page_(std::move(page)), name_(std::move(name)) {}

  void configure(const LineChartSettings& settings) override;
  void clear() override { page_.call<void>("clear", name_); }
  void setData(const LineDataSet& data) override;
  void setGranularity(double seconds) override {
    page_.call<void>("setGranularity", name_, seconds);
  }

  /// The text at a value of an axis, "left", "right" or "x".
  std::string axisText(const std::string& axis, double value) const;

 private:
  emscripten::val page_;
  std::string name_;
  LineChartSettings settings_;
};

/// The page's sheet of actions: `present(sheet)` gets an object with title, tint and the actions'
/// titles, and answers a tap by `choose`.
class PageActionSheet : public ActionSheetView {
 public:
  explicit PageActionSheet(emscripten::val page) : page_(std::move(page)) {}

  void present(const ActionSheet& sheet) override;
  void dismiss() override { page_.call<void>("dismiss"); }

  void choose(std::size_t action);

 private:
  emscripten::val page_;
  ActionSheet sheet_;
};

}  // namespace veyla
