#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "apps/web/page_chart.h"
#include "apps/web/page_display.h"
#include "apps/web/page_lists.h"
#include "apps/web/page_shell.h"
#include "apps/web/saturation_doubt.h"
#include "history/chart_results_view_controller.h"
#include "history/results_view_controller.h"
#include "history/table_view_controller.h"
#include "platform/platform.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/web/browser_text.h"
#include "platform/web/command_canvas.h"
#include "platform/web/event_loop.h"
#include "platform/web/local_store.h"
#include "platform/web/page_health_store.h"
#include "platform/web/page_sharing.h"
#include "platform/web/track_camera.h"
#include "shell/intro_view_controller.h"

namespace veyla {

/// The application in a page: joins the core, the bindings and the page's views, and is told by the
/// page what the user and the browser do.
class WebApp {
 public:
  /// `page` has an object for each service, as the bindings describe them: `log`, `device`,
  /// `storage`, `text`, `health`, `camera`, `canvas`, `screens`, `alerts`, `measuring`, `intro`,
  /// `actionSheet`, `sharing`.
  explicit WebApp(emscripten::val page);
  ~WebApp();
  WebApp(const WebApp&) = delete;
  WebApp& operator=(const WebApp&) = delete;

  // The application's life, as the browser tells it.

  void launch();
  void enterBackground();
  void enterForeground();
  void terminate();

  /// The page's answer to a question with that number.
  void settle(int pending, int answer) { pending_.settle(pending, answer); }

  // The camera's frames.

  emscripten::val frameBuffer(int width, int height) { return camera_.frameBuffer(width, height); }
  void takeFrame(double time, int missed) { camera_.takeFrame(time, missed); }
  void torchRefused();
  /// The camera was taken away; what it measured ends.
  void cameraLost();

  // Alerts.

  void tapAlertButton(int id, int button);
  void tapAlertClose(int id);
  void tapAlertOutside(int id);
  void typeInAlert(int id, const std::string& text);

  // The measuring screen.

  void measuringWillAppear();
  void measuringDidAppear();
  void measuringWillDisappear();
  void beginButtonPush();
  void stopButtonPush();
  void buttonCheckboxHeartrateTapped();
  void buttonCheckboxSpo2Tapped();
  void swipeLeft();
  void swipeRight();

  /// A widget of the measuring screen as it stands: an object with `numbers` and `texts`, to be
  /// played before the next drawing.
  emscripten::val draw(const std::string& element, double width, double height);

  // The introduction.

  /// The titles, instructions and images of its pages.
  emscripten::val introPages();
  /// The current page and the one that the indicator is set to.
  emscripten::val introPosition() const;
  void introSwipeLeft() { intro_->swipeleft(); }
  void introSwipeRight() { intro_->swiperight(); }
  void introSkip() { intro_->buttonSkipTapped(); }

  // Sheets of actions.

  void chooseSheetAction(int action) { actionSheet_.choose(static_cast<std::size_t>(action)); }

  // Screens that begin anew each time they are loaded, on the page's views for them.

  // The charts, "heartrate" and "spo2".

  void chartsDidLoad(emscripten::val charts, emscripten::val display);
  void chartsWillAppear() { charts_->screen.viewWillAppear(); }
  emscripten::val chartPeriodTitles() const;
  void tapSegmentPeriod(int index) { charts_->screen.tapSegmentPeriod(index); }
  void tapButtonLabels() { charts_->screen.tapButtonLabels(); }
  std::string chartAxisText(const std::string& chart, const std::string& axis, double value) const;

  // The results.

  void resultsDidLoad(emscripten::val views);
  void resultsWillAppear() { results().viewWillAppear(); }
  void resultsWillDisappear() { results().viewWillDisappear(); }
  int resultsCount() { return static_cast<int>(results().data().size()); }
  emscripten::val resultsCell(int row);
  emscripten::val resultsSwipeAction();
  bool isResultSelected(int row) { return results().selectedRows().contains(index(row)); }
  void selectResult(int row);
  void deselectResult(int row) { results().didDeselectRow(index(row)); }
  void tapSwipeAction(int row) { results().tapSwipeAction(index(row)); }
  void tapResultsLeftButton() { results().tapLeftButton(); }
  void tapResultsEditButton() { results().tapEditButton(); }
  void resultsTouchesBegan() { results().touchesBegan(); }
  void clickTrash() { results().clickTrash(); }
  void clickShare() { results().clickShare(); }
  void showChart() { results().showChart(); }
  int chooserRowCount();
  emscripten::val chooserCell(int row);
  void tapLabel(int row);
  void tapDeleteRow() { results().tapDeleteRow(); }
  void closeLabels() { results().clickCloseResultsLabelsView(); }

  // The options.

  void optionsDidLoad(emscripten::val views);
  void optionsWillAppear() { options_->screen.viewWillAppear(); }
  void optionsClose() { options_->screen.buttonCloseTap(); }
  emscripten::val optionsRows() const;
  void optionsSelectRow(int section, int row) { options_->screen.didSelectRow(section, row); }
  void optionsAccessoryButtonTapped() { options_->screen.accessoryButtonTapped(); }
  void rateMyApp();
  /// An object with a title and sections of heading and text; null for a page that is not there.
  emscripten::val textPage(const std::string& name) const;

  // Health records by the names of their kinds, "heartRate" and "oxygenSaturation".

  bool isHealthRecordAllowed(const std::string& name) const;
  void allowHealthRecord(const std::string& name, bool allowed);

  /// Objects with `question` and `answer`.
  emscripten::val faqs() const;

  // What is stored here.

  emscripten::val rawStoredText(const std::string& key) const;
  void setStoredTextAside(const std::string& key);

 private:
  static std::size_t index(int row) { return static_cast<std::size_t>(row); }
  ResultsViewController& results() { return results_->screen; }

  emscripten::val page_;
  Pending pending_;
  EventLoop loop_;
  PageLog log_;
  PageDevice device_;
  BrowserText text_;
  LocalStore store_;
  PageHealthStore healthStore_;
  TrackCamera camera_;
  KissRealFft realFft_;
  NlohmannJsonParser json_;
  NlohmannJsonWriter jsonWriter_;
  PageDisplay measuringDisplay_;
  PageDisplay introDisplay_;
  PageAlerts alerts_;
  PageScreens screens_;
  PageActionSheet actionSheet_;
  PageSharing sharing_;
  CommandCanvas canvas_;
  std::unique_ptr<Platform> platform_;
  SaturationDoubt saturationDoubt_;
  std::unique_ptr<IntroViewController> intro_;

  /// Screens and the views that they stand on.
  struct Charts {
    Charts(WebApp& app, const emscripten::val& charts, emscripten::val displayViews)
        : display(std::move(displayViews), app.loop_),
          heartrate(charts, "heartrate"),
          spo2(charts, "spo2"),
          screen(display, app.actionSheet_, heartrate, spo2) {}

    PageDisplay display;
    PageChart heartrate;
    PageChart spo2;
    ChartResultsViewController screen;
  };
  struct Results {
    Results(WebApp& app, emscripten::val page)
        : views(std::move(page), app.actionSheet_),
          screen(views, [&app] { app.screens_.dismissScreen(); }) {}

    PageResults views;
    ResultsViewController screen;
  };
  struct Options {
    Options(WebApp& app, emscripten::val page)
        : views(std::move(page)), screen(views, [&app] { app.screens_.dismissScreen(); }) {}

    PageOptions views;
    TableViewController screen;
  };
  std::unique_ptr<Charts> charts_;
  std::unique_ptr<Results> results_;
  std::unique_ptr<Options> options_;
};

}  // namespace veyla
