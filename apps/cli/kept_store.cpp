#include "apps/cli/kept_store.h"

#include "platform/linux/data_folder.h"
#include "platform/linux/recording_source.h"

namespace veyla {

std::filesystem::path dataFolderOf(const std::string& option) {
  return option.empty() ? defaultDataFolder() : std::filesystem::path(option);
}

std::unique_ptr<SqliteKeyValueStore> openKeptStore(const std::string& option,
                                                   SqliteKeyValueStore::Use use) {
  const std::filesystem::path folder = dataFolderOf(option);
  const std::filesystem::path file = folder / SqliteKeyValueStore::fileName;
  if (mayExist(file)) return std::make_unique<SqliteKeyValueStore>(folder, use);
  if (option.empty()) return nullptr;
  throw InputError(file.string() +
                   ": no such file; name the folder that the measurements were kept in");
}

}  // namespace veyla
