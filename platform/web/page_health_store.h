#pragma once

#include <emscripten/val.h>

#include <functional>
#include <utility>
#include <vector>

#include "platform/health_store.h"
#include "platform/portable/fhir_observation.h"
#include "platform/text_services.h"
#include "platform/web/pending.h"

namespace veyla {

/// The health store as FHIR R4 Observations that the page keeps, one line of NDJSON a sample, and
/// offers as a file. Permission is kept per type in the key-value store.
class PageHealthStore : public HealthStore {
 public:
  /// `page` answers `ask(names, pending)`, whose answer has a bit for each type allowed, in their
  /// order, and is negative when there was none; and `append(line, pending)`, whose answer is
  /// whether the line is kept.
  PageHealthStore(emscripten::val page, Pending& pending, KeyValueStore& permissions,
                  UuidGenerator& uuids);

  bool isHealthDataAvailable() const override { return true; }
  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override;
  HealthSharing authorizationStatus(HealthSampleType type) const override {
    return permissions_.status(type);
  }
  void save(const HealthSample& sample, std::function<void(bool success)> completion) override;

  void allow(HealthSampleType type, bool allowed) { permissions_.allow(type, allowed); }

 private:
  emscripten::val page_;
  Pending& pending_;
  HealthPermissions permissions_;
  UuidGenerator& uuids_;
};

}  // namespace veyla
