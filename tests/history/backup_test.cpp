#include "history/backup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "history/history_store.h"
#include "tests/support/test_platform.h"

namespace veyla {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr Labels resting{true};
const HistoryEntry first{70.3125, 97.25, Date{1000.125}, resting, {}, {{"note", "mine"}}};
const HistoryEntry second{0, 95, Date{2000}, {}, {}};
const HistoryEntry third{61.5, 0, Date{3000}, {}, {}};

/// What a machine with these entries, an address and a counter backs up.
std::string backedUp(std::vector<HistoryEntry> entries) {
  const TestPlatform platform;
  entries.push_back(historyEntryOf("damaged"));
  Utils::setValues(entries);
  Utils::setEmail("a@b.org");
  UsageUtils::setTotal_finished(2);
  UsageUtils::setTotal_lowsig_percent(3);
  const Backup backup = currentBackup();
  EXPECT_EQ(leftOut(backup), "1 damaged entry is left out of the backup");
  return textOf(backup).value_or("");
}

std::string restored(const std::string& text) {
  std::string fault;
  const auto backup = readBackup(text, fault);
  if (!backup) return fault;
  const auto count = restore(*backup);
  return count ? told(*count) : "refused";
}

TEST(BackupTest, AnEmptyMachineGetsAllOfIt) {
  const std::string text = backedUp({first, second, third});
  EXPECT_THAT(text, HasSubstr("\"when\": \"1970-01-01 00:33:20 +0000\""));
  const TestPlatform platform;
  EXPECT_EQ(restored(text), "Restored 3 measurements; 0 were there already.");
  EXPECT_THAT(*Utils::getValues(), ElementsAre(first, second, third));
  EXPECT_EQ(Utils::getEmail(), "a@b.org");
  EXPECT_EQ(UsageUtils::total_finished(), 2);
  EXPECT_EQ(UsageUtils::total_lowsig_percent(), 3);
}

TEST(BackupTest, WhatIsThereStaysAndIsNotDoubled) {
  const std::string text = backedUp({third, first, second, second});
  TestPlatform platform;
  HistoryEntry labelled = second;
  labelled.labels = resting;
  const HistoryEntry damaged = historyEntryOf(5), own{80, 98, Date{2500}, {}, {}};
  Utils::setValues({damaged, labelled, own});
  Utils::setEmail("own@b.org");
  UsageUtils::setTotal_finished(7);
  EXPECT_EQ(restored(text), "Restored 3 measurements; 1 was there already.");
  EXPECT_EQ(restored(text), "Restored 0 measurements; 4 were there already.");
  EXPECT_THAT(*Utils::getValues(), ElementsAre(damaged, first, labelled, second, own, third));
  EXPECT_EQ(Utils::getEmail(), "own@b.org");
  EXPECT_EQ(UsageUtils::total_finished(), 7);
  EXPECT_EQ(platform.store.exclusivePieces, 5) << "more than one piece a restoring";

  Utils::clearValues();
  platform.store.refuses = true;
  EXPECT_EQ(restored(text), "refused");
}

TEST(BackupTest, WhatIsNoBackupOrNotWholeChangesNothing) {
  const std::string whole = backedUp({first, second});
  const auto with = [&](const std::string& old, const std::string& text) {
    std::string changed = whole;
    return changed.replace(changed.find(old), old.size(), text);
  };
  const TestPlatform platform;
  for (const auto& [text, fault] :
       {std::pair{std::string(), "no backup of Veyla's"},
        {whole.substr(0, whole.size() / 2), "no backup of Veyla's"},
        {with("\"backup\"", "7"), "no backup of Veyla's"},
        {with("\"version\": 1", "\"version\": 2"),
         "made by a newer version of Veyla; update this one"},
        {with("\"entries\": [", "\"more\": ["), "its \"entries\" are no list"},
        {with("\"Resting\"", "\"Restful\""), "entry 1: its \"labels\""},
        {with("2000.0", "1e300"), "entry 2: its \"date\" is no date"},
        {with("70.3125", "null"), "entry 1: its \"hr\" is no number"},
        {with("\"counters\": {", "\"counters\": 5, \"more\": {"),
         "its \"counters\" are no numbers"},
        {with("\"a@b.org\"", "[]"), "its \"email\" is no text"},
        {with("95.0", "950"), "entry 2: its \"spo2\" is nothing that is measured"}}) {
    EXPECT_THAT(restored(text), StartsWith(fault));
  }
  EXPECT_FALSE(Utils::getValues());
}

}  // namespace
}  // namespace veyla
