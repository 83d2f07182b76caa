#pragma once

#include "apps/cli/cli_screens.h"
#include "apps/cli/command_device.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/timed_queue.h"
#include "platform/linux/uuid.h"
#include "platform/linux/wall_clock.h"
#include "platform/portable/embedded_resources.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "shell/screen_state.h"

namespace veyla {

/// The services of a command that works on the history and measures nothing; in force for its own
/// life.
class HistoryPlatform {
 public:
  /// `store` and what else the command has an own service for; all must outlive it.
  template <class... Bindings>
  explicit HistoryPlatform(KeyValueStore& store, Bindings&... others)
      : platform_(servicesOf(store, others..., queue_, clock_, realFft_, resources_, json_,
                             jsonWriter_, device_, text_, uuids_, display_)) {}

  ScreenState& display() { return display_; }
  const IcuText& text() const { return text_; }

 private:
  TimedQueue queue_;
  WallClock clock_;
  KissRealFft realFft_;
  EmbeddedResources resources_;
  NlohmannJsonParser json_;
  NlohmannJsonWriter jsonWriter_;
  CommandDevice device_;
  IcuText text_;
  LibUuid uuids_;
  ScreenState display_;
  Platform platform_;
};

}  // namespace veyla
