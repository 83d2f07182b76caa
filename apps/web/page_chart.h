#pragma once

#include <emscripten/val.h>

#include <string>
#include <utility>

#include "apps/web/page_display.h"
#include "history/chart_results_view_controller.h"
#include "platform/line_chart.h"

namespace veyla {

/// One line chart of the page's: `page` answers the operations by their names. What stands at an
/// axis is asked for by `axisText`.
class PageChart : public LineChart {
 public:
  explicit PageChart(emscripten::val page) : page_(std::move(page)) {}

  void configure(const LineChartSettings& settings) override;
  void clear() override { page_.call<void>("clear"); }
  void setData(const LineDataSet& data) override;
  void setGranularity(double seconds) override { page_.call<void>("setGranularity", seconds); }

  /// The text at a value of an axis, "left", "right" or "x".
  std::string axisText(const std::string& axis, double value) const;

 private:
  emscripten::val page_;
  LineChartSettings settings_;
};

/// What the charts screen stands on: `page` has `display`, `heartrate` and `spo2`.
struct PageChartViews {
  PageChartViews(const emscripten::val& page, Pending& pending)
      : display(page["display"], pending), heartrate(page["heartrate"]), spo2(page["spo2"]) {}

  PageDisplay display;
  PageChart heartrate;
  PageChart spo2;
};

/// The charts screen with its views, which lasts as long as the page keeps it.
class PageChartsScreen : private PageChartViews, public ChartResultsViewController {
 public:
  PageChartsScreen(const emscripten::val& page, Pending& pending, ActionSheetView& sheets)
      : PageChartViews(page, pending),
        ChartResultsViewController(display, sheets, heartrate, spo2) {}

  std::string heartrateAxisText(const std::string& axis, double value) const {
    return heartrate.axisText(axis, value);
  }
  std::string spo2AxisText(const std::string& axis, double value) const {
    return spo2.axisText(axis, value);
  }
};

}  // namespace veyla
