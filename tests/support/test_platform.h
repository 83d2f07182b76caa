#pragma once

#include <optional>
#include <string>

#include "platform/linux/timed_queue.h"
#include "platform/portable/json.h"
#include "platform/services_of.h"
#include "tests/support/recorder_display.h"
#include "tests/support/recorders.h"
#include "tests/support/scripted_camera.h"
#include "tests/support/scripted_services.h"

namespace veyla {

/// A whole machine in memory, whose time a test moves on. It is in force for its own life, so a
/// test that makes one gets fresh shared instances.
class TestPlatform {
 public:
  // Out of line: what the parts' virtual functions cost to compile is paid once.
  TestPlatform();
  explicit TestPlatform(const std::string& hardwareModel);
  ~TestPlatform();

  static constexpr Date start{1'700'000'000};

  /// Moves the clock on to a moment that is not before now.
  void moveTo(Date moment);

  Journal journal;
  RecorderLog log;
  TimedQueue time;
  TickingClock date{start, time};
  ScriptedCamera camera{journal};
  ScriptedFft fft;
  MemoryStore store{journal};
  ScriptedHealthStore health{journal};
  ScriptedResources resources;
  NlohmannJsonParser json;
  NlohmannJsonWriter jsonWriter;
  ScriptedDeviceInfo device;
  /// A test that emplaces one moves to its locale and time zone.
  std::optional<ScriptedText> text{std::in_place, "en_US", "UTC"};
  RecorderDisplay display{time};
  RecorderAlertView alerts{journal};
  RecorderScreens screens{journal};
  RecorderSharing sharing{journal};

 private:
  Platform platform_{servicesOf(log, time, date, camera, fft, store, health, resources, json,
                                jsonWriter, device, *text, display, alerts, screens, sharing)};
};

}  // namespace veyla
