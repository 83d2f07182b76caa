// Estimates of a series in memory: the colours of a fingertip's frames, 15 a second.
#include <cmath>
#include <iostream>
#include <numbers>

#include "acquisition/settings.h"
#include "analysis/heartrate_processing.h"
#include "platform/linux/memory_key_value_store.h"
#include "platform/linux/timed_queue.h"
#include "platform/linux/wall_clock.h"
#include "platform/portable/embedded_resources.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/services_of.h"
#include "shell/screen_state.h"

int main() {
  // The machine: estimates want the transform and the settings, and nothing of the rest.
  veyla::TimedQueue queue;
  veyla::WallClock clock;
  veyla::KissRealFft realFft;
  veyla::MemoryKeyValueStore store;
  veyla::EmbeddedResources resources;
  veyla::NlohmannJsonParser json;
  veyla::NlohmannJsonWriter jsonWriter;
  veyla::ScreenState display;
  const veyla::Platform platform(veyla::servicesOf(queue, clock, realFft, store, resources, json,
                                                   jsonWriter, display, veyla::noDevice,
                                                   veyla::noText));
  veyla::Utils::setHeartrateSettings(veyla::Utils::loadDefaultSettings("HeartrateSettings"));
  veyla::Utils::setSpo2Settings(veyla::Utils::loadDefaultSettings("Spo2Settings"));

  // A pulse of 72 beats per minute, 0 to 255 in each channel. An estimate looks at the last eight
  // seconds, so that there are as many of them as one likes.
  veyla::Data& data = veyla::Data::instance();
  for (int frame = 1; frame <= 200; ++frame) {
    const auto pulse = static_cast<float>(std::sin(2 * std::numbers::pi * 72 / 60 * frame / 15));
    data.addRedValue(180 + 2.4F * pulse);
    data.addGreenValue(90 + 10 * pulse);
    data.addBlueValue(25 + 7.6F * pulse);
    data.addHRValue(90 + 10 * pulse);
    if (frame < 150 || frame % 5 != 0) continue;
    const auto heartrate = veyla::HeartrateProcessing::instance().calculateHeartrate();
    const float spo2 = veyla::Spo2Processing::instance().calculateSpo2({});
    std::cout << frame / 15.0 << " s: " << heartrate.heartrate << " beats per minute, "
              << heartrate.diffPercent << " % beyond any other; " << spo2 << " %\n";
  }
}
