#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/date.h"

namespace veyla {

enum class HealthSampleType { heartRate, oxygenSaturation };

enum class HealthSharing { notDetermined, denied, authorized };

/// One measured quantity. The unit is "count/min" (beats) or "%", in which 1.0 is 100 per cent.
struct HealthSample {
  HealthSampleType type;
  double quantity;
  std::string unit;
  Date start;
  Date end;

  bool operator==(const HealthSample&) const = default;
};

/// The user's health records, written only. A sample is kept at once; where the key-value store
/// gathers changes, it waits for their transaction and is given up with it. Completions may come on
/// any thread, or never.
class HealthStore {
 public:
  virtual ~HealthStore() = default;

  virtual bool isHealthDataAvailable() const = 0;
  /// Asks the user for permission to write samples of `types`.
  virtual void requestAuthorization(const std::vector<HealthSampleType>& types,
                                    std::function<void(bool success)> completion) = 0;
  virtual HealthSharing authorizationStatus(HealthSampleType type) const = 0;
  virtual void save(const HealthSample& sample, std::function<void(bool success)> completion) = 0;
};

}  // namespace veyla
