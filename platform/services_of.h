#pragma once

#include <type_traits>

#include "platform/no_services.h"
#include "platform/platform.h"

namespace veyla {

/// The first of these that implements `Service`; does not compile where none does.
template <class Service, class First, class... Others>
Service& firstOf(First& first, Others&... others) {
  if constexpr (std::is_convertible_v<First*, Service*>) {
    return first;
  } else {
    static_assert(sizeof...(others) > 0, "a service that the core needs has no binding");
    return firstOf<Service>(others...);
  }
}

/// Joins a machine's bindings, in any order: each service is the first of them that implements it.
/// Without one for the log, the camera, health records, alerts, screens or sharing, the core goes
/// without that service. All bindings must outlive the platform.
template <class... Bindings>
Services servicesOf(Bindings&... bindings) {
  return {.log = firstOf<Log>(bindings..., noLog),
          .mainQueue = firstOf<MainQueue>(bindings...),
          .clock = firstOf<Clock>(bindings...),
          .camera = firstOf<Camera>(bindings..., noCamera),
          .realFft = firstOf<RealFft>(bindings...),
          .store = firstOf<KeyValueStore>(bindings...),
          .healthStore = firstOf<HealthStore>(bindings..., noHealthStore),
          .resources = firstOf<const Resources>(bindings...),
          .json = firstOf<const JsonParser>(bindings...),
          .jsonWriter = firstOf<const JsonWriter>(bindings...),
          .device = firstOf<const DeviceInfo>(bindings...),
          .dates = firstOf<const DateFormatting>(bindings...),
          .numbers = firstOf<const NumberFormatting>(bindings...),
          .regularExpressions = firstOf<const RegularExpressions>(bindings...),
          .characters = firstOf<const Characters>(bindings...),
          .uuids = firstOf<UuidGenerator>(bindings...),
          .measuringDisplay = firstOf<Display>(bindings...),
          .alertView = firstOf<AlertView>(bindings..., noAlertView),
          .screens = firstOf<Screens>(bindings..., noScreens),
          .sharing = firstOf<Sharing>(bindings..., noSharing)};
}

}  // namespace veyla
