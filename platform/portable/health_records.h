#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/health_store.h"
#include "platform/portable/fhir_observation.h"
#include "platform/text_services.h"

namespace veyla {

/// A health store of FHIR R4 Observations, one line of NDJSON a sample; a binding says where the
/// lines go. Permission is kept per type in the key-value store.
class HealthRecords : public HealthStore {
 public:
  bool isHealthDataAvailable() const override { return true; }
  HealthSharing authorizationStatus(HealthSampleType type) const override {
    return permissions_.status(type);
  }
  /// Refuses a quantity that is no finite number, a unit that is not the type's, a time outside the
  /// years 1 to 9999, and a type without permission.
  void save(const HealthSample& sample, std::function<void(bool success)> completion) final;

  /// From now on records wait for `settle`, as the key-value store's changes do for one that
  /// gathers them.
  void hold() { holds_ = true; }
  /// Keeps what waits, or gives it up, which the completions learn as a failure.
  void settle(bool keeps);

  /// Sets a type's permission without asking. Whether it is stored.
  bool allow(HealthSampleType type, bool allowed) { return permissions_.allow(type, allowed); }

 protected:
  using Completion = std::function<void(bool success)>;

  /// `permissions` and `uuids` must outlive the store.
  HealthRecords(KeyValueStore& permissions, UuidGenerator& uuids)
      : permissions_(permissions), uuids_(uuids) {}

  virtual void keep(const std::string& line, Completion completion) = 0;
  /// Why a sample was refused, and the way out.
  virtual void tellRefusal(const std::string& /*reason*/) {}

 private:
  HealthPermissions permissions_;
  UuidGenerator& uuids_;
  bool holds_ = false;
  std::vector<std::pair<std::string, Completion>> waiting_;
};

}  // namespace veyla
