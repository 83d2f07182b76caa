#include "measuring/notification_center.h"

#include <utility>

#include "platform/platform.h"

namespace veyla {

NotificationCenter& NotificationCenter::instance() {
  return Platform::current().shared<NotificationCenter>();
}

void NotificationCenter::add(const void* observer, std::string_view name,
                             std::function<void()> handler) {
  registrations_.push_back({observer, std::string(name), std::move(handler)});
}

void NotificationCenter::remove(const void* observer) {
  std::erase_if(registrations_, [&](const auto& entry) { return entry.observer == observer; });
}

void NotificationCenter::post(std::string_view name) {
  for (const Registration& registration : registrations_) {
    if (registration.name == name) registration.handler();
  }
}

}  // namespace veyla
