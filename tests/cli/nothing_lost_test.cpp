#include "tests/cli/program.h"

namespace veyla {
namespace {

class NothingLostTest : public Program {
 protected:
  /// How many transactions have changed the store: a number in its head.
  unsigned transactions() const {
    const std::string store = contentsOf(file("home/veyla/veyla.db"));
    unsigned count = 0;
    for (std::size_t i = 24; i < 28; ++i) count = count << 8 | static_cast<unsigned char>(store[i]);
    return count;
  }
};

TEST_F(NothingLostTest, AMeasurementIsKeptWholeOrNotAtAll) {
  for (const char* value : {"heartrate", "spo2"}) done(std::string("health allow ") + value);
  const auto transactionsOf = [&](const std::string& command) {
    const unsigned before = transactions();
    done(command);
    return transactions() - before;
  };
  EXPECT_EQ(transactionsOf("demo-history --days 3 --data home/veyla"), 1U);
  done("measure");
  done("synth finger.csv --bpm 80 --spo2 95");
  EXPECT_EQ(transactionsOf("measure finger.csv"), 3U) << "itself, and what the rating counts";
  done("history backup -o backup.json");
  for (const char* change :
       {"history label 1 Resting", "history delete 1 2", "history restore backup.json",
        "health deny spo2", "health allow spo2"}) {
    EXPECT_EQ(transactionsOf(change), 1U) << change;
  }

  const std::string records = done("health export -o -");
  const Json entries = json("history");
  const Result full = run("measure", withSmallFiles);
  EXPECT_EQ(full.status, 4);
  EXPECT_THAT(full.out, HasSubstr("\nNot saved.\n"));
  EXPECT_EQ(linesOf(full.error).size(), 1U) << full.error;
  EXPECT_EQ(done("health export -o -"), records);
  EXPECT_EQ(json("history"), entries);
}

TEST_F(NothingLostTest, DamageBesideTheHistoryCostsNoEntryAndDamageOfItIsNotWrittenOver) {
  done("health allow heartrate");
  done("measure");
  const auto damage = [&](const std::string& row) {
    const std::string command =
        "sqlite3 " + file("home/veyla/veyla.db") + " \"UPDATE entries SET " + row + "\"";
    ASSERT_EQ(std::system(command.c_str()), 0);
  };
  damage("value = 'zz' WHERE key = 'rating_significant_events'");
  const Result counted = run("measure");
  EXPECT_EQ(counted.status, 4);
  EXPECT_THAT(counted.error, HasSubstr("veyla: the measurement is saved, but "));
  EXPECT_EQ(json("history").size(), 2U);
  damage("type = 'integer', value = '5' WHERE key = 'values'; DELETE FROM parts");
  const Result refused = run("measure");
  EXPECT_THAT(refused.out, HasSubstr("\nNot saved.\n"));
  EXPECT_THAT(refused.error, HasSubstr("the value of \"values\" cannot be understood"));
  expectRefused(run("history"), 3, "\"values\", is no list");
  EXPECT_EQ(linesOf(done("health export -o -")).size(), 2U) << "those of what was saved";
}

TEST_F(NothingLostTest, WhatIsDoneIsSaidSoWhenOnlyThePrintingFailed) {
  done("measure");
  for (const char* command : {"history label 1 Resting", "history delete 1", "health deny spo2"}) {
    const Result result = run(command, onFullDisk);
    EXPECT_EQ(result.status, 4) << command;
    EXPECT_THAT(result.error, HasSubstr("veyla: done, but standard output: the disk is full"));
  }
  EXPECT_EQ(json("history"), Json::array());
  EXPECT_THAT(done("health"), HasSubstr("denied"));
}

TEST_F(NothingLostTest, AStoreThatWasMadeAndNeverWrittenIsAnEmptyHistory) {
  std::filesystem::create_directories(file("home/veyla"));
  write("home/veyla/veyla.db", "");
  EXPECT_EQ(json("history"), Json::array());
  EXPECT_EQ(contentsOf(file("home/veyla/veyla.db")), "");
  write("home/veyla/Observations.ndjson", "{}\n");
  for (const char* command : {"history", "measure"}) {
    EXPECT_THAT(run(command).error, HasSubstr("veyla.db: empty, though there are health records"));
  }
  EXPECT_EQ(json("history").size(), 1U);
}

}  // namespace
}  // namespace veyla
