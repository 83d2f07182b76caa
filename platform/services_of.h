#pragma once

#include <type_traits>

#include "platform/no_services.h"
#include "platform/platform.h"

namespace veyla {

/// How many of these implement `Service`.
template <class Service, class... Bindings>
inline constexpr int implementations = (0 + ... + int{std::is_convertible_v<Bindings*, Service*>});

template <class Service, class First, class... Others>
Service& firstOf(First& first, Others&... others) {
  if constexpr (std::is_convertible_v<First*, Service*>) {
    return first;
  } else {
    return firstOf<Service>(others...);
  }
}

/// The one of these that implements `Service`.
template <class Service, class... Bindings>
Service& needed(Bindings&... bindings) {
  static_assert(implementations<Service, Bindings...> > 0, "the core needs a binding for this");
  static_assert(implementations<Service, Bindings...> < 2, "two bindings for one service");
  return firstOf<Service>(bindings...);
}

/// The same, and `otherwise` where none does.
template <class Service, class... Bindings>
Service& offered(Service& otherwise, Bindings&... bindings) {
  if constexpr (implementations<Service, Bindings...> == 0) {
    return otherwise;
  } else {
    return needed<Service>(bindings...);
  }
}

/// Joins a machine's bindings, in any order, each for all services that it implements. Where the
/// machine offers no log, camera, health records, alerts, screens or sharing, the core goes
/// without. All bindings must outlive the platform.
template <class... Bindings>
Services servicesOf(Bindings&... bindings) {
  return {.log = offered<Log>(noLog, bindings...),
          .mainQueue = needed<MainQueue>(bindings...),
          .clock = needed<Clock>(bindings...),
          .camera = offered<Camera>(noCamera, bindings...),
          .realFft = needed<RealFft>(bindings...),
          .store = needed<KeyValueStore>(bindings...),
          .healthStore = offered<HealthStore>(noHealthStore, bindings...),
          .resources = needed<const Resources>(bindings...),
          .json = needed<const JsonParser>(bindings...),
          .jsonWriter = needed<const JsonWriter>(bindings...),
          .device = needed<const DeviceInfo>(bindings...),
          .dates = needed<const DateFormatting>(bindings...),
          .numbers = needed<const NumberFormatting>(bindings...),
          .regularExpressions = needed<const RegularExpressions>(bindings...),
          .characters = needed<const Characters>(bindings...),
          .uuids = needed<UuidGenerator>(bindings...),
          .measuringDisplay = needed<Display>(bindings...),
          .alertView = offered<AlertView>(noAlertView, bindings...),
          .screens = offered<Screens>(noScreens, bindings...),
          .sharing = offered<Sharing>(noSharing, bindings...)};
}

}  // namespace veyla
