#include "platform/linux/fhir_health_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <limits>
#include <sstream>

#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/store_error.h"
#include "platform/linux/uuid.h"
#include "platform/portable/json.h"
#include "tests/linux/scratch.h"

namespace veyla {
namespace {

using testing::HasSubstr;

constexpr auto heartRate = HealthSampleType::heartRate;
constexpr auto oxygenSaturation = HealthSampleType::oxygenSaturation;

class FhirHealthStoreTest : public testing::Test {
 protected:
  FhirHealthStoreTest() {
    setenv("TZ", "America/St_Johns", 1);
    tzset();
  }

  std::filesystem::path file() const { return scratch_.path() / FhirHealthStore::fileName; }
  FhirHealthStore open(FhirHealthStore::Ask ask = [](HealthSampleType) { return true; }) {
    return FhirHealthStore(scratch_.path(), permissions_, uuids_, std::move(ask));
  }
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
  /// Every line must be a JSON object and have its end.
  std::vector<Value> observations() const {
    const std::string text = contentsOf(file());
    EXPECT_TRUE(text.empty() || text.back() == '\n');
    std::vector<Value> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      const auto json = NlohmannJsonParser().parse(line);
      EXPECT_TRUE(json && json->dictionary()) << line;
      found.push_back(json.value_or(Value()));
    }
    return found;
  }

  ScratchFolder scratch_;
  MemoryKeyValueStore permissions_;
  LibUuid uuids_;
};

TEST_F(FhirHealthStoreTest, ASampleIsAVitalSignInTheUnitsOfTheRecord) {
  auto store = openAllowed();
  EXPECT_TRUE(save(store, pulse(73)));
  EXPECT_TRUE(save(store, {oxygenSaturation, 0.57, "%", Date{1709640427}, Date{1709640437}}));
  const auto found = observations();
  ASSERT_EQ(found.size(), 2U);
  const auto expectCoded = [](const Value& of, std::initializer_list<const char*> codes) {
    std::size_t place = 0;
    for (const char* code : codes) {
      const Value& coding = of["coding"].array()->at(place++);
      EXPECT_EQ(*coding["system"].text() + "|" + *coding["code"].text(), code);
    }
  };
  const Value& pulse = found[0];
  EXPECT_EQ(pulse["status"], Value("final"));
  expectCoded(pulse["category"].array()->at(0),
              {"http://terminology.hl7.org/CodeSystem/observation-category|vital-signs"});
  expectCoded(pulse["code"], {"http://loinc.org|8867-4"});
  EXPECT_EQ(pulse["valueQuantity"]["value"], Value(73));
  EXPECT_EQ(pulse["valueQuantity"]["code"], Value("/min"));
  EXPECT_EQ(pulse["effectiveDateTime"], Value("2024-03-05T08:37:07.250-03:30"));

  const Value& oxygen = found[1];
  expectCoded(oxygen["code"], {"http://loinc.org|2708-6", "http://loinc.org|59408-5"});
  EXPECT_EQ(oxygen["valueQuantity"]["value"], Value(57)) << "0.57 × 100 is not quite 57";
  EXPECT_EQ(oxygen["valueQuantity"]["code"], Value("%"));
  EXPECT_EQ(oxygen["effectivePeriod"]["end"], Value("2024-03-05T08:37:17.000-03:30"));
}

TEST_F(FhirHealthStoreTest, PermissionIsAskedOnceAndKeptPerType) {
  std::vector<HealthSampleType> asked;
  std::optional<bool> answer;
  auto store = open([&](HealthSampleType type) {
    asked.push_back(type);
    return type == heartRate ? std::optional(true) : answer;
  });
  const auto request = [&] {
    std::optional<bool> success;
    asked.clear();
    store.requestAuthorization({heartRate, oxygenSaturation}, [&](bool done) { success = done; });
    return success;
  };
  EXPECT_EQ(request(), false) << "one could not be asked";
  EXPECT_EQ(store.authorizationStatus(oxygenSaturation), HealthSharing::notDetermined);
  answer = false;
  EXPECT_EQ(request(), true);
  EXPECT_EQ(asked, std::vector{oxygenSaturation});
  EXPECT_EQ(request(), true);
  EXPECT_TRUE(asked.empty());

  auto reopened = open();
  EXPECT_EQ(reopened.authorizationStatus(heartRate), HealthSharing::authorized);
  EXPECT_EQ(reopened.authorizationStatus(oxygenSaturation), HealthSharing::denied);
  EXPECT_FALSE(save(reopened, {oxygenSaturation, 0.97, "%", {}, {}}));
  EXPECT_TRUE(save(reopened, pulse(60)));
  EXPECT_EQ(observations().size(), 1U);
  reopened.allow(heartRate, false);
  EXPECT_EQ(reopened.authorizationStatus(heartRate), HealthSharing::denied);
}

TEST_F(FhirHealthStoreTest, WhatNoRecordCanHoldIsRefused) {
  auto store = openAllowed();
  EXPECT_FALSE(save(store, pulse(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_FALSE(save(store, {heartRate, 60, "%", {}, {}}));
  EXPECT_FALSE(save(store, {heartRate, 60, "count/min", Date{1e15}, Date{1e15}}));
  EXPECT_THAT(store.failure().value_or(""), testing::StartsWith(file().string()));
  EXPECT_EQ(contentsOf(file()), "");
  std::filesystem::remove(file());
  std::filesystem::create_directory(file());
  EXPECT_THROW(open(), StoreError);
}

TEST_F(FhirHealthStoreTest, ALastLineWithoutItsEndGetsItAndWhatIsNoRecordIsSetAside) {
  auto store = openAllowed();
  EXPECT_TRUE(save(store, pulse(60)));
  EXPECT_EQ(open().repair(), std::nullopt);
  const std::string whole = contentsOf(file());
  writeFile(file(), whole + whole.substr(0, whole.size() / 2));
  EXPECT_TRUE(save(store, pulse(61))) << "also while a program has it open";
  EXPECT_EQ(observations().size(), 2U);

  writeFile(file(), whole + "{\"a\":\"" + std::string(10000, 'x'));
  EXPECT_THAT(open().repair().value_or(""), HasSubstr("moved to"));
  EXPECT_EQ(contentsOf(file()), whole);
  EXPECT_EQ(contentsOf(file().string() + ".damaged"),
            whole.substr(0, whole.size() / 2) + "\n{\"a\":\"" + std::string(10000, 'x') + "\n");
  writeFile(file(), whole.substr(0, whole.size() - 1));
  EXPECT_NE(open().repair(), std::nullopt);
  EXPECT_EQ(contentsOf(file()), whole);

  const auto elsewhere = file().string() + ".elsewhere";
  writeFile(elsewhere, "a letter");
  std::filesystem::remove(file());
  std::filesystem::create_symlink(elsewhere, file());
  open();
  EXPECT_EQ(contentsOf(elsewhere), "a letter\n");
}

TEST_F(FhirHealthStoreTest, AFullDiskLeavesNoHalfLineAndAReadOnlyOneNone) {
  const std::string full = onSmallDisk(5000, [&] {
    auto store = openAllowed();
    int saved = 0;
    while (save(store, pulse(saved))) ++saved;
    return std::to_string(saved) + " " + store.failure().value_or("");
  });
  EXPECT_THAT(full,
              testing::ContainsRegex("Observations.ndjson: .*free some space and try again$"));
  EXPECT_EQ(std::to_string(observations().size()), full.substr(0, full.find(' ')));
  EXPECT_GT(observations().size(), 2U);

  const std::string result = inChild([&]() -> std::string {
    if (!mountDisk(scratch_.path(), "size=1m")) return noMounts;
    auto store = openAllowed();
    if (!makeReadOnly(scratch_.path())) return noMounts;
    return save(store, pulse(60)) ? "saved" : store.failure().value_or("no failure");
  });
  if (result == noMounts) GTEST_SKIP() << noMounts;
  EXPECT_THAT(result, HasSubstr("Observations.ndjson: Read-only file system; choose"));
}

}  // namespace
}  // namespace veyla
