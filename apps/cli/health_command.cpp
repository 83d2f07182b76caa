#include "apps/cli/health_command.h"

#include <filesystem>

#include "apps/cli/complain.h"
#include "apps/cli/kept_store.h"
#include "apps/cli/output_apart.h"
#include "platform/format.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/fhir_health_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/sqlite_key_value_store.h"
#include "platform/linux/uuid.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

const char* nameOf(HealthSharing sharing) {
  switch (sharing) {
    case HealthSharing::authorized:
      return "allowed";
    case HealthSharing::denied:
      return "denied";
    case HealthSharing::notDetermined:
      break;
  }
  return "not decided yet";
}

std::string statusText(HealthSharing heartrate, HealthSharing spo2) {
  return formatText("heartrate  %s\nspo2       %s\n", nameOf(heartrate), nameOf(spo2));
}

std::string statusText(SqliteKeyValueStore& store) {
  const HealthPermissions permissions(store);
  return statusText(permissions.status(HealthSampleType::heartRate),
                    permissions.status(HealthSampleType::oxygenSaturation));
}

ExitStatus tellStatus(const HealthOptions& options) {
  std::string text = statusText(HealthSharing::notDetermined, HealthSharing::notDetermined);
  if (const auto store = openKeptStore(options.dataFolder, SqliteKeyValueStore::Use::read)) {
    text = statusText(*store);
    if (store->failure()) throw StoreError(*store->failure());
  }
  printOut(text);
  return ExitStatus::done;
}

ExitStatus allow(const HealthOptions& options, bool allowed) {
  const std::filesystem::path folder = dataFolderOf(options.dataFolder);
  SqliteKeyValueStore store(folder);
  LibUuid uuids;
  FhirHealthStore health(folder, store, uuids, {});
  const bool stands = health.allow(options.type == "heartrate" ? HealthSampleType::heartRate
                                                               : HealthSampleType::oxygenSaturation,
                                   allowed);
  if (!stands) throw StoreError(store.failure().value_or(folder.string() + ": not stored"));
  const std::string text = statusText(store);
  // The last step of what stands may fail as well, and looking at it.
  if (store.failure()) throw StoreError("done, but " + *store.failure());
  const bool isTold = writes([&] { printOut(text); }, "done, but ");
  return isTold ? ExitStatus::done : ExitStatus::unwritableData;
}

ExitStatus exportRecords(const HealthOptions& options) {
  const std::filesystem::path folder = dataFolderOf(options.dataFolder);
  const std::filesystem::path file = folder / FhirHealthStore::fileName;
  if (!mayExist(file)) {
    // Throws for a named folder that holds no measurements at all.
    openKeptStore(options.dataFolder, SqliteKeyValueStore::Use::read);
    complain("no health records in " + folder.string() +
             " yet: veyla health allow has them kept from then on");
  }
  requireApart("-o", options.output, file);
  const std::string records = FhirHealthStore::contentsIn(folder).value_or("");

  OutputFile output(options.output, Readers::ownerAlone);
  const NlohmannJsonParser json;
  std::size_t damaged = 0;
  std::size_t firstDamaged = 0;
  std::size_t number = 0;
  for (std::size_t start = 0; start < records.size();) {
    const std::size_t end = std::min(records.find('\n', start), records.size());
    const std::string line = records.substr(start, end - start) + '\n';
    start = end + 1;
    ++number;
    const auto record = json.parse(line);
    if (record && record->dictionary()) {
      output.write(line);
    } else if (damaged++ == 0) {
      firstDamaged = number;
    }
  }
  output.commit();
  if (damaged == 0) return ExitStatus::done;
  complain(formatText("%s: line %zu%s is no record and is left out; mend or remove it in the file",
                      file.c_str(), firstDamaged,
                      damaged > 1 ? formatText(" (and %zu more)", damaged - 1).c_str() : ""));
  return ExitStatus::unreadableInput;
}

}  // namespace

ExitStatus runHealthStatus(const HealthOptions& options) {
  return exitStatusOf([&] { return tellStatus(options); });
}
ExitStatus runHealthExport(const HealthOptions& options) {
  return exitStatusOf([&] { return exportRecords(options); });
}
ExitStatus runHealthAllow(const HealthOptions& options, bool allowed) {
  return exitStatusOf([&] { return allow(options, allowed); });
}

}  // namespace veyla
