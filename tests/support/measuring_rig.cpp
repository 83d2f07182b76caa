#include "tests/support/measuring_rig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>

#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "shell/alerts.h"
#include "tests/support/tables.h"

namespace veyla {

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
  heartrateSettings_.emplace(heartrateSettings_.begin(), key, std::move(value));
  withHeartrateSettings(heartrateSettings_);
}

void MeasuringRig::spo2Setting(const char* key, Value value) {
  spo2Settings_.emplace(spo2Settings_.begin(), key, std::move(value));
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

std::string MeasuringRig::seen() const {
  using namespace MeasuringScreen;
  const RecorderDisplay& display = platform.display;
  const auto moving = [&](Element element, const std::string& text) {
    const std::string_view animation = display.playing(element);
    return animation.empty() ? text : text + "(" + std::string(animation) + ")";
  };
  const auto value = [&](Element element) {
    const bool isFinal = display.view(element).font.name == "HelveticaNeue-Medium";
    return moving(element, (isFinal ? "=" : "") + display.view(element).text);
  };
  std::vector<std::string> parts;
  const auto add = [&](Element element, const std::string& text) {
    if (display.isSeen(element)) parts.push_back(moving(element, text));
  };
  const auto addIf = [&](bool holds, const std::string& text) {
    if (holds) parts.push_back(text);
  };

  add(beginButton, "START");
  add(stopButton, "STOP");
  add(labelRed, display.view(labelRed).text);
  add(labelGrey, display.view(labelGrey).text);
  if (display.isSeen(viewLastMeasurements)) {
    add(viewCenter, "last " + value(labelLastHeartrate) + ' ' + value(labelLastSpo2));
  }
  if (display.isSeen(MeasuringScreen::chartFourierView)) add(viewCenter, "pulse");
  parts.push_back("now " + value(labelHeartrate) + ' ' + value(labelSpo2));
  parts.push_back(
      formatText("dials %.0f %.0f, rings %.0f %.0f", static_cast<double>(screen.gaugeHR().value()),
                 static_cast<double>(screen.gaugeSpo2().value()),
                 100.0 * static_cast<double>(screen.circleprogressHeartrate().progress()),
                 100.0 * static_cast<double>(screen.circleprogressSpo2().progress())));
  for (const Element panel : {viewGaugeHeartrate, viewGaugeSpo2}) {
    const std::string name(panel.name);
    addIf(!display.isSeen(panel), name + " gone");
    addIf(!display.playing(panel).empty(), moving(panel, name));
  }
  addIf(display.view(labelMeasuringHeartrate).shimmering, "heart rate shimmers");
  addIf(display.view(labelMeasuringSpo2).shimmering, "SpO2 shimmers");
  for (const Element checkbox : {buttonCheckboxHeartrate, buttonCheckboxSpo2}) {
    const bool marked = display.view(checkbox).image != "checkbox_unmarked.png";
    addIf(display.isSeen(checkbox), marked ? "[x]" : "[ ]");
  }
  addIf(platform.camera.device->torchMode() != LightMode::off, "torch");
  addIf(screen.canBegin(), "measuring");
  for (const auto& [id, title] : platform.alerts.inFront) parts.push_back("alert " + title);

  return joined(parts);
}

Somebody::Somebody() {
  rig.appear();
  rig.platform.journal.clear();
  screen.addObserver(*this);
}

void Somebody::live(const std::string& happenings) {
  std::istringstream words(happenings);
  for (std::string word; words >> word;) {
    if (std::isdigit(static_cast<unsigned char>(word.front())) != 0) {
      rig.platform.time.runFor(std::stod(word));
      continue;
    }
    const std::size_t times = word.find('*');
    const int count = times == std::string::npos ? 1 : std::stoi(word.substr(times + 1));
    for (int i = 0; i < count; ++i) happen(word.substr(0, times));
  }
}

std::size_t Somebody::entries() const {
  const auto values = Utils::getValues();
  return values ? values->size() : 0;
}

void Somebody::happen(const std::string& word) {
  AppDelegate& application = AppDelegate::instance();
  if (word == "START") return screen.beginButtonPush();
  if (word == "STOP") return screen.stopButtonPush();
  if (word == "heartrate") return screen.buttonCheckboxHeartrateTapped();
  if (word == "spo2") return screen.buttonCheckboxSpo2Tapped();
  if (word == "background") return application.applicationDidEnterBackground();
  if (word == "return") {
    application.applicationWillEnterForeground();
    return application.applicationDidBecomeActive();
  }
  if (word == "interruption") return screen.didBecomeActive();
  if (word == "leave") return screen.viewWillDisappear();
  if (word == "appear") return screen.viewWillAppear();
  if (word == "denied") return void(camera.authorization = CameraAuthorization::denied);
  if (word == "dark") return void(camera.device->torch = false);
  if (word == "lit") return void(camera.device->torch = true);
  if (word == "lost") return screen.cameraLost();
  if (word == "opened") return camera.opened();
  if (word == "OK") return Alerts::instance().tapClose(rig.platform.alerts.lastId);
  if (word == "good") return rig.spo2(97);
  if (word == "low") return rig.spo2(92);
  if (word == "none") return rig.spo2(0);
  if (word.starts_with("spo2=")) return rig.spo2(std::stof(word.substr(5)));
  // How strong the heart rate's rival is from here on.
  if (word.starts_with("rival=")) {
    rig.platform.fft.peaks = {{80, 1}, {200, std::stod(word.substr(6))}};
    return;
  }
  // To the frame at which the curve comes, or the one before it, with as many unclear heart rates
  // as that takes.
  EXPECT_TRUE(word == "curve" || word == "nearly") << word;
  rig.heartrateAmbiguous();
  rig.frames((word == "curve" ? 32 : 31) - static_cast<int>(screen.data()->rawHRValues()->size()));
  rig.heartrateBin(80);
}

}  // namespace veyla
