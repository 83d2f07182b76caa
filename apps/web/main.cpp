// What the page may call: the application, and the core's screens as they are.
#include <emscripten/bind.h>

#include "apps/web/web_app.h"
#include "measuring/main_view_controller.h"
#include "platform/web/page_types.h"
#include "shell/alerts.h"
#include "shell/faq.h"
#include "shell/pages.h"

namespace veyla {
namespace {

using emscripten::allow_raw_pointers;
using emscripten::base;
using emscripten::class_;
using emscripten::optional_override;
using emscripten::value_object;

bool isSelected(const ResultsViewController& screen, std::size_t row) {
  return screen.selectedRows().contains(row);
}

}  // namespace

EMSCRIPTEN_BINDINGS(texts) {
  value_object<FaqEntry>("FaqEntry")
      .field("question", &FaqEntry::question)
      .field("answer", &FaqEntry::answer);
  value_object<PageSection>("PageSection")
      .field("heading", &PageSection::heading)
      .field("text", &PageSection::text);
  value_object<Page>("Page").field("title", &Page::title).field("sections", &Page::sections);
}

EMSCRIPTEN_BINDINGS(application) {
  class_<WebApp>("WebApp")
      .constructor<emscripten::val>()
      .function("launch", &WebApp::launch)
      .function("enterBackground", &WebApp::enterBackground)
      .function("enterForeground", &WebApp::enterForeground)
      .function("terminate", &WebApp::terminate)
      .function("settle", &WebApp::settle)
      .function("frameBuffer", &WebApp::frameBuffer)
      .function("takeFrame", &WebApp::takeFrame)
      .function("torchRefused", &WebApp::torchRefused)
      .function("cameraLost", &WebApp::cameraLost)
      .function("measuringWillDisappear", &WebApp::measuringWillDisappear)
      .function("draw", &WebApp::draw)
      .function("chooseSheetAction", &WebApp::chooseSheetAction)
      .function("rateMyApp", &WebApp::rateMyApp)
      .function("faqs", optional_override([](const WebApp&) { return Utils::faqs(); }))
      .function("page", optional_override([](const WebApp&, const std::string& name) {
                  return Utils::page(name);
                }))
      .function("optionsRows",
                optional_override([](const WebApp&) { return Utils::optionsRows(); }))
      .function("isHealthRecordAllowed", &WebApp::isHealthRecordAllowed)
      .function("allowHealthRecord", &WebApp::allowHealthRecord)
      .function("rawStoredText", &WebApp::rawStoredText)
      .function("setStoredTextAside", &WebApp::setStoredTextAside)
      .function("alerts", optional_override([](WebApp&) { return &Alerts::instance(); }),
                allow_raw_pointers())
      .function("measuring",
                optional_override([](WebApp&) { return &MainViewController::instance(); }),
                allow_raw_pointers())
      .function("intro", &WebApp::intro, allow_raw_pointers())
      .function("charts", &WebApp::charts)
      .function("results", &WebApp::results)
      .function("options", &WebApp::options);
}

EMSCRIPTEN_BINDINGS(screens) {
  class_<Alerts>("Alerts")
      .function("tapButton", &Alerts::tapButton)
      .function("tapClose", &Alerts::tapClose)
      .function("tapOutside", &Alerts::tapOutside)
      .function("typeInField", &Alerts::typeInField);

  class_<MainViewController>("MainViewController")
      .function("viewWillAppear", &MainViewController::viewWillAppear)
      .function("viewDidAppear", &MainViewController::viewDidAppear)
      .function("beginButtonPush", &MainViewController::beginButtonPush)
      .function("stopButtonPush", &MainViewController::stopButtonPush)
      .function("buttonCheckboxHeartrateTapped", &MainViewController::buttonCheckboxHeartrateTapped)
      .function("buttonCheckboxSpo2Tapped", &MainViewController::buttonCheckboxSpo2Tapped)
      .function("swipeLeft", &MainViewController::swipeLeft)
      .function("swipeRight", &MainViewController::swipeRight);

  class_<IntroViewController>("IntroViewController")
      .function("viewDidLoad", &IntroViewController::viewDidLoad)
      .function("swipeleft", &IntroViewController::swipeleft)
      .function("swiperight", &IntroViewController::swiperight)
      .function("buttonSkipTapped", &IntroViewController::buttonSkipTapped)
      .function("titles", &IntroViewController::titles)
      .function("subTitles", &IntroViewController::subTitles)
      .function("images", &IntroViewController::images)
      .function("currentPage", &IntroViewController::currentPage)
      .function("indicatedPage", &IntroViewController::indicatedPage)
      .function("currentDotColor", &IntroViewController::currentDotColor);

  class_<ChartResultsViewController>("ChartResultsViewController")
      .function("viewDidLoad", &ChartResultsViewController::viewDidLoad)
      .function("periodTitles", optional_override([](const ChartResultsViewController& screen) {
                  return screen.periodTitles;
                }))
      .function("viewWillAppear", &ChartResultsViewController::viewWillAppear)
      .function("tapSegmentPeriod", &ChartResultsViewController::tapSegmentPeriod)
      .function("tapButtonLabels", &ChartResultsViewController::tapButtonLabels);
  class_<PageChartsScreen, base<ChartResultsViewController>>("ChartsScreen")
      .function("heartrateAxisText", &PageChartsScreen::heartrateAxisText)
      .function("spo2AxisText", &PageChartsScreen::spo2AxisText);

  value_object<HistoryTableViewCell>("HistoryTableViewCell")
      .field("dateLabel", &HistoryTableViewCell::dateLabel)
      .field("heartrateLabel", &HistoryTableViewCell::heartrateLabel)
      .field("spo2Label", &HistoryTableViewCell::spo2Label)
      .field("labelNames", &HistoryTableViewCell::labelNames);
  value_object<TableCell>("TableCell")
      .field("reuseIdentifier", &TableCell::reuseIdentifier)
      .field("labelName", &TableCell::labelName)
      .field("isChecked", &TableCell::isChecked);
  value_object<SwipeAction>("SwipeAction")
      .field("title", &SwipeAction::title)
      .field("background", &SwipeAction::background);
  class_<ResultsViewController>("ResultsViewController")
      .function("viewDidLoad", &ResultsViewController::viewDidLoad)
      .function("viewWillAppear", &ResultsViewController::viewWillAppear)
      .function("viewWillDisappear", &ResultsViewController::viewWillDisappear)
      .function("numberOfRows", &ResultsViewController::numberOfRows)
      .function("listCell", &ResultsViewController::listCell)
      .function("chooserCell", &ResultsViewController::chooserCell)
      .function("swipeAction", &ResultsViewController::swipeAction)
      .function("isSelected", &isSelected)
      .function("didSelectRow", &ResultsViewController::didSelectRow)
      .function("didDeselectRow", &ResultsViewController::didDeselectRow)
      .function("showChart", &ResultsViewController::showChart)
      .function("tapLeftButton", &ResultsViewController::tapLeftButton)
      .function("tapEditButton", &ResultsViewController::tapEditButton)
      .function("touchesBegan", &ResultsViewController::touchesBegan)
      .function("clickCloseResultsLabelsView", &ResultsViewController::clickCloseResultsLabelsView)
      .function("tapDeleteRow", &ResultsViewController::tapDeleteRow)
      .function("tapSwipeAction", &ResultsViewController::tapSwipeAction)
      .function("clickTrash", &ResultsViewController::clickTrash)
      .function("clickShare", &ResultsViewController::clickShare);
  class_<PageResultsScreen, base<ResultsViewController>>("ResultsScreen");

  value_object<OptionsRow>("OptionsRow")
      .field("title", &OptionsRow::title)
      .field("subTitle", &OptionsRow::subTitle)
      .field("page", &OptionsRow::page)
      .field("isEmail", &OptionsRow::isEmail);
  class_<TableViewController>("TableViewController")
      .function("viewDidLoad", &TableViewController::viewDidLoad)
      .function("viewWillAppear", &TableViewController::viewWillAppear)
      .function("buttonCloseTap", &TableViewController::buttonCloseTap)
      .function("didSelectRow", &TableViewController::didSelectRow)
      .function("accessoryButtonTapped", &TableViewController::accessoryButtonTapped);
  class_<PageOptionsScreen, base<TableViewController>>("OptionsScreen");
}

}  // namespace veyla
