#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/health_store.h"
#include "platform/key_value_store.h"

namespace veyla {

/// A sample as a FHIR R4 Observation: one line of NDJSON, its end included. Times carry the offset
/// of the machine's time zone. Nothing for a quantity that is no finite number, a unit that is not
/// the type's, and a time outside the years 1 to 9999.
std::optional<std::string> fhirObservation(const HealthSample& sample, const std::string& id);

/// The user's permissions to write samples, one per type, in the key-value store under
/// "healthPermissions".
class HealthPermissions {
 public:
  /// `store` must outlive the permissions.
  explicit HealthPermissions(KeyValueStore& store) : store_(store) {}

  HealthSharing status(HealthSampleType type) const;
  /// Whether it is stored.
  bool allow(HealthSampleType type, bool allowed);

  static const char* nameOf(HealthSampleType type);

 private:
  KeyValueStore& store_;
};

}  // namespace veyla
