#include "apps/web/web_app.h"

#include <cstddef>

#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "platform/portable/embedded_resources.h"
#include "shell/alerts.h"
#include "shell/faq.h"

namespace veyla {

using emscripten::val;

namespace {

const EmbeddedResources resources;

MainViewController& screen() { return MainViewController::instance(); }

}  // namespace

WebApp::WebApp(val page)
    : page_(std::move(page)),
      log_(page_["log"]),
      device_(page_["device"]),
      text_(page_["text"]),
      store_(page_["storage"]),
      healthStore_(page_["health"], pending_, store_, text_),
      camera_(page_["camera"], pending_),
      measuringDisplay_(page_["measuring"], loop_),
      introDisplay_(page_["intro"], loop_),
      alerts_(page_["alerts"]),
      screens_(page_["screens"]),
      canvas_(page_["canvas"]),
      actionSheet_(page_["actionSheet"]),
      chartsDisplay_(page_["chartsDisplay"], loop_),
      chartHeartrate_(page_["charts"], "heartrate"),
      chartSpo2_(page_["charts"], "spo2") {
  store_.failed = [storage = page_["storage"]](const std::string& damagedKey,
                                               const std::string& line) {
    storage.call<void>("failed", damagedKey, line);
  };
  platform_ = std::make_unique<Platform>(Services{.log = log_,
                                                  .mainQueue = loop_,
                                                  .clock = loop_,
                                                  .camera = camera_,
                                                  .realFft = realFft_,
                                                  .store = store_,
                                                  .healthStore = healthStore_,
                                                  .resources = resources,
                                                  .json = json_,
                                                  .jsonWriter = jsonWriter_,
                                                  .device = device_,
                                                  .dates = text_,
                                                  .numbers = text_,
                                                  .regularExpressions = text_,
                                                  .uuids = text_,
                                                  .measuringDisplay = measuringDisplay_,
                                                  .alertView = alerts_,
                                                  .screens = screens_});
  intro_ = std::make_unique<IntroViewController>(
      introDisplay_, [this](const std::function<void()>& then) {
        screens_.dismissIntro(pending_.keep([then](int) { then(); }));
      });
}

WebApp::~WebApp() = default;

void WebApp::launch() {
  AppDelegate& application = AppDelegate::instance();
  application.application(LaunchOptions{});
  screen().viewDidLoad();
  application.applicationDidBecomeActive();
}

void WebApp::enterBackground() {
  camera_.abandonPreparing();
  AppDelegate::instance().applicationWillResignActive();
  AppDelegate::instance().applicationDidEnterBackground();
}

void WebApp::enterForeground() {
  AppDelegate::instance().applicationWillEnterForeground();
  AppDelegate::instance().applicationDidBecomeActive();
}

void WebApp::terminate() { AppDelegate::instance().applicationWillTerminate(); }

void WebApp::tapAlertButton(int id, int button) {
  Alerts::instance().tapButton(id, static_cast<std::size_t>(button));
}

void WebApp::tapAlertClose(int id) { Alerts::instance().tapClose(id); }
void WebApp::tapAlertOutside(int id) { Alerts::instance().tapOutside(id); }

void WebApp::measuringWillAppear() { screen().viewWillAppear(); }
void WebApp::measuringDidAppear() { screen().viewDidAppear(); }

void WebApp::measuringWillDisappear() {
  camera_.abandonPreparing();
  screen().viewWillDisappear();
}

void WebApp::beginButtonPush() { screen().beginButtonPush(); }
void WebApp::stopButtonPush() { screen().stopButtonPush(); }
void WebApp::buttonCheckboxHeartrateTapped() { screen().buttonCheckboxHeartrateTapped(); }
void WebApp::buttonCheckboxSpo2Tapped() { screen().buttonCheckboxSpo2Tapped(); }
void WebApp::swipeLeft() { screen().swipeLeft(); }
void WebApp::swipeRight() { screen().swipeRight(); }

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
  val drawing = val::object();
  drawing.set("numbers", canvas_.numbers());
  drawing.set("texts", canvas_.texts());
  return drawing;
}

val WebApp::introPages() {
  intro_->viewDidLoad();
  val pages = val::array();
  for (std::size_t i = 0; i < IntroViewController::pages; ++i) {
    val page = val::object();
    page.set("title", intro_->titles()[i]);
    page.set("subTitle", intro_->subTitles()[i]);
    page.set("image", intro_->images()[i]);
    pages.call<void>("push", page);
  }
  return pages;
}

val WebApp::introPosition() const {
  val position = val::object();
  position.set("currentPage", intro_->currentPage());
  position.set("indicatedPage", intro_->indicatedPage());
  position.set("currentDotColor", cssColor(intro_->currentDotColor()));
  return position;
}

void WebApp::chartsDidLoad() {
  charts_ = std::make_unique<ChartResultsViewController>(chartsDisplay_, actionSheet_,
                                                         chartHeartrate_, chartSpo2_);
  charts_->viewDidLoad();
}

val WebApp::chartPeriodTitles() const {
  val titles = val::array();
  for (const std::string_view title : ChartResultsViewController::periodTitles) {
    titles.call<void>("push", std::string(title));
  }
  return titles;
}

std::string WebApp::chartAxisText(const std::string& chart, const std::string& axis,
                                  double value) const {
  return (chart == "spo2" ? chartSpo2_ : chartHeartrate_).axisText(axis, value);
}

val WebApp::faqs() const {
  val entries = val::array();
  for (const auto& [question, answer] : Utils::faqs()) {
    val entry = val::object();
    entry.set("question", question);
    entry.set("answer", answer);
    entries.call<void>("push", entry);
  }
  return entries;
}

val WebApp::rawStoredText(const std::string& key) const {
  const auto text = store_.rawText(key);
  return text ? val(*text) : val::null();
}

void WebApp::setStoredTextAside(const std::string& key) { store_.setAside(key, loop_.now()); }

}  // namespace veyla
