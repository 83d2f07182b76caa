#pragma once

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "platform/device_info.h"
#include "platform/format.h"
#include "platform/health_store.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/queue_clock.h"
#include "platform/main_queue.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/resources.h"
#include "tests/support/recorders.h"

namespace veyla {

/// What a test may put into beforehand; changes and flushes stand in the journal as "store …".
class MemoryStore : public MemoryKeyValueStore {
 public:
  explicit MemoryStore(Journal& journal) : journal_(journal) {}

  /// How often changes were made durable in one piece, nested ones with the outermost.
  int exclusivePieces = 0;
  /// Nothing that is changed stays.
  bool refuses = false;

  void setValue(std::string_view key, const Value& value) override {
    MemoryKeyValueStore::setValue(key, value);
    journal_.add("store set " + std::string(key));
  }
  void removeValue(std::string_view key) override {
    MemoryKeyValueStore::removeValue(key);
    journal_.add("store remove " + std::string(key));
  }
  void synchronize() override { journal_.add("store flush"); }
  bool exclusively(const std::function<void()>& changes) override {
    const auto before = values;
    ++nesting_;
    changes();
    if (--nesting_ == 0) ++exclusivePieces;
    if (refuses) values = before;
    return !refuses;
  }

 private:
  int nesting_ = 0;
  Journal& journal_;
};

/// A health store that allows everything until told otherwise. It keeps the completions for the
/// test to call; saved samples stand in the journal as "health …".
class ScriptedHealthStore : public HealthStore {
 public:
  explicit ScriptedHealthStore(Journal& journal) : journal_(journal) {}

  bool available = true;
  std::map<HealthSampleType, HealthSharing> sharing{
      {HealthSampleType::heartRate, HealthSharing::authorized},
      {HealthSampleType::oxygenSaturation, HealthSharing::authorized}};
  std::vector<HealthSample> samples;
  std::vector<HealthSampleType> requested;
  std::vector<std::function<void(bool success)>> completions;

  bool isHealthDataAvailable() const override { return available; }
  void requestAuthorization(const std::vector<HealthSampleType>& types,
                            std::function<void(bool success)> completion) override {
    requested = types;
    completions.push_back(std::move(completion));
  }
  HealthSharing authorizationStatus(HealthSampleType type) const override {
    return sharing.at(type);
  }
  void save(const HealthSample& sample, std::function<void(bool success)> completion) override {
    samples.push_back(sample);
    completions.push_back(std::move(completion));
    journal_.add(formatText("health %g %s", sample.quantity, sample.unit.c_str()));
  }

 private:
  Journal& journal_;
};

class ScriptedResources : public Resources {
 public:
  /// Texts by name and type, such as "Faq.json".
  std::map<std::string, std::string, std::less<>> files;

  std::optional<std::string> read(std::string_view name, std::string_view type) const override {
    const auto found = files.find(std::string(name) + '.' + std::string(type));
    return found == files.end() ? std::nullopt : std::optional(found->second);
  }
};

/// Dates read "at 1000", for the seconds since 1970; what follows a pattern is the real thing.
class ScriptedText : public IcuText, public UuidGenerator {
 public:
  using IcuText::IcuText;

  std::string mediumDateShortTime(Date date) const override {
    return formatText("at %.0f", date.secondsSince1970);
  }
  std::optional<Date> parseMediumDateShortTime(std::string_view text) const override {
    if (!text.starts_with("at ")) return std::nullopt;
    return Date{std::strtod(std::string(text.substr(3)).c_str(), nullptr)};
  }
  std::string randomUuid() override { return "1B4E28BA-2FA1-11D2-883F-B9A761BDE3FB"; }
};

/// The transform itself; or, once a test has given peaks, a spectrum of just these.
class ScriptedFft : public KissRealFft {
 public:
  /// Real parts by bin.
  std::map<std::size_t, double> peaks;

  void forward(std::span<const double, length> samples, std::span<double, binCount> real,
               std::span<double, binCount> imaginary) override {
    if (peaks.empty()) return KissRealFft::forward(samples, real, imaginary);
    std::fill(real.begin(), real.end(), 0.0);
    std::fill(imaginary.begin(), imaginary.end(), 0.0);
    for (const auto& [bin, value] : peaks) real[bin] = value;
  }
};

class ScriptedDeviceInfo : public DeviceInfo {
 public:
  std::string model = "iPhone8,1";
  std::string version = "1.0.0";
  std::string shortVersion = "1.0";

  std::string hardwareModel() const override { return model; }
  std::string systemVersion() const override { return "10.3.1"; }
  std::string bundleVersion() const override { return version; }
  std::string bundleShortVersion() const override { return shortVersion; }
};

/// The queue's time. With a tick, as a real clock, it goes on from each look at it to the next.
class TickingClock : public QueueClock {
 public:
  using QueueClock::QueueClock;

  /// Seconds.
  double tick = 0;

  Date now() const override { return {QueueClock::now().secondsSince1970 + (passed_ += tick)}; }

 private:
  mutable double passed_ = 0;
};

}  // namespace veyla
