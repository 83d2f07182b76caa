#include "history/history_store.h"

#include <gmock/gmock.h>

#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;
using testing::StartsWith;

constexpr Labels noLabels{};
constexpr Labels restingAndAsleep{true, false, false, false, false, false, true};

class HistoryStoreTest : public testing::Test {
 protected:
  TestPlatform platform_;
};

// The history.

TEST_F(HistoryStoreTest, EntriesAreAppendedUnroundedInTheStoredForm) {
  EXPECT_FALSE(Utils::getValues());
  Utils::saveHeartrate(71.25, 0, Date{10}, std::nullopt);
  const auto second = Utils::saveHeartrate(0, 0, Date{5}, restingAndAsleep);

  EXPECT_EQ(second, (HistoryEntry{0, 0, Date{5}, restingAndAsleep, std::nullopt}));
  const Value firstStored =
      Value::Dictionary{{"hr", 71.25},
                        {"spo2", 0.0},
                        {"date", Date{10}},
                        {"labels", Value::Array{false, false, false, false, false, false, false}}};
  const auto* stored = platform_.store.values.at("values").array();
  ASSERT_THAT(*stored, SizeIs(2));
  EXPECT_EQ(stored->front(), firstStored);
  EXPECT_THAT(*Utils::getValues(),
              ElementsAre(HistoryEntry{71.25, 0, Date{10}, noLabels, {}}, second));
}

TEST_F(HistoryStoreTest, TheHistoryIsReplacedAndRemovedWholeAndFlushed) {
  Utils::saveHeartrate(70, 97, Date{1}, std::nullopt);
  auto entries = *Utils::getValues();
  entries.front().labels = restingAndAsleep;
  platform_.journal.clear();
  Utils::setValues(entries);
  EXPECT_EQ(Utils::getValues(), entries);
  Utils::clearValues();
  EXPECT_FALSE(Utils::getValues());
  EXPECT_THAT(platform_.journal.of("store"),
              ElementsAre("set values", "flush", "remove values", "flush"));
}

TEST_F(HistoryStoreTest, AStoredElementThatIsNoEntryIsKeptAsItIs) {
  const Value strange = Value::Dictionary{{"hr", "seventy"}, {"note", 5}};
  platform_.store.values["values"] = Value::Array{strange};
  const auto entries = *Utils::getValues();
  EXPECT_EQ(entries.front().damaged, strange);
  Utils::setValues(entries);
  Utils::saveHeartrate(70, 97, Date{1}, std::nullopt);
  EXPECT_EQ(platform_.store.values["values"].array()->front(), strange);
  platform_.store.values["values"] = "no array";
  EXPECT_FALSE(Utils::getValues());
}

// The old layout and its migration.

TEST_F(HistoryStoreTest, OldEntriesWereTextsNewestFirst) {
  Utils::saveHeartrateOLD(0.99F, 0.99F, Date{10}, std::nullopt);
  const auto newest = Utils::saveHeartrateOLD(71.6F, 97.4F, Date{20}, restingAndAsleep);
  EXPECT_EQ(newest, (OldHistoryEntry{"at 20", "72 bpm", "97%", restingAndAsleep}));
  EXPECT_THAT(*Utils::getValuesOLD(),
              ElementsAre(newest, OldHistoryEntry{"at 10", "--", "--", noLabels}));
  EXPECT_EQ(platform_.store.values["history"].array()->front(),
            Value(Value::Array{"at 20", "72 bpm", "97%",
                               Value::Array{true, false, false, false, false, false, true}}));
  EXPECT_THAT(platform_.log.lines, ElementsAre("no data in history...."));
  EXPECT_THAT(platform_.journal.of("store"),
              ElementsAre("set history", "flush", "set history", "flush"));
}

TEST_F(HistoryStoreTest, TheMigrationAppendsOldestFirstAfterWhatIsThere) {
  Utils::saveHeartrate(60, 99, Date{1}, std::nullopt);
  Utils::saveHeartrateOLD(64, 98, Date{10}, restingAndAsleep);
  Utils::saveHeartrateOLD(0, 0, Date{20}, std::nullopt);
  Utils::saveHeartrateOLD(72, 0, Date{30}, std::nullopt);
  platform_.journal.clear();
  Utils::convertOldValuesToNew();
  Utils::clearValuesOLD();

  EXPECT_THAT(*Utils::getValues(), ElementsAre(HistoryEntry{60, 99, Date{1}, noLabels, {}},
                                               HistoryEntry{64, 98, Date{10}, restingAndAsleep, {}},
                                               HistoryEntry{0, 0, Date{20}, noLabels, {}},
                                               HistoryEntry{72, 0, Date{30}, noLabels, {}}));
  EXPECT_FALSE(Utils::getValuesOLD());
  EXPECT_THAT(platform_.journal.of("store"),
              ElementsAre("set values", "flush", "set values", "flush", "set values", "flush",
                          "remove history", "flush"));
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

TEST_F(HistoryStoreTest, RandomEntriesLieInTheirRangesAndOnTheirDay) {
  std::vector<double> heartrates;
  std::vector<double> spo2s;
  int flags = 0;
  int oldFlags = 0;
  const auto addFlags = [](int& to, const Labels& labels) {
    to += static_cast<int>(std::count(labels.begin(), labels.end(), true));
  };
  for (int i = 0; i < 300; ++i) {
    const auto entry = Utils::makeAndSaveRandomValue(3, false, false);
    ASSERT_EQ(entry.date.secondsSince1970, TestPlatform::start.secondsSince1970 - 259200);
    heartrates.push_back(entry.hr);
    spo2s.push_back(entry.spo2);
    addFlags(flags, entry.labels);
    const auto old = Utils::makeAndSaveRandomValueOLD(1, i % 2 == 0, i % 2 != 0);
    ASSERT_EQ(old.date, "at 1699913600");
    addFlags(oldFlags, *old.labels);
    const std::string& measured = i % 2 == 0 ? old.spo2 : old.heartrate;
    ASSERT_EQ(i % 2 == 0 ? old.heartrate : old.spo2, "--");
    (i % 2 == 0 ? spo2s : heartrates).push_back(std::stod(measured));
  }
  EXPECT_THAT(heartrates, Each(AllOf(Ge(60), Le(90))));
  EXPECT_THAT(heartrates, AllOf(Contains(Le(63)), Contains(Ge(87))));
  EXPECT_THAT(spo2s, Each(AllOf(Ge(90), Le(100))));
  EXPECT_THAT(spo2s, AllOf(Contains(Le(91)), Contains(Ge(99))));
  EXPECT_NEAR(flags, 1050, 150) << "half of 2100";
  EXPECT_NEAR(oldFlags, 210, 90) << "a tenth of 2100";
  EXPECT_THAT(*Utils::getValues(), SizeIs(300));

  // 30000 days of seconds exceed 32 bits: −2592000000 becomes 1702967296.
  const auto empty = Utils::makeAndSaveRandomValue(30000, true, true);
  EXPECT_EQ(empty.hr, 0);
  EXPECT_EQ(empty.spo2, 0);
  EXPECT_EQ(empty.date.secondsSince1970, TestPlatform::start.secondsSince1970 + 1702967296.0);
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
  EXPECT_THAT(held(), Each(true));
  EXPECT_EQ(Utils::getLastHeartrate(), 70.3125F);
  EXPECT_EQ(Utils::getLastSpo2(), 97.1F);
  EXPECT_EQ(Utils::getEmail(), "a@b.de");
  EXPECT_EQ(Utils::getUserID(), platform_.text.randomUuid());
  using testing::Pair;
  EXPECT_THAT(
      platform_.store.values,
      testing::UnorderedElementsAre(Pair("finishedIntro", true), Pair("pleaseNoteShown", true),
                                    Pair("last_heartrate", 70.3125F), Pair("last_spo2", 97.1F),
                                    Pair("email", "a@b.de"), Pair("UUID", testing::_)));
  for (const char* flag : {"finishedIntro", "pleaseNoteShown"}) {
    platform_.store.values[flag] = false;
  }
  EXPECT_THAT(held(), Each(true)) << "whatever they say";
  Utils::removeEmail();
  EXPECT_FALSE(Utils::hasEmail());
  EXPECT_THAT(platform_.journal.of("store"),
              ElementsAre("set finishedIntro", "flush", "set pleaseNoteShown", "flush",
                          "set last_heartrate", "flush", "set last_spo2", "flush", "set email",
                          "flush", "set UUID", "remove email", "flush"));
}

}  // namespace
}  // namespace veyla
