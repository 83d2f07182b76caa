#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "apps/cli/measurement_run.h"
#include "platform/linux/fhir_health_store.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/uuid.h"

namespace veyla {

/// Where a measurement is kept: a data folder, or nowhere.
class Keeping {
 public:
  static constexpr const char* isSaved = "the measurement is saved, but ";

  /// `dataFolder` empty for the user's own; `ask` as of `FhirHealthStore`. Throws `StoreError`.
  Keeping(bool save, const std::string& dataFolder, const FhirHealthStore::Ask& ask);

  KeyValueStore& store() { return *store_; }
  HealthStore& healthStore() {
    return healthStore_ ? static_cast<HealthStore&>(*healthStore_) : noHealthStore;
  }
  const std::filesystem::path& folder() const { return folder_; }

  /// Whether a health record was kept.
  bool keptRecord() const { return healthStore_ && healthStore_->hasSaved(); }

  /// Keeps what waits for the end, and tells on standard error what could not be kept; true when
  /// everything was.
  bool finish(const MeasurementReport& report);

 private:
  std::filesystem::path folder_;
  LibUuid uuids_;
  std::unique_ptr<KeyValueStore> store_;
  /// The same where it is a file.
  SqliteKeyValueStore* stored_ = nullptr;
  std::unique_ptr<FhirHealthStore> healthStore_;
  std::optional<std::string> toldRepair_;
};

}  // namespace veyla
