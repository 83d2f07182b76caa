#include "history/history_aggregation.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

#include "history/history_store.h"
#include "platform/platform.h"

namespace veyla::Utils {

namespace {

constexpr std::string_view dayKeyPattern = "dd/MM";
constexpr std::string_view dayPattern = "yyyy-MM-dd";

Date now() { return services().clock.now(); }

std::string dayKeyOf(Date date) { return services().dates.formatted(date, dayKeyPattern); }

bool hasLabel(const HistoryEntry& entry, std::size_t label) {
  return label < entry.labels.size() && entry.labels[label];
}

/// Days ago of many dates: what is read back is remembered, since reading takes longest.
class DayCounter {
 public:
  std::int32_t daysAgo(Date date) {
    std::string day = services().dates.formatted(date, dayPattern);
    if (const auto found = days_.find(day); found != days_.end()) return found->second;
    const Date midnight = services().dates.parse(day, dayPattern).value_or(date);
    const std::int32_t days = daysSince(midnight);
    days_.emplace(std::move(day), days);
    return days;
  }

  /// Whether the date is surely at least as many days ago, found without a calendar: no midnight is
  /// as much as a day later than the moment that it began the day of.
  bool isLongBefore(Date date, std::int32_t days) const {
    constexpr std::int32_t mostDays = std::numeric_limits<std::int32_t>::max() / secondsPerDay;
    if (days >= mostDays) return false;
    return now_.secondsSince1970 - date.secondsSince1970 >= (days + 1.0) * secondsPerDay;
  }

 private:
  std::int32_t daysSince(Date midnight) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const double seconds = now_.secondsSince1970 - midnight.secondsSince1970;
    return static_cast<std::int32_t>(std::clamp<double>(seconds, Limits::min(), Limits::max())) /
           secondsPerDay;
  }

  Date now_ = now();
  std::unordered_map<std::string, std::int32_t> days_;
};

/// Gathers the means of one day key, entry by entry.
class DailySums {
 public:
  void add(const HistoryEntry& entry) {
    if (heartrates_.add(entry.hr)) date_ = entry.date;
    if (spo2s_.add(entry.spo2)) date_ = entry.date;
  }

  DailyAverage average(std::string dateString) const {
    return {heartrates_.mean(), spo2s_.mean(), std::move(dateString), date_};
  }

 private:
  struct Sum {
    double sum = 0;
    std::int32_t count = 0;

    bool add(double value) {
      if (!(value > 0)) return false;
      sum += value;
      ++count;
      return true;
    }
    double mean() const { return count > 0 ? sum / count : 0; }
  };

  Sum heartrates_;
  Sum spo2s_;
  std::optional<Date> date_;
};

/// The means of all days in the order of their dates. A day without any has no place in it.
std::vector<DailyAverage> averagesOf(std::span<const HistoryEntry> entries) {
  std::unordered_map<std::string_view, DailySums> days;
  for (const HistoryEntry& entry : entries) days[entry.ddmm].add(entry);
  std::vector<DailyAverage> averages;
  for (const auto& [dayKey, sums] : days) {
    DailyAverage average = sums.average(std::string(dayKey));
    if (average.date) averages.push_back(std::move(average));
  }
  std::sort(averages.begin(), averages.end(),
            [](const DailyAverage& left, const DailyAverage& right) {
              return left.date->secondsSince1970 < right.date->secondsSince1970;
            });
  return averages;
}

Date startOf(std::span<const HistoryEntry> values, std::int32_t daysAgo, Date moment) {
  if (daysAgo < 0) {
    logLine("DICT=%s", described(valueOf(values.front())).c_str());
    return values.front().date;
  }
  // 32 bits wide, and wraps as such.
  const auto offset =
      static_cast<std::int32_t>(secondsPerDay - static_cast<std::uint32_t>(daysAgo) *
                                                    static_cast<std::uint32_t>(secondsPerDay));
  return {moment.secondsSince1970 + offset};
}

/// Walks the days from `start` and puts the averages, in their order, on the days that have them.
void placeOnDays(const std::vector<DailyAverage>& averages, Date start, std::int32_t daysFrom,
                 ChartSeries& series) {
  auto next = averages.begin();
  for (std::int32_t k = 0; k <= daysFrom; ++k) {
    const Date day{start.secondsSince1970 + static_cast<double>(k) * secondsPerDay};
    series.x.push_back(dayKeyOf(day));
    // An average whose day never comes lets none after it through.
    if (next == averages.end() || next->dateString != series.x.back()) continue;
    const DailyAverage& average = *next++;
    const double t = day.secondsSince1970;
    if (average.hr > 0) series.hr.push_back({t, average.hr});
    if (average.spo2 > 0) series.spo2.push_back({t, average.spo2});
    if (average.hr > 0 || average.spo2 > 0) {
      series.minTimestamp = std::min(series.minTimestamp, t);
      series.maxTimestamp = std::max(series.maxTimestamp, t);
    }
  }
}

}  // namespace

std::int32_t daysAgo(Date date) { return DayCounter().daysAgo(date); }

std::vector<HistoryEntry> getLastValuesForLabel(std::int32_t label, std::int32_t days) {
  std::vector<HistoryEntry> kept;
  auto values = getValues();
  if (!values) return kept;
  DayCounter counter;
  for (HistoryEntry& entry : *values) {
    if (entry.damaged) continue;
    if (days >= 0) {
      if (counter.isLongBefore(entry.date, days)) continue;
      if (counter.daysAgo(entry.date) >= days) continue;
    }
    if (label >= 0 && !hasLabel(entry, static_cast<std::size_t>(label))) continue;
    kept.push_back(std::move(entry));
  }
  return kept;
}

std::vector<HistoryEntry> getLastWeekForLabel(std::int32_t label) {
  return getLastValuesForLabel(label, daysOfWeek);
}
std::vector<HistoryEntry> getLastMonthForLabel(std::int32_t label) {
  return getLastValuesForLabel(label, daysOfMonth);
}
std::vector<HistoryEntry> getLast3MonthsForLabel(std::int32_t label) {
  return getLastValuesForLabel(label, daysOf3Months);
}
std::vector<HistoryEntry> getAllForLabel(std::int32_t label) {
  return getLastValuesForLabel(label, allDays);
}

DailyAverage getAvgValueFromArray(std::span<const HistoryEntry> entries,
                                  std::string_view forDateString) {
  DailySums sums;
  for (const HistoryEntry& entry : entries) {
    if (entry.ddmm == forDateString) sums.add(entry);
  }
  return sums.average(std::string(forDateString));
}

ChartSeries makeChartDataSets2(std::vector<HistoryEntry>& values, std::int32_t daysAgo) {
  ChartSeries series;
  // Read once: a clock that runs must not put today's point beyond the end.
  const Date moment = now();
  series.minTimestamp = moment.secondsSince1970;
  if (daysAgo < 0 && values.empty()) return series;

  const Date start = startOf(values, daysAgo, moment);
  const std::int32_t daysFrom = Utils::daysAgo(start);
  logLine("fromDate=%s, toDate=%s, daysFrom=%lu, daysTo=%lu", described(start).c_str(),
          described(moment).c_str(), static_cast<unsigned long>(daysFrom), 0UL);
  for (HistoryEntry& entry : values) entry.ddmm = dayKeyOf(entry.date);
  placeOnDays(averagesOf(values), start, daysFrom, series);
  return series;
}

}  // namespace veyla::Utils
