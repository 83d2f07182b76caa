// The shortest program that measures: a machine, the core on it, and START. Copy it to embed the
// core elsewhere; what each service must do stands with its interface in platform/.
#include <iostream>

#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "platform/linux/icu_text.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/recording_camera.h"
#include "platform/linux/synthetic_finger.h"
#include "platform/linux/uuid.h"
#include "platform/linux/wall_clock.h"
#include "platform/portable/embedded_resources.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "shell/screen_state.h"

namespace {

/// Chooses the settings.
class Phone : public veyla::DeviceInfo {
 public:
  std::string hardwareModel() const override { return "iPhone8,1"; }
  std::string systemVersion() const override { return "1.0"; }
  std::string bundleVersion() const override { return "1.0"; }
};

}  // namespace

int main() {
  // The machine: one object or another for each service that the core needs.
  veyla::TimedQueue queue;
  veyla::WallClock clock;
  veyla::RecordingCamera camera(
      std::make_unique<veyla::SyntheticSource>(veyla::FingerOptions{}, 45, 30), queue);
  veyla::KissRealFft realFft;
  veyla::MemoryKeyValueStore store;
  veyla::EmbeddedResources resources;
  veyla::NlohmannJsonParser json;
  veyla::NlohmannJsonWriter jsonWriter;
  Phone phone;
  veyla::IcuText text;
  veyla::LibUuid uuids;
  veyla::ScreenState display;
  const veyla::Platform platform(veyla::servicesOf(queue, clock, camera, realFft, store, resources,
                                                   json, jsonWriter, phone, text, uuids, display));

  // The core: launched and shown.
  veyla::MainViewController& screen = veyla::AppDelegate::instance().launch();
  screen.viewWillAppear();
  screen.viewDidAppear();

  // The user taps START, and time passes until the recording ends.
  screen.beginButtonPush();
  camera.setOnEnd([&] { queue.stop(); });
  queue.run();

  std::cout << display.visibleText(veyla::MeasuringScreen::labelHeartrate) << " beats per minute, "
            << display.visibleText(veyla::MeasuringScreen::labelSpo2) << " %\n";
}
