#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/linux/sqlite_key_value_store.h"

namespace veyla {

/// The folder that `--data` named, or the user's own where it named none. Throws `StoreError`.
std::filesystem::path dataFolderOf(const std::string& option);

/// Says on standard error that a store is empty which cannot be new: health records, which come
/// with entries, lie beside it.
void tellEmptyStore(const std::filesystem::path& folder);

/// The store in that folder; null where the user's own has none yet, since looking makes no store.
/// Throws an `InputError` for a named folder without one, which must be a mistake, and a
/// `StoreError` for one that cannot be used.
std::unique_ptr<SqliteKeyValueStore> openKeptStore(const std::string& option,
                                                   SqliteKeyValueStore::Use use);

}  // namespace veyla
