#pragma once

#include <map>
#include <memory>

#include "platform/alert_view.h"
#include "platform/capture.h"
#include "platform/device_info.h"
#include "platform/display.h"
#include "platform/health_store.h"
#include "platform/key_value_store.h"
#include "platform/log.h"
#include "platform/main_queue.h"
#include "platform/real_fft.h"
#include "platform/resources.h"
#include "platform/screens.h"
#include "platform/sharing.h"
#include "platform/text_services.h"

namespace veyla {

/// The services that a machine offers to the core.
struct Services {
  Log& log;
  BoundQueue mainQueue;
  Clock& clock;
  Camera& camera;
  RealFft& realFft;
  KeyValueStore& store;
  HealthStore& healthStore;
  const Resources& resources;
  const JsonParser& json;
  const JsonWriter& jsonWriter;
  const DeviceInfo& device;
  const DateFormatting& dates;
  const NumberFormatting& numbers;
  const RegularExpressions& regularExpressions;
  const Characters& characters;
  UuidGenerator& uuids;
  Display& measuringDisplay;
  AlertView& alertView;
  Screens& screens;
  Sharing& sharing;
};

/// The services in force and the shared instances that live on them: the core's only global.
///
/// An app makes one at its start and keeps it to its end; a test makes one per test and so gets
/// fresh shared instances. The newest one on a thread is in force there until it is destroyed, so
/// that independent measurements can run on a thread each.
class Platform {
 public:
  explicit Platform(const Services& services);
  ~Platform();
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  /// The platform in force on this thread; there must be one.
  static Platform& current();

  const Services& services() const { return services_; }

  /// The one `T` of this platform, made without arguments on first use.
  template <class T>
  T& shared() {
    auto found = instances_.find(&keyOf<T>);
    if (found == instances_.end()) {
      found = instances_.emplace(&keyOf<T>, std::make_shared<T>()).first;
    }
    return *static_cast<T*>(found->second.get());
  }

 private:
  /// Has an address for each type: not all machines have the types' names in their programs.
  template <class T>
  static inline char keyOf = 0;

  Services services_;
  Platform* previous_;
  std::map<const void*, std::shared_ptr<void>> instances_;
};

/// The services of the platform in force.
inline const Services& services() { return Platform::current().services(); }

}  // namespace veyla
