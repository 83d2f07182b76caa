#include "platform/linux/fhir_health_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <utility>

#include "platform/format.h"
#include "platform/linux/data_folder.h"
#include "platform/linux/json.h"
#include "platform/linux/store_error.h"

namespace veyla {

namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;

constexpr std::string_view permissionsKey = "healthPermissions";

/// How a type of sample stands in an Observation.
struct Coding {
  const char* permission;
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
  static const Coding heartRate{"heartRate",
                                "count/min",
                                "http://hl7.org/fhir/StructureDefinition/heartrate",
                                "Heart rate",
                                {{"8867-4", "Heart rate"}},
                                "beats/minute",
                                "/min",
                                1};
  static const Coding oxygenSaturation{
      "oxygenSaturation",
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
  const double seconds = std::floor(date.secondsSince1970);
  constexpr double largest = 253402300799;  // the last second of the year 9999
  if (!(seconds >= -62135596800.0 && seconds <= largest)) return std::nullopt;
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

/// A file descriptor that closes itself; closing gives a lock on it back.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

void check(bool done, const std::filesystem::path& file) {
  if (!done) throw StoreError(dataProblem(file, errno));
}

/// Whole lines: cuts a half one at the end off, and gives a whole one its end. Returns whether it
/// had to.
bool mendEnd(int descriptor, const std::filesystem::path& file) {
  struct stat found {};
  check(fstat(descriptor, &found) == 0, file);
  off_t lineStart = found.st_size;
  std::string line;
  constexpr off_t block = 4096;
  while (lineStart > 0) {
    const off_t start = std::max<off_t>(0, lineStart - block);
    std::string piece(static_cast<std::size_t>(lineStart - start), '\0');
    check(
        pread(descriptor, piece.data(), piece.size(), start) == static_cast<ssize_t>(piece.size()),
        file);
    const std::size_t newline = piece.rfind('\n');
    if (newline != std::string::npos) {
      line.insert(0, piece, newline + 1);
      break;
    }
    line.insert(0, piece);
    lineStart = start;
  }
  if (line.empty()) return false;
  const auto json = NlohmannJsonParser().parse(line);
  if (json && json->dictionary()) {
    check(write(descriptor, "\n", 1) == 1, file);
  } else {
    check(ftruncate(descriptor, found.st_size - static_cast<off_t>(line.size())) == 0, file);
  }
  check(fsync(descriptor) == 0, file);
  return true;
}

}  // namespace

FhirHealthStore::FhirHealthStore(const std::filesystem::path& folder, KeyValueStore& permissions,
                                 UuidGenerator& uuids, Ask ask)
    : file_(folder / fileName), permissions_(permissions), uuids_(uuids), ask_(std::move(ask)) {
  makeDataFolder(folder);
  const Descriptor file(open(file_.c_str(), O_RDWR | O_APPEND | O_CLOEXEC));
  if (file.number() < 0 && errno == ENOENT) return;
  check(file.number() >= 0, file_);
  check(flock(file.number(), LOCK_EX) == 0, file_);
  if (mendEnd(file.number(), file_)) {
    repair_ = file_.string() +
              ": its last line was not written to its end and has been mended or, as it was never "
              "reported as saved, cut off; nothing is left to do";
  }
}

void FhirHealthStore::requestAuthorization(const std::vector<HealthSampleType>& types,
                                           std::function<void(bool success)> completion) {
  bool determined = true;
  for (const HealthSampleType type : types) {
    if (authorizationStatus(type) != HealthSharing::notDetermined) continue;
    const auto answer = ask_ ? ask_(type) : std::nullopt;
    if (answer) {
      allow(type, *answer);
    } else {
      determined = false;
    }
  }
  if (completion) completion(determined);
}

HealthSharing FhirHealthStore::authorizationStatus(HealthSampleType type) const {
  const auto kept = permissions_.value(permissionsKey);
  if (!kept) return HealthSharing::notDetermined;
  const Value& allowed = (*kept)[codingOf(type).permission];
  if (allowed.isNull()) return HealthSharing::notDetermined;
  return allowed.boolValue() ? HealthSharing::authorized : HealthSharing::denied;
}

void FhirHealthStore::allow(HealthSampleType type, bool allowed) {
  permissions_.exclusively([&] {
    Dictionary kept;
    const auto stored = permissions_.value(permissionsKey);
    if (stored && stored->dictionary()) kept = *stored->dictionary();
    std::erase_if(kept,
                  [&](const auto& entry) { return entry.first == codingOf(type).permission; });
    kept.emplace_back(codingOf(type).permission, allowed);
    permissions_.setValue(permissionsKey, kept);
    permissions_.synchronize();
  });
}

std::optional<std::string> FhirHealthStore::contents() const {
  const Descriptor file(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number() < 0 && errno == ENOENT) return std::nullopt;
  check(file.number() >= 0, file_);
  check(flock(file.number(), LOCK_SH) == 0, file_);
  std::string text;
  std::array<char, 65536> block;
  ssize_t n = 0;
  while ((n = read(file.number(), block.data(), block.size())) > 0) {
    text.append(block.data(), static_cast<std::size_t>(n));
  }
  check(n == 0, file_);
  return text;
}

void FhirHealthStore::save(const HealthSample& sample,
                           std::function<void(bool success)> completion) {
  bool saved = false;
  try {
    if (authorizationStatus(sample.type) != HealthSharing::authorized) {
      throw StoreError(file_.string() + ": there is no permission to write " +
                       codingOf(sample.type).permission + "; allow it and measure again");
    }
    append(observation(sample));
    saved = true;
  } catch (const StoreError& error) {
    if (!failure_) failure_ = error.what();
  }
  if (completion) completion(saved);
}

std::string FhirHealthStore::observation(const HealthSample& sample) const {
  const Coding& coding = codingOf(sample.type);
  const auto start = dateTime(sample.start);
  const auto end = dateTime(sample.end);
  if (!start || !end || !std::isfinite(sample.quantity) || sample.unit != coding.sampleUnit) {
    throw StoreError(file_.string() + ": a sample of " + coding.permission +
                     " has no possible time, quantity or unit and is not saved; report this to the "
                     "developers");
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
      {"id", uuids_.randomUuid()},
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

void FhirHealthStore::append(const std::string& line) {
  const Descriptor file(open(file_.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
  check(file.number() >= 0, file_);
  check(flock(file.number(), LOCK_EX) == 0, file_);
  // Another program may have been cut off since this one opened the file.
  mendEnd(file.number(), file_);
  const off_t size = lseek(file.number(), 0, SEEK_END);
  check(size >= 0, file_);

  const ssize_t written = write(file.number(), line.data(), line.size());
  // A short write tells no reason; what stops a file in the middle is want of room.
  int error = written < 0 ? errno : ENOSPC;
  if (written == static_cast<ssize_t>(line.size())) {
    if (fsync(file.number()) == 0) {
      // A new file's name must last as well.
      const Descriptor folder(open(file_.parent_path().c_str(), O_RDONLY | O_CLOEXEC));
      if (size > 0 || (folder.number() >= 0 && fsync(folder.number()) == 0)) return;
    }
    error = errno;
  }
  if (ftruncate(file.number(), size) != 0) error = errno;
  throw StoreError(dataProblem(file_, error));
}

}  // namespace veyla
