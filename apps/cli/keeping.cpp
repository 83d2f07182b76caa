#include "apps/cli/keeping.h"

#include "apps/cli/complain.h"
#include "apps/cli/kept_store.h"
#include "history/history_store.h"
#include "platform/linux/memory_key_value_store.h"

namespace veyla {

Keeping::Keeping(bool save, const std::string& dataFolder, const FhirHealthStore::Ask& ask) {
  if (!save) {
    store_ = std::make_unique<MemoryKeyValueStore>();
    return;
  }
  folder_ = dataFolderOf(dataFolder);
  tellEmptyStore(folder_);
  auto store = std::make_unique<SqliteKeyValueStore>(folder_);
  auto healthStore = std::make_unique<FhirHealthStore>(folder_, *store, uuids_, ask);
  toldRepair_ = healthStore->repair();
  if (toldRepair_) complain(*toldRepair_);
  store->understands = Utils::mayStand;
  store->gatherChanges();
  healthStore->hold();
  store->gathered = [records = healthStore.get()](bool areStored) { records->settle(areStored); };
  stored_ = store.get();
  store_ = std::move(store);
  healthStore_ = std::move(healthStore);
}

bool Keeping::finish(const MeasurementReport& report) {
  if (!stored_) return true;
  stored_->synchronize();
  if (healthStore_->repair() != toldRepair_) complain(*healthStore_->repair());
  bool kept = true;
  for (const auto& failure : {stored_->failure(), healthStore_->failure()}) {
    if (!failure) continue;
    complain(report.isKept ? isSaved + *failure : *failure);
    kept = false;
  }
  return kept;
}

}  // namespace veyla
