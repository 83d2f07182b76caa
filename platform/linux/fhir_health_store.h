#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/data_folder.h"
#include "platform/portable/health_records.h"

namespace veyla {

/// The health store as a file of FHIR R4 Observations, `Observations.ndjson` in the data folder:
/// one sample a line. Times carry the offset of the time zone that the environment names.
///
/// A line is appended with one write under a lock on the file and is on the disk before the
/// completion says so. What is not written whole is taken back at once. A last line without its
/// end, as a power cut leaves it, gets its end at the next opening if it is a record and is moved
/// to a file beside this one if it is none; `repair` tells.
///
/// Permissions change in one transaction, also with two programs.
class FhirHealthStore : public HealthRecords {
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

  /// Asks for each type that is not determined yet; the completion, called before this returns,
  /// says whether all of `types` are determined now.
  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override;
  /// What was determined once stays so where it cannot be read for a moment: that is no refusal.
  HealthSharing authorizationStatus(HealthSampleType type) const override;

  /// The whole file of a folder, as no other program is writing it; nothing when no record was ever
  /// kept. Reads alone, so that its last line may be half a one. Throws `StoreError`.
  static std::optional<std::string> contentsIn(
      const std::filesystem::path& folder,
      std::chrono::milliseconds patience = patienceWithWriters);

  /// Whether a record was kept since the opening.
  bool hasSaved() const { return hasSaved_; }
  /// The first thing that went wrong in use, as one line.
  const std::optional<std::string>& failure() const { return failure_; }
  /// What opening mended, as one line.
  const std::optional<std::string>& repair() const { return repair_; }

 private:
  void keep(const std::string& line, Completion completion) override;
  void tellRefusal(const std::string& reason) override;
  void append(const std::string& line);

  std::filesystem::path file_;
  mutable std::map<HealthSampleType, HealthSharing> determined_;
  Ask ask_;
  bool hasSaved_ = false;
  std::optional<std::string> failure_;
  std::optional<std::string> repair_;
};

}  // namespace veyla
