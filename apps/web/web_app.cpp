#include "apps/web/web_app.h"

#include <array>
#include <cstddef>
#include <utility>

#include "acquisition/video_processing.h"
#include "measuring/app_delegate.h"
#include "measuring/measuring_screen.h"
#include "platform/portable/embedded_resources.h"
#include "shell/alerts.h"
#include "shell/faq.h"
#include "shell/pages.h"

namespace veyla {

using emscripten::val;

namespace {

const EmbeddedResources resources;

constexpr std::array<HealthSampleType, 2> healthSampleTypes{HealthSampleType::heartRate,
                                                            HealthSampleType::oxygenSaturation};

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
      actionSheet_(page_["actionSheet"]),
      sharing_(page_["sharing"], pending_),
      canvas_(page_["canvas"]) {
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
                                                  .characters = text_,
                                                  .uuids = text_,
                                                  .measuringDisplay = measuringDisplay_,
                                                  .alertView = alerts_,
                                                  .screens = screens_,
                                                  .sharing = sharing_});
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
  screen().setObserver(&saturationDoubt_);
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

void WebApp::torchRefused() { Utils::showOkAlert("", VideoProcessing::noTorch); }

void WebApp::cameraLost() {
  if (!screen().isRunning()) return;
  screen().stopButtonPush();
  Utils::showAlertWithTitle(
      "Camera lost", "Another app has taken it, or it was unplugged. Tap START to measure again.",
      "error");
}

void WebApp::tapAlertButton(int id, int button) {
  Alerts::instance().tapButton(id, static_cast<std::size_t>(button));
}

void WebApp::tapAlertClose(int id) { Alerts::instance().tapClose(id); }
void WebApp::tapAlertOutside(int id) { Alerts::instance().tapOutside(id); }

void WebApp::typeInAlert(int id, const std::string& text) {
  Alerts::instance().typeInField(id, text);
}

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

void WebApp::chartsDidLoad(val charts, val display) {
  charts_ = std::make_unique<Charts>(*this, charts, std::move(display));
  charts_->screen.viewDidLoad();
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
  return (chart == "spo2" ? charts_->spo2 : charts_->heartrate).axisText(axis, value);
}

void WebApp::resultsDidLoad(val views) {
  results_ = std::make_unique<Results>(*this, std::move(views));
  results().viewDidLoad();
}

val WebApp::resultsCell(int row) {
  const HistoryTableViewCell cell = results().listCell(index(row));
  val object = val::object();
  object.set("date", cell.dateLabel);
  object.set("heartrate", cell.heartrateLabel);
  object.set("spo2", cell.spo2Label);
  object.set("labels", cell.labelNames);
  return object;
}

val WebApp::resultsSwipeAction() {
  const SwipeAction action = results().swipeAction();
  val object = val::object();
  object.set("title", std::string(action.title));
  object.set("background", cssColor(action.background));
  return object;
}

void WebApp::selectResult(int row) {
  results().didSelectRow(index(row), ResultsViewController::listTag);
}

int WebApp::chooserRowCount() {
  return static_cast<int>(results().numberOfRows(ResultsViewController::chooserTag));
}

val WebApp::chooserCell(int row) {
  const TableCell cell = results().chooserCell(index(row));
  val object = val::object();
  object.set("labelName", cell.labelName);
  object.set("isChecked", cell.isChecked);
  object.set("isControls", cell.reuseIdentifier == "labelsButtons");
  return object;
}

void WebApp::tapLabel(int row) {
  results().didSelectRow(index(row), ResultsViewController::chooserTag);
}

void WebApp::optionsDidLoad(val views) {
  options_ = std::make_unique<Options>(*this, std::move(views));
  options_->screen.viewDidLoad();
}

val WebApp::optionsRows() const {
  val sections = val::array();
  for (const auto& rows : Utils::optionsRows()) {
    val section = val::array();
    for (const OptionsRow& row : rows) {
      val object = val::object();
      object.set("title", row.title);
      object.set("subTitle", row.subTitle);
      object.set("page", row.page);
      object.set("isEmail", row.isEmail);
      section.call<void>("push", object);
    }
    sections.call<void>("push", section);
  }
  return sections;
}

void WebApp::rateMyApp() {
  OptionsView noViews;
  TableViewController(noViews, {}).rateMyApp();
}

val WebApp::textPage(const std::string& name) const {
  const auto page = Utils::page(name);
  if (!page) return val::null();
  val sections = val::array();
  for (const auto& [heading, text] : page->sections) {
    val section = val::object();
    section.set("heading", heading);
    section.set("text", text);
    sections.call<void>("push", section);
  }
  val object = val::object();
  object.set("title", page->title);
  object.set("sections", sections);
  return object;
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
