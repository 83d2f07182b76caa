#include "apps/cli/kept_store.h"

#include "apps/cli/complain.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/fhir_health_store.h"
#include "platform/linux/output_file.h"
#include "platform/linux/recording_source.h"

namespace veyla {

std::filesystem::path dataFolderOf(const std::string& option) {
  auto folder = option.empty() ? defaultDataFolder() : std::filesystem::path(option);
  keepOutputsFrom(folder);
  return folder;
}

void tellEmptyStore(const std::filesystem::path& folder) {
  namespace fs = std::filesystem;
  std::error_code unknown;
  const fs::path file = folder / SqliteKeyValueStore::fileName;
  const fs::path records = folder / FhirHealthStore::fileName;
  const auto isEmpty = [&](const fs::path& each) { return fs::file_size(each, unknown) == 0; };
  if (!fs::is_regular_file(file, unknown) || !fs::is_regular_file(records, unknown)) return;
  if (!isEmpty(file) || isEmpty(records)) return;
  complain(file.string() +
           ": empty, though there are health records beside it; a history that was in it is lost, "
           "restore a copy of it");
}

std::unique_ptr<SqliteKeyValueStore> openKeptStore(const std::string& option,
                                                   SqliteKeyValueStore::Use use) {
  const std::filesystem::path folder = dataFolderOf(option);
  const std::filesystem::path file = folder / SqliteKeyValueStore::fileName;
  // One that was made and never written, as a kill at the first run leaves it, holds nothing.
  std::error_code unknown;
  const bool isBlank = use == SqliteKeyValueStore::Use::read &&
                       std::filesystem::is_regular_file(file, unknown) &&
                       std::filesystem::file_size(file, unknown) == 0;
  tellEmptyStore(folder);
  if (isBlank) return nullptr;
  if (mayExist(file)) return std::make_unique<SqliteKeyValueStore>(folder, use);
  if (option.empty()) return nullptr;
  throw InputError(file.string() +
                   ": no such file; name the folder that the measurements were kept in");
}

}  // namespace veyla
