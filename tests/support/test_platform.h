#pragma once

#include <string>
#include <vector>

#include "platform/linux/queue_clock.h"
#include "platform/linux/timed_queue.h"
#include "platform/portable/json.h"
#include "platform/services_of.h"
#include "tests/support/journal.h"
#include "tests/support/memory_store.h"
#include "tests/support/recorder_alert_view.h"
#include "tests/support/recorder_display.h"
#include "tests/support/recorder_screens.h"
#include "tests/support/recorder_sharing.h"
#include "tests/support/scripted_camera.h"
#include "tests/support/scripted_health_store.h"
#include "tests/support/scripted_resources.h"
#include "tests/support/scripted_text_services.h"
#include "tests/support/test_fft.h"

namespace veyla {

/// Keeps the diagnostic lines.
class RecorderLog : public Log {
 public:
  std::vector<std::string> lines;

  bool enabled() const override { return true; }
  void line(std::string_view text) override { lines.emplace_back(text); }
};

class ScriptedDeviceInfo : public DeviceInfo {
 public:
  std::string model = "iPhone8,1";
  std::string version = "1.0.0";
  std::string shortVersion = "1.0";
  /// How often the model was asked for.
  mutable int modelQuestions = 0;

  std::string hardwareModel() const override {
    ++modelQuestions;
    return model;
  }
  std::string systemVersion() const override { return "10.3.1"; }
  std::string bundleVersion() const override { return version; }
  std::string bundleShortVersion() const override { return shortVersion; }
};

/// The queue's time. With a tick, as a real clock, it goes on from each look at it to the next.
class TickingClock : public Clock {
 public:
  explicit TickingClock(const Clock& time) : time_(time) {}

  /// Seconds.
  double tick = 0;

  Date now() const override {
    passed_ += tick;
    return {time_.now().secondsSince1970 + passed_};
  }

 private:
  const Clock& time_;
  mutable double passed_ = 0;
};

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
  QueueClock date{start, time};
  TickingClock clock{date};
  ScriptedCamera camera{journal};
  TestFft fft;
  MemoryStore store{journal};
  ScriptedHealthStore health{journal};
  ScriptedResources resources;
  NlohmannJsonWriter jsonWriter;
  ScriptedDeviceInfo device;
  ScriptedTextServices text;
  RecorderDisplay display{time};
  RecorderAlertView alerts{journal};
  RecorderScreens screens{journal};
  RecorderSharing sharing{journal};

 private:
  Platform platform_{servicesOf(log, time, clock, camera, fft, store, health, resources, jsonWriter,
                                device, text, display, alerts, screens, sharing)};
};

}  // namespace veyla
