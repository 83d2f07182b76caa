#pragma once

#include <optional>
#include <string>

#include "apps/cli/cli_screens.h"
#include "apps/cli/measurement_run.h"
#include "platform/key_value_store.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/log_file.h"
#include "platform/linux/no_camera.h"
#include "platform/linux/no_health_store.h"
#include "platform/linux/resource_files.h"
#include "platform/linux/timed_queue.h"
#include "platform/linux/uuid.h"
#include "platform/platform.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "shell/screen_state.h"

namespace veyla {

/// The services of a command that works on the history and measures nothing; in force for its own
/// life.
class HistoryPlatform {
 public:
  /// Both must outlive it.
  HistoryPlatform(KeyValueStore& store, Sharing& sharing);

  ScreenState& display() { return display_; }

 private:
  class Machine : public DeviceInfo {
   public:
    std::string hardwareModel() const override { return defaultDevice; }
    std::string systemVersion() const override { return "Linux"; }
    std::string bundleVersion() const override { return VEYLA_VERSION; }
  };

  NoLog log_;
  TimedQueue queue_{TimedQueue::Pace::wall};
  NoCamera camera_;
  KissRealFft realFft_;
  NoHealthStore healthStore_;
  EmbeddedResources resources_;
  NlohmannJsonParser json_;
  NlohmannJsonWriter jsonWriter_;
  Machine device_;
  IcuText text_;
  LibUuid uuids_;
  ScreenState display_;
  CliAlerts alerts_;
  CliScreens screens_;
  Platform platform_;
};

}  // namespace veyla
