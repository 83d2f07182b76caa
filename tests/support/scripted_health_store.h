#pragma once

#include <map>
#include <vector>

#include "platform/format.h"
#include "platform/health_store.h"
#include "tests/support/journal.h"

namespace veyla {

/// A health store that allows everything until told otherwise. It keeps the completions for the
/// test to call; saved samples stand in the journal as "health …".
class ScriptedHealthStore : public HealthStore {
 public:
  explicit ScriptedHealthStore(Journal& journal) : journal_(journal) {}

  bool available = true;
  std::map<HealthSampleType, HealthSharing> sharing{
      {HealthSampleType::heartRate, HealthSharing::authorized},
      {HealthSampleType::oxygenSaturation, HealthSharing::authorized}};
  std::vector<HealthSample> samples;
  std::vector<HealthSampleType> requested;
  std::vector<std::function<void(bool success)>> completions;

  bool isHealthDataAvailable() const override { return available; }
  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override {
    requested = types;
    completions.push_back(std::move(completion));
  }
  HealthSharing authorizationStatus(HealthSampleType type) const override {
    return sharing.at(type);
  }
  void save(const HealthSample& sample, std::function<void(bool success)> completion) override {
    samples.push_back(sample);
    completions.push_back(std::move(completion));
    journal_.add(formatText("health %g %s", sample.quantity, sample.unit.c_str()));
  }

 private:
  Journal& journal_;
};

}  // namespace veyla
