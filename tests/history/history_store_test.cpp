#include "history/history_store.h"

#include <gmock/gmock.h>

#include "tests/support/tables.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using namespace testing;

constexpr Labels noLabels{};
constexpr Labels restingAndAsleep{true, false, false, false, false, false, true};

class HistoryStoreTest : public testing::Test {
 protected:
  TestPlatform platform_;
};

// The history.

TEST_F(HistoryStoreTest, EntriesAreAppendedUnroundedInTheStoredForm) {
  EXPECT_FALSE(Utils::getValues());
  const auto first = Utils::saveHeartrate(71.25, 0, Date{10}, std::nullopt);
  const auto second = Utils::saveHeartrate(0, 0, Date{5}, restingAndAsleep);
  EXPECT_EQ(first, (HistoryEntry{71.25, 0, Date{10}, noLabels, {}}));
  EXPECT_EQ(platform_.store.values.at("values").array()->front(),
            Value(Value::Dictionary{
                {"hr", 71.25},
                {"spo2", 0.0},
                {"date", Date{10}},
                {"labels", Value::Array{false, false, false, false, false, false, false}}}));
  EXPECT_THAT(*Utils::getValues(), ElementsAre(first, second));
  platform_.journal.clear();
  Utils::setValues({second});
  EXPECT_THAT(*Utils::getValues(), ElementsAre(second));
  Utils::clearValues();
  EXPECT_FALSE(Utils::getValues());
  EXPECT_EQ(joined(platform_.journal.of("store")), "set values | flush | remove values | flush");
}

TEST_F(HistoryStoreTest, AStoredElementThatIsNoEntryIsKeptAsItIs) {
  const Value strange = Value::Dictionary{{"hr", "seventy"}, {"note", 5}};
  platform_.store.values["values"] = Value::Array{strange};
  const auto entries = *Utils::getValues();
  EXPECT_EQ(entries.front().damaged, strange);
  EXPECT_TRUE(Utils::setValues(entries));
  Utils::saveHeartrate(70, 97, Date{1}, std::nullopt);
  EXPECT_EQ(platform_.store.values["values"].array()->front(), strange);
  Utils::clearValues();
  constexpr double lastSecond = 253402300799;
  const std::tuple<double, double, double, bool> borders[] = {{450, 100, lastSecond, false},
                                                              {451, 97, 0, true},
                                                              {-1, 97, 0, true},
                                                              {70, 101, 0, true},
                                                              {1e308, 97, 0, true},
                                                              {70, 97, lastSecond + 1, true}};
  for (const auto& [hr, spo2, date, isDamaged] : borders) {
    Utils::saveHeartrate(hr, spo2, Date{date}, std::nullopt);
    EXPECT_EQ(Utils::getValues()->back().damaged.has_value(), isDamaged) << hr << ' ' << spo2;
  }
  for (const char* key : {"values", "history"}) platform_.store.values[key] = "no array";
  EXPECT_FALSE(Utils::getValues() || Utils::getValuesOLD());
  Utils::saveHeartrate(70, 97, Date{1}, std::nullopt);
  EXPECT_THAT(*Utils::getValues(), SizeIs(1));
}

// The old layout and its migration.

TEST_F(HistoryStoreTest, OldEntriesWereTextsNewestFirstAndMigrateOldestFirst) {
  Utils::saveHeartrate(60, 99, Date{1}, std::nullopt);
  platform_.journal.clear();
  Utils::saveHeartrateOLD(0.99F, 0.99F, Date{10}, std::nullopt);
  const auto newest = Utils::saveHeartrateOLD(71.6F, 97.4F, Date{20}, restingAndAsleep);
  EXPECT_EQ(newest, (OldHistoryEntry{"at 20", "72 bpm", "97%", restingAndAsleep}));
  EXPECT_THAT(*Utils::getValuesOLD(),
              ElementsAre(newest, OldHistoryEntry{"at 10", "--", "--", noLabels}));
  EXPECT_EQ(platform_.store.values["history"].array()->front(),
            Value(Value::Array{"at 20", "72 bpm", "97%",
                               Value::Array{true, false, false, false, false, false, true}}));
  Utils::convertOldValuesToNew();
  Utils::clearValuesOLD();
  EXPECT_THAT(*Utils::getValues(),
              ElementsAre(HistoryEntry{60, 99, Date{1}, noLabels, {}},
                          HistoryEntry{0, 0, Date{10}, noLabels, {}},
                          HistoryEntry{72, 97, Date{20}, restingAndAsleep, {}}));
  EXPECT_FALSE(Utils::getValuesOLD());
  EXPECT_EQ(joined(platform_.journal.of("store")),
            "set history | flush | set history | flush | set values | flush | set values | flush "
            "| remove history | flush");
}

TEST_F(HistoryStoreTest, TheMigrationKeepsWhatIsOlderOrHarderToRead) {
  platform_.store.values["history"] = Value::Array{
      Value::Array{"at 30", " 72.5 bpm", "1e2%"},          // Written before there were labels.
      Value::Array{"5. Mai 2015", "64 bpm", "98%"},        // In another locale.
      "no entry",                                          // Left out.
      Value::Array{"at 10", "infinity", "0x1f", "none"}};  // No decimal numbers, no labels.
  Utils::convertOldValuesToNew();
  EXPECT_THAT(*Utils::getValues(),
              ElementsAre(HistoryEntry{0, 0, Date{10}, noLabels, {}},
                          HistoryEntry{72.5, 100, Date{30}, noLabels, {}},
                          HistoryEntry{64, 98, TestPlatform::start, noLabels, {}}));
  EXPECT_THAT(platform_.log.lines,
              ElementsAre(StartsWith("an old history entry holds no measurement"),
                          StartsWith("the date \"5. Mai 2015\"")));
}

// Random entries.

TEST_F(HistoryStoreTest, RandomEntriesAreDrawnInOneOrderFromTheirRanges) {
  const auto unit = [] { return std::rand() / 2147483647.0; };
  for (unsigned seed = 1; seed <= 80; ++seed) {
    const bool hasHeartrate = seed % 4 < 2;
    const bool hasSpo2 = seed % 2 == 0;
    std::srand(seed);
    const double heartrate = hasHeartrate ? 60 + 30 * unit() : 0;
    const double spo2 = hasSpo2 ? 90 + 10 * unit() : 0;
    Labels labels{};
    Labels oldLabels{};
    for (std::size_t i = 0; i < labels.size(); ++i) {
      const double drawn = unit();
      labels[i] = drawn <= 0.5;
      oldLabels[i] = drawn < 0.1;
    }
    std::srand(seed);
    const auto entry = Utils::makeAndSaveRandomValue(3, !hasHeartrate, !hasSpo2);
    const Date date{TestPlatform::start.secondsSince1970 - 259200};
    EXPECT_EQ(entry, (HistoryEntry{heartrate, spo2, date, labels, {}}));
    std::srand(seed);
    EXPECT_EQ(
        Utils::makeAndSaveRandomValueOLD(1, !hasHeartrate, !hasSpo2),
        (OldHistoryEntry{"at 1699913600", hasHeartrate ? formatText("%.0f bpm", heartrate) : "--",
                         hasSpo2 ? formatText("%.0f%%", spo2) : "--", oldLabels}));
  }
  EXPECT_THAT(*Utils::getValues(), SizeIs(80));
}

// User state.

TEST_F(HistoryStoreTest, StateIsFlushedButForTheUserIdentifierAndFlagsCountByBeingThere) {
  const auto held = [] {
    return std::array{Utils::hasShownIntro(), Utils::hasFirstTimeNotePopup(),
                      Utils::hasEmail(),      Utils::hasLastHeartrate(),
                      Utils::hasLastSpo2(),   Utils::hasUserID()};
  };
  EXPECT_THAT(held(), Each(false));
  EXPECT_EQ(Utils::getLastHeartrate(), 0);
  EXPECT_EQ(Utils::getEmail(), std::nullopt);
  Utils::setShownIntro();
  Utils::setFirstTimeNotePopup();
  Utils::setLastHeartrate(70.3125F);
  Utils::setLastSpo2(97.1F);
  Utils::setEmail("a@b.de");
  Utils::setUserID(Utils::createUserID());
  EXPECT_EQ(Utils::getLastHeartrate(), 70.3125F);
  EXPECT_EQ(Utils::getLastSpo2(), 97.1F);
  EXPECT_EQ(Utils::getEmail(), "a@b.de");
  EXPECT_EQ(Utils::getUserID(), platform_.text->randomUuid());
  for (const char* flag : {"finishedIntro", "pleaseNoteShown"}) {
    platform_.store.values[flag] = false;
  }
  EXPECT_THAT(held(), Each(true)) << "whatever they say";
  Utils::removeEmail();
  EXPECT_FALSE(Utils::hasEmail());
  EXPECT_EQ(joined(platform_.journal.of("store")),
            "set finishedIntro | flush | set pleaseNoteShown | flush | set last_heartrate | flush "
            "| set last_spo2 | flush | set email | flush | set UUID | remove email | flush");
}

}  // namespace
}  // namespace veyla
