#include "measuring/hk_utils.h"

#include <cmath>

#include "platform/platform.h"

namespace veyla {

namespace {

void write(HealthSampleType type, double quantity, const char* unit, const char* refusal) {
  HealthStore& store = services().healthStore;
  if (!store.isHealthDataAvailable()) return;
  if (store.authorizationStatus(type) != HealthSharing::authorized) {
    logLine("%s", refusal);
    return;
  }
  const Date start = services().clock.now();
  const Date end = services().clock.now();
  // The completion may come on a thread that has no platform in force.
  store.save({type, quantity, unit, start, end}, [&log = services().log](bool success) {
    log.line(success ? "success...." : "error....");
  });
}

}  // namespace

void HKUtils::setupHK() {
  HealthStore& store = services().healthStore;
  if (!store.isHealthDataAvailable()) {
    logLine("HK not available.");
    return;
  }
  // The system's permission sheet comes in its own colours.
  services().screens.setNavigationBarTint(std::nullopt);
  store.requestAuthorization({HealthSampleType::heartRate, HealthSampleType::oxygenSaturation},
                             [&log = services().log, &screens = services().screens](bool success) {
                               screens.setNavigationBarTint(white);
                               log.line(success ? "User completed authorisation request."
                                                : "The user cancelled the authorisation request. ");
                             });
}

void HKUtils::writeHeartrateWithValue(double value) {
  write(HealthSampleType::heartRate, std::round(value), "count/min",
        "I'm sorry. Not authorized to write hr.");
}

void HKUtils::writeSpo2WithValue(double value) {
  write(HealthSampleType::oxygenSaturation, std::round(value) / 100.0, "%",
        "I'm sorry. Not authorized to write spo2.");
}

}  // namespace veyla
