#include "platform/linux/fhir_health_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <regex>

#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/uuid.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr auto heartRate = HealthSampleType::heartRate;
constexpr auto oxygenSaturation = HealthSampleType::oxygenSaturation;

class FhirHealthStoreTest : public testing::Test {
 protected:
  FhirHealthStoreTest() {
    setenv("TZ", "America/St_Johns", 1);
    tzset();
  }

  std::string file() const { return scratch_.file(std::string(FhirHealthStore::fileName)); }
  std::string contents() const { return contentsOf(file()); }
  FhirHealthStore open() { return FhirHealthStore(scratch_.path(), permissions_, uuids_, {}); }
  FhirHealthStore openAllowed() {
    auto store = open();
    store.allow(heartRate, true);
    store.allow(oxygenSaturation, true);
    return store;
  }
  static HealthSample pulse(double bpm) {
    return {heartRate, bpm, "count/min", Date{1709640427.25}, Date{1709640427.26}};
  }
  static bool save(FhirHealthStore& store, const HealthSample& sample) {
    std::optional<bool> saved;
    store.save(sample, [&](bool success) { saved = success; });
    EXPECT_TRUE(saved) << "the completion was not called";
    return saved.value_or(false);
  }
  /// A dot for each whole line; anything else as it is.
  std::string records() const {
    static const std::regex line(R"(\{"resourceType":"Observation".*"Veyla"\}\}\n)");
    return std::regex_replace(contents(), line, ".");
  }

  ScratchFolder scratch_;
  MemoryKeyValueStore permissions_;
  LibUuid uuids_;
};

TEST_F(FhirHealthStoreTest, ASampleIsAVitalSignInTheUnitsOfTheRecord) {
  auto store = openAllowed();
  EXPECT_TRUE(save(store, pulse(73)));
  EXPECT_THAT(contents(),
              ContainsRegex(
                  R"("id":"[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}",.*)"
                  R"("status":"final",.*/observation-category","code":"vital-signs",.*)"
                  R"("http://loinc.org","code":"8867-4",.*)"
                  R"("effectiveDateTime":"2024-03-05T08:37:07.250-03:30",)"
                  R"("valueQuantity":\{"value":73,.*"code":"/min"\})"));
  // Times 100 this is not quite 57.
  EXPECT_TRUE(save(store, {oxygenSaturation, 0.57, "%", Date{1709640427}, Date{1709640437}}));
  EXPECT_THAT(contents(), ContainsRegex(R"("http://loinc.org","code":"2708-6",.*)"
                                        R"("http://loinc.org","code":"59408-5",.*)"
                                        R"("end":"2024-03-05T08:37:17.000-03:30"\},)"
                                        R"("valueQuantity":\{"value":57,.*"code":"%"\})"));
}

TEST_F(FhirHealthStoreTest, ALastLineWithoutItsEndGetsItAndWhatIsNoRecordIsSetAside) {
  auto store = openAllowed();
  EXPECT_TRUE(save(store, pulse(60)));
  EXPECT_EQ(open().repair(), std::nullopt);
  const std::string whole = contents();
  const std::string half = whole.substr(0, whole.size() / 2);
  writeFile(file(), whole + half);
  EXPECT_TRUE(save(store, pulse(61))) << "also while a program has it open";
  EXPECT_EQ(records(), "..");

  const std::string large = "{\"a\":\"" + std::string(10000, 'x');
  writeFile(file(), whole + large);
  EXPECT_THAT(open().repair().value_or(""), HasSubstr("moved to"));
  EXPECT_EQ(contents(), whole);
  EXPECT_EQ(contentsOf(file() + ".damaged"), half + "\n" + large + "\n");
  writeFile(file(), whole.substr(0, whole.size() - 1));
  EXPECT_NE(open().repair(), std::nullopt);
  EXPECT_EQ(contents(), whole);

  std::filesystem::remove(file());
  std::filesystem::create_symlink(scratch_.write("elsewhere", "a letter"), file());
  open();
  EXPECT_EQ(contents(), "a letter\n");
}

TEST_F(FhirHealthStoreTest, AFullDiskLeavesNoHalfLine) {
  const std::string full = onSmallDisk(5000, [&] {
    auto store = openAllowed();
    int saved = 0;
    while (save(store, pulse(saved))) ++saved;
    return std::to_string(saved) + " " + store.failure().value_or("");
  });
  EXPECT_THAT(full, ContainsRegex("Observations.ndjson: .*free some space and try again$"));
  EXPECT_GT(std::stoi(full), 2);
  EXPECT_EQ(records(), std::string(static_cast<std::size_t>(std::stoi(full)), '.'));
}

}  // namespace
}  // namespace veyla
