#include "history/history_aggregation.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "history/history_store.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

constexpr double day = 86400;
// TestPlatform::start is 2023-11-14 22:13:20 UTC.
constexpr Date midnight{1'699'920'000};

class HistoryAggregationTest : public testing::Test {
 protected:
  void in(const std::string& locale, const std::string& zone) {
    platform_.text.emplace(locale, zone);
  }
  static Date now() { return services().clock.now(); }
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

TEST_F(HistoryAggregationTest, APeriodIsTodayAndTheDaysBeforeInEveryZone) {
  for (const char* zone : {"UTC", "Asia/Kolkata", "America/Los_Angeles", "Pacific/Kiritimati"}) {
    in("en_US", zone);
    const Date today =
        *services().dates.parse(services().dates.formatted(now(), "yyyy-MM-dd"), "yyyy-MM-dd");
    for (const auto& [days, ofPeriod] : {std::pair{7, &Utils::getLastWeekForLabel},
                                         {30, &Utils::getLastMonthForLabel},
                                         {90, &Utils::getLast3MonthsForLabel}}) {
      SCOPED_TRACE(std::string(zone) + ", days: " + std::to_string(days));
      Utils::clearValues();
      const double first = today.secondsSince1970 - (days - 1) * day;
      save(1, 0, Date{first - 3 * day});                   // long before
      save(2, 0, Date{first - 7260});                      // the day before, in the evening
      save(3, 0, Date{first + 7260});                      // the first day, early
      save(4, 0, Date{today.secondsSince1970 + day - 1});  // later today
      std::vector<double> kept;
      for (const HistoryEntry& entry : ofPeriod(-1)) kept.push_back(entry.hr);
      EXPECT_THAT(kept, ElementsAre(3, 4));
      EXPECT_THAT(Utils::getAllForLabel(-1), SizeIs(4));
    }
  }
}

TEST_F(HistoryAggregationTest, ALabelKeepsTheEntriesThatCarryIt) {
  Labels before{};
  before[3] = true;
  Utils::saveHeartrate(1, 0, now(), before);
  save(2, 0, now());
  auto stored = *platform_.store.values["values"].array();
  stored.insert(stored.begin(), Value("no entry"));
  platform_.store.values["values"] = stored;
  for (const auto& [label, count] : {std::pair{3, 1U}, {2, 0U}, {0, 0U}, {7, 0U}, {-1, 2U}}) {
    EXPECT_THAT(Utils::getAllForLabel(label), SizeIs(count)) << label;
    EXPECT_THAT(Utils::getLastMonthForLabel(label), SizeIs(count)) << label;
  }
}

TEST_F(HistoryAggregationTest, DaysAgoCountsSecondsFromMidnightAsFarAs32BitsGo) {
  for (const auto& [seconds, daysAgo] : {std::pair{0.0, 0},
                                         {-1.0, 1},
                                         {day, 0},
                                         {2 * day, -1},
                                         {-30000 * day, 24855},
                                         {30000 * day, -24855}}) {
    EXPECT_EQ(Utils::daysAgo(Date{midnight.secondsSince1970 + seconds}), daysAgo) << seconds;
  }
  // In the first hour after a day of 23 hours, that day is not a whole day ago.
  in("de_DE", "Europe/Berlin");
  platform_.moveTo(Date{1'711'924'200});  // 2024-04-01 00:30
  EXPECT_EQ(Utils::daysAgo(Date{1'711'879'200}), 0);
  // Where clocks leave midnight out, the day begins with the change.
  in("pt_BR", "America/Sao_Paulo");
  EXPECT_EQ(services().dates.parse("2018-11-04", "yyyy-MM-dd"), Date{1'541'300'400});
}

// Means.

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

// The walk.

TEST_F(HistoryAggregationTest, WithoutEntriesAPeriodHasItsDaysAndEverythingHasNone) {
  const ChartSeries empty = week();
  EXPECT_THAT(empty.x, ElementsAre("08/11", "09/11", "10/11", "11/11", "12/11", "13/11", "14/11"));
  EXPECT_EQ(empty.minTimestamp, now().secondsSince1970);
  EXPECT_EQ(empty.maxTimestamp, 0);
  EXPECT_EQ(all(), (ChartSeries{{}, {}, {}, now().secondsSince1970, 0}));
}

TEST_F(HistoryAggregationTest,
       EverythingWalksFromTheOldestEntryAndWhatWasNotMeasuredPullsNoMeanDown) {
  const double oldest = now().secondsSince1970 - 3 * day - 7200;
  save(60, 0, Date{oldest});
  save(80, 96, Date{oldest + 60});
  save(0, 98, Date{oldest + 2 * day});
  save(0, 0, Date{now().secondsSince1970 - 60});
  platform_.log.lines.clear();
  const ChartSeries series = all();
  EXPECT_THAT(series.x, ElementsAre("11/11", "12/11", "13/11", "14/11"));
  EXPECT_THAT(series.hr, ElementsAre(ChartDataEntry{oldest, 70}));
  EXPECT_THAT(series.spo2,
              ElementsAre(ChartDataEntry{oldest, 96}, ChartDataEntry{oldest + 2 * day, 98}));
  EXPECT_EQ(series.minTimestamp, oldest);
  EXPECT_EQ(series.maxTimestamp, oldest + 2 * day);
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

TEST_F(HistoryAggregationTest,
       ADayThatTheClocksSkipLetsNoLaterOneThroughAndARepeatedOneHasOnePoint) {
  in("de_DE", "Europe/Berlin");
  const auto weekOfDays = [&](double moment) {
    platform_.moveTo(Date{moment});
    Utils::clearValues();
    for (int daysAgo = 6; daysAgo >= 0; --daysAgo) {
      save(100 - daysAgo, 0, Date{now().secondsSince1970 - daysAgo * day - 7200});
    }
    return week();
  };
  const ChartSeries skipped = weekOfDays(1'712'010'600);  // 2024-04-02 00:30, two days after
  EXPECT_THAT(skipped.x,
              ElementsAre("26/03", "27/03", "28/03", "29/03", "30/03", "01/04", "02/04"));
  EXPECT_THAT(valuesOf(skipped.hr), ElementsAre(94, 95, 96, 97, 98)) << "26/03 to 30/03";
  const ChartSeries repeated = weekOfDays(1'730'154'600);  // 2024-10-28 23:30, the day after
  EXPECT_THAT(repeated.x,
              ElementsAre("23/10", "24/10", "25/10", "26/10", "27/10", "27/10", "28/10"));
  EXPECT_THAT(valuesOf(repeated.hr), ElementsAre(95, 96, 97, 98, 99, 100));
  EXPECT_EQ(repeated.hr[4].x, now().secondsSince1970 - 2 * day) << "the first of the two";
}

}  // namespace
}  // namespace veyla
