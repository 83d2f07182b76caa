#include "measuring/app_delegate.h"

#include "acquisition/settings.h"
#include "history/history_store.h"
#include "measuring/display_settings.h"
#include "measuring/notification_center.h"
#include "platform/platform.h"
#include "shell/faq.h"
#include "shell/rating_prompt.h"

namespace veyla {

AppDelegate& AppDelegate::instance() { return Platform::current().shared<AppDelegate>(); }

AppDelegate::AppDelegate() {
  constexpr double days = 1.0;
  constexpr int significantEvents = 3;
  constexpr int uses = 3;
  RatingPrompt::instance().configure(days, significantEvents, uses);
}

MainViewController& AppDelegate::launch() {
  application(LaunchOptions{});
  mainViewController().viewDidLoad();
  applicationDidBecomeActive();
  return mainViewController();
}

bool AppDelegate::application(LaunchOptions /*didFinishLaunchingWithOptions*/) {
  logLine("AppDelegate didFinishLaunchingWithOptions, using iPhone: %s",
          Utils::platformString().c_str());
  // In one piece: an old history that is migrated only in part, or by two launches at once, would
  // be migrated again.
  services().store.exclusively([] {
    Utils::convertOldValuesToNew();
    Utils::clearValuesOLD();
  });
  Utils::loadLocalFaqs();
  Utils::setSpo2Settings(Utils::loadDefaultSettings("Spo2Settings"));
  Utils::setHeartrateSettings(Utils::loadDefaultSettings("HeartrateSettings"));
  Utils::setCameraSettings(Utils::loadDefaultSettings("CameraSettings"));
  Utils::setAppearance();
  services().screens.setIdleTimerDisabled(true);
  activatedFromBackground_ = false;
  RatingPrompt::instance().logUse();
  return true;
}

void AppDelegate::applicationWillResignActive() { logLine("AppDelegate willResignActive"); }

void AppDelegate::applicationDidEnterBackground() {
  logLine("AppDelegate didEnterBackground");
  NotificationCenter::instance().post("didEnterBackground");
}

void AppDelegate::applicationWillEnterForeground() {
  logLine("AppDelegate willEnterForeground");
  activatedFromBackground_ = true;
}

void AppDelegate::applicationDidBecomeActive() {
  logLine("AppDelegate didBecomeActive");
  if (activatedFromBackground_) NotificationCenter::instance().post("didBecomeActive");
}

void AppDelegate::applicationWillTerminate() { logLine("AppDelegate willTerminate"); }

}  // namespace veyla
