#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "history/history_aggregation.h"
#include "platform/action_sheet.h"
#include "platform/color.h"
#include "platform/display.h"
#include "platform/life.h"
#include "platform/line_chart.h"

namespace veyla {

/// The elements of the charts screen.
namespace ChartsScreen {

/// The button's title as it stands, and while a finger is on it.
inline constexpr Element buttonLabels{"buttonLabels"};
inline constexpr Element buttonLabelsHighlighted{"buttonLabelsHighlighted"};

}  // namespace ChartsScreen

/// The charts screen: daily means of heart rate and SpO2 over a period, of all entries or of those
/// with one label. It reads the history anew whenever it is shown and whenever a choice changes.
class ChartResultsViewController : public LineChartDelegate {
 public:
  /// The titles of the period control's segments.
  static constexpr std::array<std::string_view, 4> periodTitles{"Week", "Month", "3 Months", "All"};
  static constexpr std::int32_t noLabel = -1;

  /// All of them must outlive the screen.
  ChartResultsViewController(Display& display, ActionSheetView& actionSheetView,
                             LineChart& chartHeartrate, LineChart& chartSpo2);

  void viewDidLoad();
  void viewWillAppear();

  void tapSegmentPeriod(std::int32_t selectedSegmentIndex);
  void tapButtonLabels();

  /// The series of the period and label, whose entries become `data`; nothing for a period that is
  /// none.
  std::optional<ChartSeries> filterData();
  /// Configures one of the two charts with its vertical range.
  void initCharts(LineChart& chart, double min, double max);
  void showChartData();

  /// The index of a label, or −1 for all entries.
  std::int32_t selectedLabel() const { return selectedLabel_; }
  void setSelectedLabel(std::int32_t selectedLabel) { selectedLabel_ = selectedLabel; }
  /// 0 week, 1 month, 2 three months, 3 everything.
  std::int32_t selectedPeriod() const { return selectedPeriod_; }
  void setSelectedPeriod(std::int32_t selectedPeriod) { selectedPeriod_ = selectedPeriod; }
  const std::vector<std::string_view>& labels() const { return labels_; }
  const std::vector<HistoryEntry>& data() const { return data_; }

 private:
  void chooseLabel(std::int32_t label);
  void showSelectedLabel();

  Display& display_;
  ActionSheetView& actionSheetView_;
  LineChart& chartHeartrate_;
  LineChart& chartSpo2_;
  std::vector<std::string_view> labels_;
  std::vector<HistoryEntry> data_;
  std::int32_t selectedLabel_ = noLabel;
  std::int32_t selectedPeriod_ = 0;
  Life life_;
};

}  // namespace veyla
