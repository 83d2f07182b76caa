#pragma once

#include <emscripten/val.h>

#include <utility>

#include "platform/alert_view.h"
#include "platform/device_info.h"
#include "platform/display.h"
#include "platform/log.h"
#include "platform/screens.h"

namespace veyla {

/// The page's window: `page` answers the operations by their names, colours as CSS texts.
class PageScreens : public Screens {
 public:
  explicit PageScreens(emscripten::val page) : page_(std::move(page)) {}

  void performTransition(std::string_view name) override;
  void showIntro() override { page_.call<void>("showIntro"); }
  void showFaq() override { page_.call<void>("showFaq"); }
  /// They are part of the application.
  void showRemoteReleaseNotes() override;
  void showRatingPrompt() override { page_.call<void>("showRatingPrompt"); }
  void setTitle(std::string_view title) override;
  void setBackSwipeEnabled(bool enabled) override {
    page_.call<void>("setBackSwipeEnabled", enabled);
  }
  void setIdleTimerDisabled(bool disabled) override {
    page_.call<void>("setIdleTimerDisabled", disabled);
  }
  void setAppearance(const Appearance& appearance) override;
  void setNavigationBarTint(std::optional<Color> tint) override;

  /// Takes the introduction away and answers when it is gone.
  void dismissIntro(int pending) { page_.call<void>("dismissIntro", pending); }
  /// Takes the screen in front away.
  void dismissScreen() { page_.call<void>("dismissScreen"); }

 private:
  emscripten::val page_;
};

/// Alerts as the page's dialogs, each under its number: `page` answers the operations by their
/// names.
class PageAlerts : public AlertView {
 public:
  explicit PageAlerts(emscripten::val page) : page_(std::move(page)) {}

  void show(int id, const Alert& alert) override;
  void hide(int id) override { page_.call<void>("hide", id); }
  void setFieldText(int id, const std::string& text) override {
    page_.call<void>("setFieldText", id, text);
  }
  void focusField(int id) override { page_.call<void>("focusField", id); }

 private:
  emscripten::val page_;
};

/// The diagnostic log, for whoever has asked the page for it.
class PageLog : public Log {
 public:
  explicit PageLog(emscripten::val page)
      : page_(std::move(page)), enabled_(page_["enabled"].as<bool>()) {}

  bool enabled() const override { return enabled_; }
  void line(std::string_view text) override;

 private:
  emscripten::val page_;
  bool enabled_;
};

/// What the page knows about the phone and the build.
class PageDevice : public DeviceInfo {
 public:
  explicit PageDevice(emscripten::val page) : page_(std::move(page)) {}

  std::string hardwareModel() const override { return page_["hardwareModel"].as<std::string>(); }
  std::string systemVersion() const override { return page_["systemVersion"].as<std::string>(); }
  std::string bundleVersion() const override { return VEYLA_VERSION; }

 private:
  emscripten::val page_;
};

/// As the page knows it.
std::string nameOf(Element element);

}  // namespace veyla
