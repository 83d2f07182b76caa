#pragma once

#include "measuring/main_view_controller.h"

namespace veyla {

/// Why the application was launched; nothing depends on it.
struct LaunchOptions {};

/// Receives the platform's application events: prepares stored data and settings at launch, and
/// tells the measuring screen when the application goes to the background or comes back.
class AppDelegate {
 public:
  /// The delegate of the platform in force.
  static AppDelegate& instance();

  AppDelegate();

  /// What every program does first, in its order: launches, loads the measuring screen, and becomes
  /// active. The screen is returned; it appears (`viewWillAppear`, `viewDidAppear`) when the
  /// program shows it.
  MainViewController& launch();

  // The platform's events, one by one.

  /// Migrates the history, loads texts and settings, and sets the application's looks. True.
  bool application(LaunchOptions didFinishLaunchingWithOptions);
  void applicationWillResignActive();
  void applicationDidEnterBackground();
  void applicationWillEnterForeground();
  /// Posts "didBecomeActive" only after a first return from the background, and from then on after
  /// every interruption: the flag is never cleared.
  void applicationDidBecomeActive();
  void applicationWillTerminate();

  MainViewController& mainViewController() const { return MainViewController::instance(); }

  bool activatedFromBackground() const { return activatedFromBackground_; }
  void setActivatedFromBackground(bool activated) { activatedFromBackground_ = activated; }
  bool isVideo() const { return isVideo_; }
  void setIsVideo(bool isVideo) { isVideo_ = isVideo; }
  /// Whether the results screen is showing.
  bool isResults() const { return isResults_; }
  void setIsResults(bool isResults) { isResults_ = isResults; }

 private:
  bool activatedFromBackground_ = false;
  bool isVideo_ = false;
  bool isResults_ = false;
};

}  // namespace veyla
