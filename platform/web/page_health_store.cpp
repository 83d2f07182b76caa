#include "platform/web/page_health_store.h"

#include "platform/web/page_types.h"

namespace veyla {

/// By the names under which permissions are kept.
template <>
struct PageType<HealthSampleType> {
  using Carried = std::string;
  static Carried to(HealthSampleType type) { return HealthPermissions::nameOf(type); }
};

using emscripten::val;

PageHealthStore::PageHealthStore(val page, Pending& pending, KeyValueStore& permissions,
                                 UuidGenerator& uuids)
    : HealthRecords(permissions, uuids), page_(std::move(page)), pending_(pending) {}

void PageHealthStore::requestAuthorization(const std::vector<HealthSampleType>& types,
                                           std::function<void(bool success)> completion) {
  std::vector<HealthSampleType> undetermined;
  for (const HealthSampleType type : types) {
    if (authorizationStatus(type) == HealthSharing::notDetermined) undetermined.push_back(type);
  }
  if (undetermined.empty()) {
    if (completion) completion(true);
    return;
  }
  const int number = pending_.keep([this, undetermined, completion](int answer) {
    for (std::size_t i = 0; answer >= 0 && i < undetermined.size(); ++i) {
      allow(undetermined[i], (answer >> i & 1) != 0);
    }
    if (completion) completion(answer >= 0);
  });
  page_.call<void>("ask", undetermined, number);
}

void PageHealthStore::keep(const std::string& line, Completion completion) {
  const int number = pending_.keep([completion = std::move(completion)](int answer) {
    if (completion) completion(answer != 0);
  });
  page_.call<void>("append", line, number);
}

}  // namespace veyla
