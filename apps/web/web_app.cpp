#include "apps/web/web_app.h"

#include <array>
#include <cstddef>
#include <utility>

#include "acquisition/video_processing.h"
#include "history/history_store.h"
#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "platform/portable/embedded_resources.h"
#include "platform/services_of.h"
#include "platform/web/page_fields.h"
#include "shell/alerts.h"

namespace veyla {

using emscripten::val;

namespace {

const EmbeddedResources resources;

constexpr std::array<HealthSampleType, 2> healthSampleTypes{HealthSampleType::heartRate,
                                                            HealthSampleType::oxygenSaturation};

constexpr const char* homeScreenAnswered = "homeScreenAnswered";

MainViewController& screen() { return MainViewController::instance(); }

}  // namespace

EMSCRIPTEN_BINDINGS(drawing) { VEYLA_VALUE(TextExtents, width, ascent, descent); }

WebApp::WebApp(val page)
    : page_(std::move(page)),
      log_(page_["log"]),
      device_(page_["device"]),
      text_(page_["text"]),
      items_(page_["storage"]),
      store_(items_),
      healthStore_(page_["health"], pending_, store_, text_),
      videoTrack_(page_["camera"]),
      camera_(videoTrack_, pending_),
      measuringDisplay_(page_["measuring"], pending_),
      introDisplay_(page_["intro"], pending_),
      alerts_(page_["alerts"]),
      screens_(page_["screens"]),
      actionSheet_(page_["actionSheet"]),
      sharing_(page_["sharing"], pending_),
      canvas_([canvas = page_["canvas"]](const std::string& text, const Font& font) {
        return canvas.call<TextExtents>("measureText", text, font.size, font.weight());
      }),
      ending_(page_["ending"]) {
  store_.understands = Utils::mayStand;
  store_.failed = [storage = page_["storage"]](const std::string& damagedKey,
                                               const std::string& line) {
    storage.call<void>("failed", damagedKey, line);
  };
  platform_ = std::make_unique<Platform>(
      servicesOf(log_, loop_, camera_, realFft_, store_, healthStore_, resources, json_,
                 jsonWriter_, device_, text_, measuringDisplay_, alerts_, screens_, sharing_));
  intro_ = std::make_unique<IntroViewController>(
      introDisplay_, [this](const std::function<void()>& then) {
        screens_.dismissIntro(pending_.keep([then](int) { then(); }));
      });
}

WebApp::~WebApp() = default;

void WebApp::launch() {
  MainViewController& screen = AppDelegate::instance().launch();
  screen.addObserver(judge_);
  // After the doubts: both are read out in one.
  screen.addObserver(ending_);
}

void WebApp::enterBackground() {
  AppDelegate::instance().applicationWillResignActive();
  AppDelegate::instance().applicationDidEnterBackground();
  // A page that is hidden may never be shown again.
  store_.synchronize();
}

void WebApp::enterForeground() {
  AppDelegate::instance().applicationWillEnterForeground();
  AppDelegate::instance().applicationDidBecomeActive();
}

void WebApp::terminate() { AppDelegate::instance().applicationWillTerminate(); }

val WebApp::frameBuffer(int width, int height) {
  const auto room = camera_.frameBuffer(width, height);
  return val(emscripten::typed_memory_view(room.size(), room.data()));
}

void WebApp::torchRefused() { Utils::showOkAlert("", VideoProcessing::noTorch); }

void WebApp::cameraLost() { screen().cameraLost(); }

val WebApp::draw(const std::string& element, double width, double height) {
  canvas_.clear();
  const auto isNamed = [&](Element each) { return each.name == element; };
  const Size size{width, height};
  if (isNamed(MeasuringScreen::gaugeHR)) screen().gaugeHR().drawRect(canvas_, size);
  if (isNamed(MeasuringScreen::gaugeSpo2)) screen().gaugeSpo2().drawRect(canvas_, size);
  if (isNamed(MeasuringScreen::circleprogressHeartrate)) {
    screen().circleprogressHeartrate().drawRect(canvas_, size);
  }
  if (isNamed(MeasuringScreen::circleprogressSpo2)) {
    screen().circleprogressSpo2().drawRect(canvas_, size);
  }
  if (isNamed(MeasuringScreen::chartFourierView)) {
    screen().chartFourierView().drawRect(canvas_, size);
  }
  const std::vector<double>& numbers = canvas_.numbers();
  val drawing = val::object();
  drawing.set("numbers", emscripten::typed_memory_view(numbers.size(), numbers.data()));
  drawing.set("texts", canvas_.texts());
  return drawing;
}

std::unique_ptr<PageChartsScreen> WebApp::charts(const val& views) {
  return std::make_unique<PageChartsScreen>(views, pending_, actionSheet_);
}

std::unique_ptr<PageResultsScreen> WebApp::results(val views) {
  return std::make_unique<PageResultsScreen>(std::move(views), actionSheet_,
                                             [this] { screens_.dismissScreen(); });
}

std::unique_ptr<PageOptionsScreen> WebApp::options(val views) {
  return std::make_unique<PageOptionsScreen>(std::move(views),
                                             [this] { screens_.dismissScreen(); });
}

void WebApp::rateMyApp() {
  OptionsView noViews;
  TableViewController(noViews, {}).rateMyApp();
}

bool WebApp::offersHomeScreen() {
  if (store_.value(homeScreenAnswered)) return false;
  const auto values = Utils::getValues();
  return values && values->size() >= 2;
}

void WebApp::answerHomeScreen() {
  store_.setValue(homeScreenAnswered, true);
  store_.synchronize();
}

PageBackup WebApp::backUp() {
  const Backup backup = currentBackup();
  // What is there and cannot be read is no empty history.
  const bool isReadable =
      Utils::getValues().has_value() || !store_.rawText(std::string(Utils::valuesKey));
  const auto text = isReadable ? textOf(backup) : std::nullopt;
  if (!text) return {"", "Nothing backed up: what is stored here cannot be read."};
  const std::string missing = leftOut(backup);
  return {*text, missing.empty() ? "" : missing + "."};
}

std::string WebApp::restore(const std::string& text) {
  std::string fault;
  const auto backup = readBackup(text, fault);
  if (!backup) return "Nothing restored: " + fault + ".";
  const auto count = veyla::restore(*backup);
  return count ? told(*count) : "Nothing restored: the storage is full; free some space.";
}

bool WebApp::isHealthRecordAllowed(const std::string& name) const {
  for (const HealthSampleType type : healthSampleTypes) {
    if (name == HealthPermissions::nameOf(type)) {
      return healthStore_.authorizationStatus(type) == HealthSharing::authorized;
    }
  }
  return false;
}

void WebApp::allowHealthRecord(const std::string& name, bool allowed) {
  for (const HealthSampleType type : healthSampleTypes) {
    if (name == HealthPermissions::nameOf(type)) healthStore_.allow(type, allowed);
  }
}

}  // namespace veyla
