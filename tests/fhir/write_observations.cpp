// Writes one Observation of each kind, at one moment and over a time, into the folder it is given.
#include <cstdio>

#include "platform/linux/fhir_health_store.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/uuid.h"

int main(int argc, char** argv) {
  using namespace veyla;
  if (argc != 2) return 2;
  MemoryKeyValueStore permissions;
  LibUuid uuids;
  FhirHealthStore store(argv[1], permissions, uuids, [](HealthSampleType) { return true; });
  store.requestAuthorization({HealthSampleType::heartRate, HealthSampleType::oxygenSaturation}, {});
  for (const double end : {1709640427.25, 1709640447.0}) {
    const Date start{1709640427.25};
    store.save({HealthSampleType::heartRate, 73, "count/min", start, Date{end}}, {});
    store.save({HealthSampleType::oxygenSaturation, 0.98, "%", start, Date{end}}, {});
  }
  if (!store.failure()) return 0;
  std::fprintf(stderr, "%s\n", store.failure()->c_str());
  return 1;
}
