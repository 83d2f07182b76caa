#include "platform/portable/fhir_observation.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

#include "platform/format.h"
#include "platform/portable/json.h"

namespace veyla {

namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

/// How a type of sample stands in an Observation.
struct Coding {
  /// The unit of the samples.
  const char* sampleUnit;
  const char* profile;
  const char* text;
  /// Codes of LOINC with their names there.
  std::vector<std::pair<const char*, const char*>> loinc;
  const char* unit;
  /// The unit's code in UCUM.
  const char* ucum;
  double factor;
};

const Coding& codingOf(HealthSampleType type) {
  static const Coding heartRate{"count/min",
                                "http://hl7.org/fhir/StructureDefinition/heartrate",
                                "Heart rate",
                                {{"8867-4", "Heart rate"}},
                                "beats/minute",
                                "/min",
                                1};
  static const Coding oxygenSaturation{
      "%",
      "http://hl7.org/fhir/StructureDefinition/oxygensat",
      "Oxygen saturation",
      {{"2708-6", "Oxygen saturation in Arterial blood"},
       {"59408-5", "Oxygen saturation in Arterial blood by Pulse oximetry"}},
      "%",
      "%",
      100};
  return type == HealthSampleType::heartRate ? heartRate : oxygenSaturation;
}

/// The local time to the millisecond with its offset from UTC; nothing outside the years 1 to 9999.
std::optional<std::string> dateTime(Date date) {
  if (!isInCalendar(date)) return std::nullopt;
  const double seconds = std::floor(date.secondsSince1970);
  const auto milliseconds = static_cast<int>((date.secondsSince1970 - seconds) * 1000);
  auto time = static_cast<std::time_t>(seconds);
  std::tm local{};
  if (!localtime_r(&time, &local)) return std::nullopt;
  // Before zones were agreed upon, offsets had seconds, which the form has no place for.
  const long offsetMinutes = local.tm_gmtoff / 60;
  time += offsetMinutes * 60;
  std::tm shown{};
  if (!gmtime_r(&time, &shown) || shown.tm_year + 1900 < 1 || shown.tm_year + 1900 > 9999) {
    return std::nullopt;
  }
  const long minutes = std::labs(offsetMinutes);
  return formatText("%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02ld:%02ld", shown.tm_year + 1900,
                    shown.tm_mon + 1, shown.tm_mday, shown.tm_hour, shown.tm_min, shown.tm_sec,
                    milliseconds, offsetMinutes < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

/// A decimal without the last digits that binary arithmetic leaves: 0.57 × 100 is 57.
Value decimal(double value) {
  const double rounded = std::round(value * 1e6) / 1e6;
  if (rounded == std::trunc(rounded) && std::abs(rounded) < 1e15) {
    return static_cast<std::int64_t>(rounded);
  }
  return rounded;
}

constexpr std::string_view permissionsKey = "healthPermissions";

}  // namespace

std::optional<std::string> fhirObservation(const HealthSample& sample, const std::string& id) {
  const Coding& coding = codingOf(sample.type);
  const auto start = dateTime(sample.start);
  const auto end = dateTime(sample.end);
  if (!start || !end || !std::isfinite(sample.quantity) || sample.unit != coding.sampleUnit) {
    return std::nullopt;
  }

  Array codes;
  for (const auto& [code, display] : coding.loinc) {
    codes.push_back(
        Dictionary{{"system", "http://loinc.org"}, {"code", code}, {"display", display}});
  }
  const Dictionary category{
      {"system", "http://terminology.hl7.org/CodeSystem/observation-category"},
      {"code", "vital-signs"},
      {"display", "Vital Signs"}};
  Dictionary entries{
      {"resourceType", "Observation"},
      {"id", id},
      {"meta", Dictionary{{"profile", Array{coding.profile}}}},
      {"status", "final"},
      {"category", Array{Dictionary{{"coding", Array{category}}}}},
      {"code", Dictionary{{"coding", codes}, {"text", coding.text}}},
      // The person has no record here to refer to.
      {"subject", Dictionary{{"type", "Patient"}, {"display", "The user of Veyla"}}}};
  if (std::abs(sample.end.secondsSince1970 - sample.start.secondsSince1970) < 1) {
    entries.emplace_back("effectiveDateTime", *start);
  } else {
    entries.emplace_back("effectivePeriod", Dictionary{{"start", *start}, {"end", *end}});
  }
  entries.emplace_back("valueQuantity",
                       Dictionary{{"value", decimal(sample.quantity * coding.factor)},
                                  {"unit", coding.unit},
                                  {"system", "http://unitsofmeasure.org"},
                                  {"code", coding.ucum}});
  entries.emplace_back("device", Dictionary{{"display", "Veyla"}});
  return writeJson(entries).value() + "\n";
}

HealthSharing HealthPermissions::status(HealthSampleType type) const {
  const auto kept = store_.value(permissionsKey);
  if (!kept) return HealthSharing::notDetermined;
  const Value& allowed = (*kept)[nameOf(type)];
  if (allowed.isNull()) return HealthSharing::notDetermined;
  return allowed.boolValue() ? HealthSharing::authorized : HealthSharing::denied;
}

bool HealthPermissions::allow(HealthSampleType type, bool allowed) {
  return store_.exclusively([&] {
    Dictionary kept;
    const auto stored = store_.value(permissionsKey);
    if (stored && stored->dictionary()) kept = *stored->dictionary();
    std::erase_if(kept, [&](const auto& entry) { return entry.first == nameOf(type); });
    kept.emplace_back(nameOf(type), allowed);
    store_.setValue(permissionsKey, kept);
    store_.synchronize();
  });
}

const char* HealthPermissions::nameOf(HealthSampleType type) {
  return type == HealthSampleType::heartRate ? "heartRate" : "oxygenSaturation";
}

}  // namespace veyla
