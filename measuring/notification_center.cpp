#include "measuring/notification_center.h"

#include <algorithm>
#include <utility>

#include "platform/platform.h"

namespace veyla {

NotificationCenter& NotificationCenter::instance() {
  return Platform::current().shared<NotificationCenter>();
}

void NotificationCenter::add(const void* observer, std::string_view name,
                             std::function<void()> handler) {
  registrations_.push_back(std::make_shared<Registration>(
      Registration{observer, std::string(name), std::move(handler)}));
}

void NotificationCenter::remove(const void* observer) {
  std::erase_if(registrations_, [&](const auto& entry) { return entry->observer == observer; });
}

void NotificationCenter::post(std::string_view name) {
  const auto atFirst = registrations_;
  for (const auto& registration : atFirst) {
    if (registration->name != name) continue;
    const bool isStillThere = std::find(registrations_.begin(), registrations_.end(),
                                        registration) != registrations_.end();
    if (isStillThere) registration->handler();
  }
}

}  // namespace veyla
