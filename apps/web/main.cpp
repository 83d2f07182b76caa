// What the page may call.
#include <emscripten/bind.h>

#include "apps/web/web_app.h"

EMSCRIPTEN_BINDINGS(veyla) {
  using veyla::WebApp;
  emscripten::class_<WebApp>("WebApp")
      .constructor<emscripten::val>()
      .function("launch", &WebApp::launch)
      .function("enterBackground", &WebApp::enterBackground)
      .function("enterForeground", &WebApp::enterForeground)
      .function("terminate", &WebApp::terminate)
      .function("settle", &WebApp::settle)
      .function("frameBuffer", &WebApp::frameBuffer)
      .function("takeFrame", &WebApp::takeFrame)
      .function("tapAlertButton", &WebApp::tapAlertButton)
      .function("tapAlertClose", &WebApp::tapAlertClose)
      .function("tapAlertOutside", &WebApp::tapAlertOutside)
      .function("measuringWillAppear", &WebApp::measuringWillAppear)
      .function("measuringDidAppear", &WebApp::measuringDidAppear)
      .function("measuringWillDisappear", &WebApp::measuringWillDisappear)
      .function("beginButtonPush", &WebApp::beginButtonPush)
      .function("stopButtonPush", &WebApp::stopButtonPush)
      .function("buttonCheckboxHeartrateTapped", &WebApp::buttonCheckboxHeartrateTapped)
      .function("buttonCheckboxSpo2Tapped", &WebApp::buttonCheckboxSpo2Tapped)
      .function("swipeLeft", &WebApp::swipeLeft)
      .function("swipeRight", &WebApp::swipeRight)
      .function("draw", &WebApp::draw)
      .function("introPages", &WebApp::introPages)
      .function("introPosition", &WebApp::introPosition)
      .function("introSwipeLeft", &WebApp::introSwipeLeft)
      .function("introSwipeRight", &WebApp::introSwipeRight)
      .function("introSkip", &WebApp::introSkip)
      .function("chooseSheetAction", &WebApp::chooseSheetAction)
      .function("chartsDidLoad", &WebApp::chartsDidLoad)
      .function("chartsWillAppear", &WebApp::chartsWillAppear)
      .function("chartPeriodTitles", &WebApp::chartPeriodTitles)
      .function("tapSegmentPeriod", &WebApp::tapSegmentPeriod)
      .function("tapButtonLabels", &WebApp::tapButtonLabels)
      .function("chartAxisText", &WebApp::chartAxisText)
      .function("faqs", &WebApp::faqs)
      .function("rawStoredText", &WebApp::rawStoredText)
      .function("setStoredTextAside", &WebApp::setStoredTextAside);
}
