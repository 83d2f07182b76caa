// What the page may call: the application, and the core's screens as they are.
#include "apps/web/web_app.h"
#include "history/results_screen.h"
#include "measuring/main_view_controller.h"
#include "measuring/measuring_screen.h"
#include "platform/web/page_fields.h"
#include "shell/alerts.h"
#include "shell/faq.h"
#include "shell/pages.h"

namespace veyla {
namespace {

using emscripten::allow_raw_pointers;
using emscripten::base;
using emscripten::class_;
using emscripten::optional_override;

std::array<std::string_view, 4> periodTitles(const ChartResultsViewController& /*screen*/) {
  return ChartResultsViewController::periodTitles;
}

/// What the results screen looks like, in points.
struct ResultsLook {
  std::int32_t listRowHeight = 0;
  std::int32_t chooserRowHeight = 0;
  double chooserCornerRadius = ResultsScreen::chooserCornerRadius;
  Color dimColor = ResultsScreen::dimColor;
};

ResultsLook look(const ResultsViewController& screen) {
  return {.listRowHeight = screen.heightForRow(ResultsViewController::listTag),
          .chooserRowHeight = screen.heightForRow(ResultsViewController::chooserTag)};
}

bool isSelected(const ResultsViewController& screen, std::size_t row) {
  return screen.selectedRows().contains(row);
}

}  // namespace

template <>
struct PageNames<EditingStyle> {
  static constexpr std::array<std::string_view, 2> names{"swipeToDelete", "multipleSelection"};
};

EMSCRIPTEN_BINDINGS(texts) {
  VEYLA_VALUE(FaqEntry, question, answer);
  VEYLA_VALUE(PageSection, heading, text);
  VEYLA_VALUE(Page, title, sections);
  using MeasuringScreen::Captions;
  VEYLA_VALUE(Captions, heartrate, heartrateUnit, spo2, spo2Unit, lastMeasurement, pulse, start,
              stop, nextCamera);
}

EMSCRIPTEN_BINDINGS(application) {
  VEYLA_VALUE(PageBackup, text, note);
  class_<WebApp>("WebApp")
      .constructor<emscripten::val>()
      .function("alerts", optional_override([](WebApp&) { return &Alerts::instance(); }),
                allow_raw_pointers())
      .function("measuring",
                optional_override([](WebApp&) { return &MainViewController::instance(); }),
                allow_raw_pointers())
      .function("intro", &WebApp::intro, allow_raw_pointers())
      .function("page", optional_override(
                            [](WebApp&, const std::string& name) { return Utils::page(name); }))
      .function("captions", optional_override([](WebApp&) { return MeasuringScreen::captions; }))
      .function("faqs", optional_override([](WebApp&) { return Utils::faqs(); })) VEYLA_METHODS(
          WebApp, launch, enterBackground, enterForeground, terminate, settle, frameBuffer,
          takeFrame, torchRefused, cameraLost, draw, charts, results, options, chooseSheetAction,
          rateMyApp, isHealthRecordAllowed, allowHealthRecord, rawStoredText, setStoredTextAside,
          backUp, restore, offersHomeScreen, answerHomeScreen);
}

EMSCRIPTEN_BINDINGS(screens) {
  class_<Alerts>("Alerts") VEYLA_METHODS(Alerts, tapButton, tapClose, tapOutside, typeInField);

  class_<MainViewController>("MainViewController")
      VEYLA_METHODS(MainViewController, viewWillAppear, viewDidAppear, viewWillDisappear,
                    beginButtonPush, stopButtonPush, nextCameraButtonPush, secondsUntilCurve,
                    buttonCheckboxHeartrateTapped, buttonCheckboxSpo2Tapped, swipeLeft, swipeRight);

  class_<IntroViewController>("IntroViewController")
      VEYLA_METHODS(IntroViewController, viewDidLoad, swipeleft, swiperight, buttonSkipTapped,
                    titles, subTitles, images, currentPage, indicatedPage, currentDotColor);

  class_<ChartResultsViewController>("ChartResultsViewController")
      .function("periodTitles", &periodTitles)
          VEYLA_METHODS(ChartResultsViewController, viewDidLoad, viewWillAppear, tapSegmentPeriod,
                        tapButtonLabels);
  class_<PageChartsScreen, base<ChartResultsViewController>>("ChartsScreen")
      VEYLA_METHODS(PageChartsScreen, heartrateAxisText, spo2AxisText);

  VEYLA_VALUE(HistoryTableViewCell, dateLabel, heartrateLabel, spo2Label, labelNames);
  VEYLA_VALUE(TableCell, reuseIdentifier, labelName, isChecked);
  VEYLA_VALUE(SwipeAction, title, background);
  VEYLA_VALUE(ResultsLook, listRowHeight, chooserRowHeight, chooserCornerRadius, dimColor);
  class_<ResultsViewController>("ResultsViewController")
      .function("look", &look)
      .function("isSelected", &isSelected) VEYLA_METHODS(
          ResultsViewController, viewDidLoad, viewWillAppear, viewWillDisappear, numberOfRows,
          editingStyle, listCell, chooserCell, swipeAction, didSelectRow, didDeselectRow, showChart,
          tapLeftButton, tapEditButton, touchesBegan, clickCloseResultsLabelsView, tapDeleteRow,
          tapNoLabels, tapSwipeAction, clickTrash, tapUndo, clickShare);
  class_<PageResultsScreen, base<ResultsViewController>>("ResultsScreen");

  VEYLA_VALUE(OptionsRow, title, subTitle, page, isEmail);
  class_<TableViewController>("TableViewController")
      VEYLA_METHODS(TableViewController, rows, viewDidLoad, viewWillAppear, buttonCloseTap,
                    didSelectRow, accessoryButtonTapped);
  class_<PageOptionsScreen, base<TableViewController>>("OptionsScreen");
}

}  // namespace veyla
