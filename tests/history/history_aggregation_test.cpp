#include "history/history_aggregation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "history/date_value_formatter.h"
#include "history/history_store.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double day = 86400;
// TestPlatform::start is 2023-11-14 22:13:20 UTC.
constexpr Date midnight{1'699'920'000};

class HistoryAggregationTest : public testing::Test {
 protected:
  void in(const std::string& locale, const std::string& zone) {
    platform_.text.setLocaleAndZone(locale, zone);
  }
  static Date now() { return services().clock.now(); }
  /// Unix times of points, and their values.
  static std::vector<double> valuesOf(const std::vector<ChartDataEntry>& points) {
    std::vector<double> values;
    for (const ChartDataEntry& point : points) values.push_back(point.y);
    return values;
  }
  static void save(double heartrate, double spo2, Date date) {
    Utils::saveHeartrate(heartrate, spo2, date, std::nullopt);
  }
  static ChartSeries week() {
    auto values = Utils::getLastWeekForLabel(-1);
    return Utils::makeChartDataSets2(values, 7);
  }
  static ChartSeries all() {
    auto values = Utils::getAllForLabel(-1);
    return Utils::makeChartDataSets2(values, -1);
  }

  TestPlatform platform_;
};

// Selection.

TEST_F(HistoryAggregationTest, AWeekIsTodayAndTheSixDaysBeforeInEveryZone) {
  for (const char* zone : {"UTC", "Europe/Berlin", "America/Los_Angeles", "Pacific/Kiritimati"}) {
    SCOPED_TRACE(zone);
    in("en_US", zone);
    Utils::clearValues();
    const Date today =
        *services().dates.parse(services().dates.formatted(now(), "yyyy-MM-dd"), "yyyy-MM-dd");
    save(1, 0, Date{today.secondsSince1970 - 7 * day + day - 60});  // seven days ago, 23:59
    save(2, 0, Date{today.secondsSince1970 - 6 * day + 60});        // six days ago, 00:01
    save(3, 0, Date{today.secondsSince1970 + day - 1});             // later today
    std::vector<double> kept;
    for (const HistoryEntry& entry : Utils::getLastWeekForLabel(-1)) kept.push_back(entry.hr);
    EXPECT_THAT(kept, ElementsAre(2, 3));
    EXPECT_THAT(Utils::getAllForLabel(-1), SizeIs(3));
  }
}

TEST_F(HistoryAggregationTest, ALabelKeepsTheEntriesThatCarryIt) {
  Labels before{};
  before[3] = true;
  Utils::saveHeartrate(1, 0, now(), before);
  save(2, 0, now());
  platform_.store.values["values"] = [&] {
    auto elements = *platform_.store.values["values"].array();
    elements.insert(elements.begin(), Value("no entry"));
    return elements;
  }();
  EXPECT_THAT(Utils::getLastMonthForLabel(3), SizeIs(1));
  EXPECT_THAT(Utils::getLastMonthForLabel(2), IsEmpty());
  EXPECT_THAT(Utils::getLast3MonthsForLabel(-1), SizeIs(2));
  EXPECT_THAT(Utils::getAllForLabel(-1), SizeIs(2)) << "or what is no entry counted";
  EXPECT_THAT(Utils::getAllForLabel(7), IsEmpty());
}

TEST_F(HistoryAggregationTest, DaysAgoCountsSecondsFromMidnightAsFarAs32BitsGo) {
  EXPECT_EQ(Utils::daysAgo(midnight), 0);
  EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 - 1}), 1);
  EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 + day}), 0);
  EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 + 2 * day}), -1);
  EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 - 30000 * day}), 24855);
  EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 + 30000 * day}), -24855);

  // In the first hour after a day of 23 hours, that day is not a whole day ago.
  in("de_DE", "Europe/Berlin");
  platform_.moveTo(Date{1'711'924'200});  // 2024-04-01 00:30
  EXPECT_EQ(Utils::daysAgo(Date{1'711'879'200}), 0);
  // Where clocks leave midnight out, the day begins with the change.
  in("pt_BR", "America/Sao_Paulo");
  EXPECT_EQ(services().dates.parse("2018-11-04", "yyyy-MM-dd"), Date{1'541'300'400});
}

// Means.

TEST_F(HistoryAggregationTest, WhatWasNotMeasuredDoesNotPullAMeanDown) {
  save(60, 0, Date{midnight.secondsSince1970 + 10});
  save(80, 96, Date{midnight.secondsSince1970 + 20});
  save(0, 0, Date{midnight.secondsSince1970 + 30});
  const ChartSeries series = week();
  EXPECT_THAT(series.hr, ElementsAre(ChartDataEntry{now().secondsSince1970, 70}));
  EXPECT_THAT(series.spo2, ElementsAre(ChartDataEntry{now().secondsSince1970, 96}));

  auto values = Utils::getAllForLabel(-1);
  Utils::makeChartDataSets2(values, -1);
  EXPECT_EQ(Utils::getAvgValueFromArray(values, "14/11"),
            (DailyAverage{70, 96, "14/11", Date{midnight.secondsSince1970 + 20}}));
  EXPECT_EQ(Utils::getAvgValueFromArray(values, "13/11").date, std::nullopt);
}

TEST_F(HistoryAggregationTest, OneDayOfTwoYearsIsOneDayThatOfTheLaterYear) {
  save(60, 0, Date{now().secondsSince1970 - 365 * day});
  save(70, 0, Date{now().secondsSince1970 - day});
  save(80, 0, now());
  const ChartSeries series = all();
  EXPECT_THAT(series.x, SizeIs(366));
  // The walk meets 14/11 on its first day, where the earlier record of 13/11 is still due.
  EXPECT_THAT(valuesOf(series.hr), ElementsAre(70, 70));
  EXPECT_EQ(series.hr.front().x, now().secondsSince1970 - day);
}

TEST_F(HistoryAggregationTest, AClockThatRunsPutsNoPointBeyondTheEnd) {
  save(60, 97, now());
  platform_.clock.tick = 0.001;
  const ChartSeries series = week();
  ASSERT_THAT(series.hr, SizeIs(1));
  EXPECT_EQ(series.minTimestamp, series.hr.front().x);
  EXPECT_EQ(series.maxTimestamp, series.hr.front().x);
}

// The walk.

TEST_F(HistoryAggregationTest, WithoutEntriesAPeriodHasItsDaysAndEverythingHasNone) {
  const ChartSeries empty = week();
  EXPECT_THAT(empty.x, ElementsAre("08/11", "09/11", "10/11", "11/11", "12/11", "13/11", "14/11"));
  EXPECT_EQ(empty.minTimestamp, now().secondsSince1970);
  EXPECT_EQ(empty.maxTimestamp, 0);
  EXPECT_EQ(all(), (ChartSeries{{}, {}, {}, now().secondsSince1970, 0}));
}

TEST_F(HistoryAggregationTest, EverythingWalksFromTheOldestEntrysOwnTime) {
  const double oldest = now().secondsSince1970 - 3 * day - 7200;
  save(60, 0, Date{oldest});
  save(0, 0, Date{oldest + day});
  save(0, 98, Date{now().secondsSince1970 - 60});
  platform_.log.lines.clear();
  const ChartSeries series = all();
  EXPECT_THAT(series.x, ElementsAre("11/11", "12/11", "13/11", "14/11"));
  EXPECT_THAT(series.hr, ElementsAre(ChartDataEntry{oldest, 60}));
  EXPECT_THAT(series.spo2, ElementsAre(ChartDataEntry{oldest + 3 * day, 98}));
  EXPECT_EQ(series.minTimestamp, oldest);
  EXPECT_EQ(series.maxTimestamp, oldest + 3 * day);
  EXPECT_THAT(
      platform_.log.lines,
      ElementsAre(
          "DICT={hr = 60, spo2 = 0, date = 2023-11-11 20:13:20 +0000, labels = (0, 0, 0, 0, 0, 0, "
          "0)}",
          "fromDate=2023-11-11 20:13:20 +0000, toDate=2023-11-14 22:13:20 +0000, "
          "daysFrom=3, daysTo=0"));

  save(70, 0, Date{now().secondsSince1970 + 3 * day});
  auto future = Utils::getAllForLabel(-1);
  future.erase(future.begin(), future.end() - 1);
  EXPECT_THAT(Utils::makeChartDataSets2(future, -1).x, IsEmpty()) << "it begins after today";
}

TEST_F(HistoryAggregationTest, ADayThatTheClocksSkipLetsNoLaterOneThrough) {
  in("de_DE", "Europe/Berlin");
  platform_.moveTo(Date{1'712'010'600});  // 2024-04-02 00:30, two days after the change
  for (int daysAgo = 6; daysAgo >= 0; --daysAgo) {
    save(100 - daysAgo, 0, Date{now().secondsSince1970 - daysAgo * day - 7200});
  }
  const ChartSeries series = week();
  EXPECT_THAT(series.x, ElementsAre("26/03", "27/03", "28/03", "29/03", "30/03", "01/04", "02/04"));
  EXPECT_THAT(valuesOf(series.hr), ElementsAre(94, 95, 96, 97, 98)) << "26/03 to 30/03";
}

TEST_F(HistoryAggregationTest, ADayThatTheClocksRepeatHasOnePoint) {
  in("de_DE", "Europe/Berlin");
  platform_.moveTo(Date{1'730'154'600});  // 2024-10-28 23:30, the day after the change
  for (int daysAgo = 2; daysAgo >= 0; --daysAgo) {
    save(100 - daysAgo, 0, Date{now().secondsSince1970 - daysAgo * day - 7200});
  }
  const ChartSeries series = week();
  EXPECT_THAT(series.x, ElementsAre("23/10", "24/10", "25/10", "26/10", "27/10", "27/10", "28/10"));
  EXPECT_THAT(valuesOf(series.hr), ElementsAre(98, 99, 100));
  EXPECT_EQ(series.hr[1].x, now().secondsSince1970 - 2 * day) << "the first of the two";
}

TEST_F(HistoryAggregationTest, DaysAreWrittenInTheDevicesLanguage) {
  const DateValueFormatter formatter;
  const auto written = [&](const char* locale, const char* zone) {
    in(locale, zone);
    return formatter.stringForValue(1'700'000'000, ChartAxis{}) + ", " + week().x.back();
  };
  EXPECT_EQ(written("en_US", "UTC"), "14 Nov, 14/11");
  EXPECT_EQ(written("de_DE", "Europe/Berlin"), "14 Nov., 14/11");
  EXPECT_EQ(written("ja_JP", "Asia/Tokyo"), "15 11月, 15/11");
  EXPECT_EQ(written("ar_EG", "America/New_York"), "١٤ نوفمبر, ١٤/١١");
}

// Against the procedure as it is told, step by step, with a scan of all entries for every day.

std::int32_t toldDaysAgo(Date date) {
  const auto& dates = services().dates;
  const Date start = *dates.parse(dates.formatted(date, "yyyy-MM-dd"), "yyyy-MM-dd");
  const auto seconds =
      static_cast<std::int32_t>(start.secondsSince1970 - services().clock.now().secondsSince1970);
  return -seconds / 86400;
}

std::vector<HistoryEntry> toldSelection(std::int32_t label, std::int32_t days) {
  std::vector<HistoryEntry> kept;
  for (const HistoryEntry& entry : Utils::getValues().value_or(std::vector<HistoryEntry>())) {
    const std::int32_t daysAgo = toldDaysAgo(entry.date);
    if (days >= 0 && daysAgo >= days) continue;
    if (label < 0 || entry.labels[static_cast<std::size_t>(label)]) kept.push_back(entry);
  }
  return kept;
}

ChartSeries toldSeries(const std::vector<HistoryEntry>& entries, std::int32_t daysAgo) {
  const auto ddmm = [](Date date) { return services().dates.formatted(date, "dd/MM"); };
  const double now = services().clock.now().secondsSince1970;
  ChartSeries series{{}, {}, {}, now, 0};
  if (daysAgo < 0 && entries.empty()) return series;
  const double start =
      daysAgo < 0 ? entries.front().date.secondsSince1970 : now + 86400 - daysAgo * 86400;
  const std::int32_t daysFrom = toldDaysAgo(Date{start});
  std::set<std::string> keys;
  for (const HistoryEntry& entry : entries) keys.insert(ddmm(entry.date));
  std::vector<DailyAverage> records;
  for (const std::string& key : keys) {
    DailyAverage record{0, 0, key, std::nullopt};
    int heartrates = 0;
    int spo2s = 0;
    for (const HistoryEntry& entry : entries) {
      if (entry.hr > 0 && ddmm(entry.date) == key) {
        record.hr += entry.hr;
        ++heartrates;
        record.date = entry.date;
      }
      if (entry.spo2 > 0 && ddmm(entry.date) == key) {
        record.spo2 += entry.spo2;
        ++spo2s;
        record.date = entry.date;
      }
    }
    record.hr = heartrates > 0 ? record.hr / heartrates : 0;
    record.spo2 = spo2s > 0 ? record.spo2 / spo2s : 0;
    if (record.date) records.push_back(record);
  }
  std::sort(records.begin(), records.end(),
            [](const auto& left, const auto& right) { return *left.date < *right.date; });
  std::size_t cursor = 0;
  for (int k = 0; k <= daysFrom; ++k) {
    const double t = start + 86400.0 * k;
    series.x.push_back(ddmm(Date{t}));
    if (cursor >= records.size() || records[cursor].dateString != series.x.back()) continue;
    const DailyAverage& record = records[cursor++];
    if (record.hr > 0) series.hr.push_back({t, record.hr});
    if (record.spo2 > 0) series.spo2.push_back({t, record.spo2});
    if (record.hr > 0 || record.spo2 > 0) {
      series.minTimestamp = std::min(series.minTimestamp, t);
      series.maxTimestamp = std::max(series.maxTimestamp, t);
    }
  }
  return series;
}

TEST_F(HistoryAggregationTest, OnePassGivesWhatTheProcedureGivesOnRandomHistories) {
  std::mt19937 random(1);
  const auto upTo = [&](double most) {
    return std::uniform_real_distribution<double>(0, most)(random);
  };
  // Ever later nows, of which some lie within an hour of a change of the clocks' midnights.
  const std::vector<double> nows{1'700'000'000, 1'710'050'400, 1'711'924'200, 1'712'010'600,
                                 1'729'990'799, 1'730'154'600, 1'730'700'000, 1'735'689'601};
  std::size_t points = 0;
  for (const double moment : nows) {
    platform_.moveTo(Date{moment});
    for (const auto& [locale, zone] :
         std::vector<std::pair<const char*, const char*>>{{"en_US", "UTC"},
                                                          {"de_DE", "Europe/Berlin"},
                                                          {"ar_EG", "America/New_York"},
                                                          {"ja_JP", "Pacific/Kiritimati"},
                                                          {"fa_IR", "America/St_Johns"}}) {
      SCOPED_TRACE(std::string(zone) + " at " + std::to_string(moment));
      in(locale, zone);
      std::vector<HistoryEntry> entries(40);
      for (HistoryEntry& entry : entries) {
        entry.date = Date{moment + day - upTo(upTo(1) < 0.5 ? 12 * day : 800 * day)};
        entry.hr = upTo(1) < 0.3 ? 0 : 60 + upTo(30);
        entry.spo2 = upTo(1) < 0.3 ? 0 : 90 + upTo(10);
        for (bool& label : entry.labels) label = upTo(1) < 0.5;
      }
      std::sort(entries.begin(), entries.end(),
                [](const auto& left, const auto& right) { return left.date < right.date; });
      // A migration can leave entries out of order.
      if (upTo(1) < 0.3) std::swap(entries.front(), entries.back());
      Utils::setValues(entries);
      for (const std::int32_t days : {7, 30, 90, -1}) {
        const auto label = static_cast<std::int32_t>(upTo(8)) - 1;
        auto values = Utils::getLastValuesForLabel(label, days);
        ASSERT_EQ(values, toldSelection(label, days));
        const ChartSeries told = toldSeries(values, days);
        ASSERT_EQ(Utils::makeChartDataSets2(values, days), told);
        points += told.hr.size() + told.spo2.size();
      }
    }
  }
  EXPECT_GT(points, 1000U) << "the histories were to have something to show";
}

}  // namespace
}  // namespace veyla
