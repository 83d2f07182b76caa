#include "tests/support/somebody.h"

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>

#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "shell/alerts.h"

namespace veyla {

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
