#pragma once

#include <emscripten/val.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "apps/web/page_chart.h"
#include "apps/web/page_display.h"
#include "apps/web/page_ending.h"
#include "apps/web/page_lists.h"
#include "apps/web/page_shell.h"
#include "history/backup.h"
#include "measuring/measurement_judge.h"
#include "platform/platform.h"
#include "platform/portable/json.h"
#include "platform/portable/kiss_real_fft.h"
#include "platform/web/browser_text.h"
#include "platform/web/command_canvas.h"
#include "platform/web/event_loop.h"
#include "platform/web/local_store.h"
#include "platform/web/page_health_store.h"
#include "platform/web/page_items.h"
#include "platform/web/page_sharing.h"
#include "platform/web/page_time.h"
#include "platform/web/page_video_track.h"
#include "platform/web/track_camera.h"
#include "shell/intro_view_controller.h"

namespace veyla {

/// The text is empty where no backup can be made; the note where there is nothing to say.
struct PageBackup {
  std::string text;
  std::string note;
};

/// The application in a page: joins the core, the bindings and the page's views, and is told by the
/// page what the user and the browser do.
class WebApp {
 public:
  /// `page` has an object for each service, as the bindings describe them: `log`, `device`,
  /// `storage`, `text`, `health`, `camera`, `canvas`, `screens`, `alerts`, `measuring`, `ending`,
  /// `intro`, `actionSheet`, `sharing`.
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

  emscripten::val frameBuffer(int width, int height);
  void takeFrame(double time) { camera_.takeFrame(time); }
  void torchRefused();
  /// The camera was taken away; what it measured ends.
  void cameraLost();

  // The measuring screen.

  /// A widget of the measuring screen as it stands: an object with `numbers` and `texts`, to be
  /// played before the next drawing.
  emscripten::val draw(const std::string& element, double width, double height);

  IntroViewController* intro() { return intro_.get(); }

  void chooseSheetAction(std::size_t action) { actionSheet_.choose(action); }

  // Screens that begin anew each time they are opened, on the page's views for them.

  std::unique_ptr<PageChartsScreen> charts(const emscripten::val& views);
  std::unique_ptr<PageResultsScreen> results(emscripten::val views);
  std::unique_ptr<PageOptionsScreen> options(emscripten::val views);

  void rateMyApp();

  // Health records by the names of their kinds, "heartRate" and "oxygenSaturation".

  bool isHealthRecordAllowed(const std::string& name) const;
  void allowHealthRecord(const std::string& name, bool allowed);

  // What is stored here.

  std::optional<std::string> rawStoredText(const std::string& key) const {
    return store_.rawText(key);
  }
  /// A file with it for another machine, and what that does not hold.
  PageBackup backUp();
  /// Adds what is missing of such a text, and says in a line what came of it.
  std::string restore(const std::string& text);
  void setStoredTextAside(const std::string& key) { store_.setAside(key, loop_.now()); }
  /// Whether the page offers its place on the home screen: from the second measurement on, until
  /// the user has answered.
  bool offersHomeScreen();
  void answerHomeScreen();

 private:
  emscripten::val page_;
  Pending pending_;
  PageTime time_;
  EventLoop loop_{time_};
  PageLog log_;
  PageDevice device_;
  BrowserText text_;
  PageItems items_;
  LocalStore store_;
  PageHealthStore healthStore_;
  PageVideoTrack videoTrack_;
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
  MeasurementJudge judge_;
  PageEnding ending_;
  std::unique_ptr<IntroViewController> intro_;
};

}  // namespace veyla
