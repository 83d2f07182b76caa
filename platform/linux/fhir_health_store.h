#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/health_store.h"
#include "platform/key_value_store.h"
#include "platform/portable/fhir_observation.h"
#include "platform/text_services.h"

namespace veyla {

/// The health store as a file of FHIR R4 Observations, `Observations.ndjson` in the data folder:
/// one sample a line. Times carry the offset of the time zone that the environment names.
///
/// A line is appended with one write under a lock on the file and is on the disk before the
/// completion says so. What is not written whole is taken back at once. A last line without its
/// end, as a power cut leaves it, gets its end at the next opening if it is a record and is moved
/// to a file beside this one if it is none; `repair` tells.
///
/// Permission is kept per type in the key-value store, under "healthPermissions": there it changes
/// in one transaction, also with two programs.
class FhirHealthStore : public HealthStore {
 public:
  /// The user's answer for one type; nothing when the user cannot be asked now or gives none.
  using Ask = std::function<std::optional<bool>(HealthSampleType)>;

  static constexpr std::string_view fileName = "Observations.ndjson";
  /// Of the file beside it with what was no record.
  static constexpr const char* asideSuffix = ".damaged";

  /// Makes the folder where it is missing. Throws `StoreError`, also when the file is there and
  /// cannot be read and written. `permissions` and `uuids` must outlive the store.
  FhirHealthStore(const std::filesystem::path& folder, KeyValueStore& permissions,
                  UuidGenerator& uuids, Ask ask);

  bool isHealthDataAvailable() const override { return true; }
  /// Asks for each type that is not determined yet; the completion, called before this returns,
  /// says whether all of `types` are determined now.
  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override;
  /// What was determined once stays so where it cannot be read for a moment: that is no refusal.
  HealthSharing authorizationStatus(HealthSampleType type) const override;
  /// Refuses a quantity that is no finite number, a unit that is not the type's, a time outside the
  /// years 1 to 9999, and a type without permission. The completion is called before this returns,
  /// or by `keepWaiting`.
  void save(const HealthSample& sample, std::function<void(bool success)> completion) override;

  /// From now on samples wait for `keepWaiting`: on a full disk no record stands for a measurement
  /// that is not in the history.
  void hold() { holds_ = true; }
  /// Keeps what waits.
  void keepWaiting();

  /// Sets a type's permission without asking.
  void allow(HealthSampleType type, bool allowed) { permissions_.allow(type, allowed); }

  /// The whole file of a folder, as no other program is writing it; nothing when no record was ever
  /// kept. Reads alone, so that its last line may be half a one. Throws `StoreError`.
  static std::optional<std::string> contentsIn(const std::filesystem::path& folder);

  /// Whether a record was kept since the opening.
  bool hasSaved() const { return hasSaved_; }
  /// The first thing that went wrong in use, as one line.
  const std::optional<std::string>& failure() const { return failure_; }
  /// What opening mended, as one line.
  const std::optional<std::string>& repair() const { return repair_; }

 private:
  /// A record and whom to tell what became of it.
  struct Waiting {
    std::string line;
    std::function<void(bool success)> completion;
  };

  void keep(const Waiting& record);
  void append(const std::string& line);
  std::string observation(const HealthSample& sample) const;

  std::filesystem::path file_;
  HealthPermissions permissions_;
  mutable std::map<HealthSampleType, HealthSharing> determined_;
  UuidGenerator& uuids_;
  Ask ask_;
  bool holds_ = false;
  std::vector<Waiting> waiting_;
  bool hasSaved_ = false;
  std::optional<std::string> failure_;
  std::optional<std::string> repair_;
};

}  // namespace veyla
