#pragma once

#include "history/history_entry.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/uuid.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "tests/support/test_platform.h"

namespace veyla {

/// An entry with numbers of as many digits as measured ones have.
inline HistoryEntry measuredEntry(int number, Date date) {
  constexpr float bin = 0.87890625F;
  const float heartrate = 50 + bin * static_cast<float>(number % 80);
  const float spo2 = 93 + 7 * static_cast<float>(number % 997) / 997;
  return {static_cast<double>(heartrate), static_cast<double>(spo2), date, Labels{}, std::nullopt};
}

/// The program's own services where they do work that is measured, and scripted ones elsewhere.
class BenchPlatform {
 public:
  explicit BenchPlatform(KeyValueStore& store)
      : platform_(servicesOf(noLog, fft, store, noHealthStore, resources_, json_, jsonWriter_,
                             text_, uuids_, scripted_.time, scripted_.date, scripted_.camera,
                             scripted_.device, scripted_.display, scripted_.alerts,
                             scripted_.screens, scripted_.sharing)) {}

  KissRealFft fft;

 private:
  TestPlatform scripted_;
  EmbeddedResources resources_;
  NlohmannJsonParser json_;
  NlohmannJsonWriter jsonWriter_;
  IcuText text_;
  LibUuid uuids_;
  Platform platform_;
};

}  // namespace veyla
