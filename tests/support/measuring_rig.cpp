#include "tests/support/measuring_rig.h"

#include <algorithm>

#include "measuring/app_delegate.h"

namespace veyla {

namespace {

void replace(Value::Dictionary& settings, const char* key, Value value) {
  std::erase_if(settings, [&](const auto& setting) { return setting.first == key; });
  settings.emplace_back(key, std::move(value));
}

}  // namespace

MeasuringRig::MeasuringRig()
    : heartrateSettings_({{"rawDataSize", 2},
                          {"skipFramesBetweenMeasurements", 2},
                          {"neededValidHeartrate", 3},
                          {"TTValidPercent", 50},
                          {"minimumBpm", 40},
                          {"TTMaxDistance", 5}}),
      spo2Settings_({{"rawDataSize", 2},
                     {"framesBeforeBeginning", 0},
                     {"skipFramesBetweenMeasurements", 2},
                     {"neededValidSpo2", 3},
                     {"useNewAlgorithm", true}}) {
  withHeartrateSettings(heartrateSettings_);
  withSpo2Settings(spo2Settings_);
  heartrateBin(80);
  AppDelegate::instance();  // Configures the rating prompt.
}

void MeasuringRig::heartrateSetting(const char* key, Value value) {
  replace(heartrateSettings_, key, std::move(value));
  withHeartrateSettings(heartrateSettings_);
}

void MeasuringRig::spo2Setting(const char* key, Value value) {
  replace(spo2Settings_, key, std::move(value));
  withSpo2Settings(spo2Settings_);
}

void MeasuringRig::appear() {
  screen.viewDidLoad();
  screen.viewWillAppear();
  screen.viewDidAppear();
}

void MeasuringRig::startMeasuring() {
  screen.beginButtonPush();
  platform.time.runFor(2.03);
  platform.journal.clear();
  platform.log.lines.clear();
}

void MeasuringRig::frame(FrameSample sample) { screen.videoProcessing()->captureOutput(sample); }

void MeasuringRig::frames(int count, FrameSample sample) {
  for (int i = 0; i < count; ++i) frame(sample);
}

void MeasuringRig::spo2(float percent) {
  frame();
  // With the green range beyond red's as large as the blue minimum, R is red's range over its
  // minimum of 100.
  const float redRange = percent == 0 ? 0 : 100 - percent;
  frame({lowFrame.red + redRange, lowFrame.green + redRange + lowFrame.blue, lowFrame.blue, 100});
}

}  // namespace veyla
