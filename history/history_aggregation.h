#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "history/history_entry.h"
#include "platform/line_chart.h"

namespace veyla {

/// The means of one day key.
struct DailyAverage {
  /// Of the values above 0; 0 where there is none.
  double hr = 0;
  double spo2 = 0;
  /// The day key.
  std::string dateString;
  /// Of the last entry that contributed; nothing where none did.
  std::optional<Date> date;

  bool operator==(const DailyAverage&) const = default;
};

/// What the charts of one period show.
struct ChartSeries {
  /// In the order of days; x in seconds since 1970-01-01 00:00 UTC.
  std::vector<ChartDataEntry> hr;
  std::vector<ChartDataEntry> spo2;
  /// The day key of every day of the period, with or without a point.
  std::vector<std::string> x;
  /// The smallest x of the points; the current time without one.
  double minTimestamp = 0;
  /// The largest x of the points; 0 without one.
  double maxTimestamp = 0;

  bool operator==(const ChartSeries&) const = default;
};

}  // namespace veyla

/// The history by days, in the device's time zone.
namespace veyla::Utils {

inline constexpr std::int32_t daysOfWeek = 7;
inline constexpr std::int32_t daysOfMonth = 30;
inline constexpr std::int32_t daysOf3Months = 90;
/// Stands for a period without limit.
inline constexpr std::int32_t allDays = -1;

/// Whole times 86400 s from the beginning of the date's day to now: 0 for all of today, what is
/// still to come of it included, and for tomorrow, 1 for yesterday (0 in the first hour after a day
/// of 23), negative from the day after tomorrow on. Stops at ±24855, where the seconds end that 32
/// bits can count.
std::int32_t daysAgo(Date date);

/// The entries of less than `days` days ago, of all days where that is negative, which carry the
/// flag of the label's index, whatever their flags where that is negative. In the history's order;
/// stored elements that are no entries are left out.
std::vector<HistoryEntry> getLastValuesForLabel(std::int32_t label, std::int32_t days);
std::vector<HistoryEntry> getLastWeekForLabel(std::int32_t label);
std::vector<HistoryEntry> getLastMonthForLabel(std::int32_t label);
std::vector<HistoryEntry> getLast3MonthsForLabel(std::int32_t label);
std::vector<HistoryEntry> getAllForLabel(std::int32_t label);

/// The means of the entries that carry the day key.
DailyAverage getAvgValueFromArray(std::span<const HistoryEntry> entries,
                                  std::string_view forDateString);

/// The series of the `daysAgo` days up to today, or of all days since the first entry where that is
/// negative; without entries there are none of these. The entries, oldest first, get their day
/// keys.
///
/// A day key has no year: entries of one day and month in different years are one day, that of the
/// latest. Days are steps of 86400 s from the start's time of day, so that a change of the clocks
/// can skip or repeat one; no point follows a day with entries that is skipped.
ChartSeries makeChartDataSets2(std::vector<HistoryEntry>& values, std::int32_t daysAgo);

}  // namespace veyla::Utils
