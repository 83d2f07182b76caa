#pragma once

#include "platform/health_store.h"

namespace veyla {

/// A machine without health records.
class NoHealthStore : public HealthStore {
 public:
  bool isHealthDataAvailable() const override { return false; }
  void requestAuthorization(const std::vector<HealthSampleType>& /*types*/,
                            std::function<void(bool success)> completion) override {
    completion(false);
  }
  HealthSharing authorizationStatus(HealthSampleType /*type*/) const override {
    return HealthSharing::denied;
  }
  void save(const HealthSample& /*sample*/, std::function<void(bool success)> completion) override {
    completion(false);
  }
};

}  // namespace veyla
