// The whole measuring flow with frames of one's own: a machine, the core on it, and START.
#include <cmath>
#include <iostream>
#include <numbers>

#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "platform/linux/bgra_frame.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/recording_camera.h"
#include "platform/linux/wall_clock.h"
#include "platform/portable/embedded_resources.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "shell/screen_state.h"

using namespace veyla;

/// A fingertip at 72 beats per minute for 25 seconds, 15 frames a second.
class Fingertip : public RecordingSource {
 public:
  bool advance() override { return ++frame_ < 375; }
  double time() const override { return frame_ / 15.0; }
  std::optional<double> nextTime() const override { return (frame_ + 1) / 15.0; }
  void deliver(SampleBufferDelegate& delegate) override {
    const double pulse = std::sin(2 * std::numbers::pi * 72 / 60 * time());
    const double bgra[] = {25 + 7.6 * pulse, 90 + 10 * pulse, 180 + 2.4 * pulse, 254};
    // One step brighter from top to bottom: what is less than a step moves where the next begins.
    for (int i = 0; i < 144 * 192 * 4; ++i) {
      pixels_.baseAddress()[i] = static_cast<std::uint8_t>(bgra[i % 4] + i / 110592.0);
    }
    delegate.captureOutput(pixels_);
  }

 private:
  BgraFrame pixels_{192, 144};
  int frame_ = -1;
};

int main() {
  TimedQueue queue;
  WallClock clock;
  RecordingCamera camera(std::make_unique<Fingertip>(), queue);
  KissRealFft fft;
  MemoryKeyValueStore store;
  EmbeddedResources resources;
  NlohmannJsonParser json;
  NlohmannJsonWriter writer;
  ScreenState display;
  const Platform platform(servicesOf(queue, clock, camera, fft, store, resources, json, writer,
                                     display, noDevice, noText));
  MainViewController& screen = AppDelegate::instance().launch();
  screen.viewWillAppear();
  screen.viewDidAppear();
  screen.beginButtonPush();
  queue.runFor(25);
  std::cout << display.visibleText(MeasuringScreen::labelHeartrate) << " beats per minute, "
            << display.visibleText(MeasuringScreen::labelSpo2) << " %\n";
}
