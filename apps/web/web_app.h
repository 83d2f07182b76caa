#pragma once

#include <emscripten/val.h>

#include <memory>
#include <string>

#include "apps/web/page_chart.h"
#include "apps/web/page_display.h"
#include "apps/web/page_shell.h"
#include "history/chart_results_view_controller.h"
#include "platform/platform.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/web/browser_text.h"
#include "platform/web/command_canvas.h"
#include "platform/web/event_loop.h"
#include "platform/web/local_store.h"
#include "platform/web/page_health_store.h"
#include "platform/web/track_camera.h"
#include "shell/intro_view_controller.h"

namespace veyla {

/// The application in a page: joins the core, the bindings and the page's views, and is told by the
/// page what the user and the browser do.
class WebApp {
 public:
  /// `page` has an object for each service, as the bindings describe them: `log`, `device`,
  /// `storage`, `text`, `health`, `camera`, `canvas`, `screens`, `alerts`, `measuring`, `intro`,
  /// `actionSheet`, `chartsDisplay`, `charts`.
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

  // Alerts.

  void tapAlertButton(int id, int button);
  void tapAlertClose(int id);
  void tapAlertOutside(int id);

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

  // The charts, "heartrate" and "spo2". The screen begins anew each time it is loaded.

  void chartsDidLoad();
  void chartsWillAppear() { charts_->viewWillAppear(); }
  emscripten::val chartPeriodTitles() const;
  void tapSegmentPeriod(int index) { charts_->tapSegmentPeriod(index); }
  void tapButtonLabels() { charts_->tapButtonLabels(); }
  std::string chartAxisText(const std::string& chart, const std::string& axis, double value) const;

  // The other screens.

  /// Objects with `question` and `answer`.
  emscripten::val faqs() const;

  // What is stored here.

  emscripten::val rawStoredText(const std::string& key) const;
  void setStoredTextAside(const std::string& key);

 private:
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
  CommandCanvas canvas_;
  std::unique_ptr<Platform> platform_;
  std::unique_ptr<IntroViewController> intro_;

  PageActionSheet actionSheet_;
  PageDisplay chartsDisplay_;
  PageChart chartHeartrate_;
  PageChart chartSpo2_;
  std::unique_ptr<ChartResultsViewController> charts_;
};

}  // namespace veyla
