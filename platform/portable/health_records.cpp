#include "platform/portable/health_records.h"

namespace veyla {

void HealthRecords::save(const HealthSample& sample, Completion completion) {
  const std::string name = HealthPermissions::nameOf(sample.type);
  if (authorizationStatus(sample.type) != HealthSharing::authorized) {
    tellRefusal("there is no permission to write " + name + "; allow it and measure again");
  } else if (auto line = fhirObservation(sample, uuids_.randomUuid())) {
    if (holds_) {
      waiting_.emplace_back(*std::move(line), std::move(completion));
    } else {
      keep(*line, std::move(completion));
    }
    return;
  } else {
    tellRefusal("a sample of " + name +
                " has no possible time, quantity or unit and is not saved; report this to the "
                "developers");
  }
  if (completion) completion(false);
}

void HealthRecords::settle(bool keeps) {
  for (auto& [line, completion] : std::exchange(waiting_, {})) {
    if (keeps) {
      keep(line, std::move(completion));
    } else if (completion) {
      completion(false);
    }
  }
}

}  // namespace veyla
