#include "platform/linux/fhir_health_store.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/uuid.h"
#include "platform/portable/json.h"
#include "tests/fuzz/fuzz.h"

namespace veyla {
namespace {

/// Opens what lies in `folder` and adds a record to it.
void keepOneMore(const std::filesystem::path& folder) {
  MemoryKeyValueStore permissions;
  LibUuid uuids;
  FhirHealthStore store(folder, permissions, uuids, {});
  store.allow(HealthSampleType::heartRate, true);
  const Date now{1.7e9};
  store.save({HealthSampleType::heartRate, 70, "count/min", now, now},
             [](bool saved) { must(saved, "a record is kept whatever lies there"); });
}

}  // namespace
}  // namespace veyla

/// Whatever lies in the records' place, all of it is there afterwards, and a record more.
void veyla::fuzz(std::string_view input) {
  static const ScratchFolder folder;
  const std::string before(input);
  const std::string file = folder.write(std::string(FhirHealthStore::fileName), before);
  const std::string aside =
      folder.write(std::string(FhirHealthStore::fileName) + FhirHealthStore::asideSuffix, "");
  keepOneMore(folder.path());

  const std::string after = contentsOf(file);
  must(after.ends_with("}\n"), "the record is whole");
  const std::size_t last = after.size() < 2 ? 0 : after.rfind('\n', after.size() - 2) + 1;
  must(NlohmannJsonParser().parse(after.substr(last)).has_value(), "the record is JSON");
  const std::string kept = after.substr(0, last) + contentsOf(aside);
  must(kept == before || kept == before + "\n", "nothing is cut");
}
