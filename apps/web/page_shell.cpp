#include "apps/web/page_shell.h"

#include <emscripten/bind.h>

#include "platform/web/page_types.h"
#include "shell/release_notes.h"

namespace veyla {

template <>
struct PageNames<AlertKind> {
  static constexpr std::array<std::string_view, 6> names{"plain",   "warning", "error",
                                                         "waiting", "notice",  "edit"};
};

template <>
struct PageNames<Keyboard> {
  static constexpr std::array<std::string_view, 2> names{"text", "email"};
};

/// By its title: the page answers with its place.
template <>
struct PageType<AlertButton> {
  using Carried = std::string;
  static Carried to(const AlertButton& button) { return button.title; }
};

EMSCRIPTEN_BINDINGS(page_shell) {
  emscripten::value_object<Appearance>("Appearance")
      .field("tableCellTint", &Appearance::tableCellTint)
      .field("navigationBarTint", &Appearance::navigationBarTint)
      .field("navigationBarTitle", &Appearance::navigationBarTitle)
      .field("pageIndicatorDot", &Appearance::pageIndicatorDot)
      .field("pageIndicatorCurrentDot", &Appearance::pageIndicatorCurrentDot)
      .field("segmentedControlTint", &Appearance::segmentedControlTint);
  emscripten::value_object<AlertTextField>("AlertTextField")
      .field("placeholder", &AlertTextField::placeholder)
      .field("text", &AlertTextField::text)
      .field("keyboard", &AlertTextField::keyboard)
      .field("autocapitalizes", &AlertTextField::autocapitalizes)
      .field("autocorrects", &AlertTextField::autocorrects);
  emscripten::value_object<Alert>("Alert")
      .field("kind", &Alert::kind)
      .field("title", &Alert::title)
      .field("subtitle", &Alert::subtitle)
      .field("textField", &Alert::textField)
      .field("buttons", &Alert::buttons)
      .field("closeButton", &Alert::closeButton)
      .field("color", &Alert::color)
      .field("iconTint", &Alert::iconTint);
}

void PageScreens::performTransition(std::string_view name) {
  page_.call<void>("performTransition", name);
}

void PageScreens::showRemoteReleaseNotes() { Utils::showReleaseNotesPopup(); }

void PageScreens::setTitle(std::string_view title) { page_.call<void>("setTitle", title); }

void PageScreens::setAppearance(const Appearance& appearance) {
  page_.call<void>("setAppearance", appearance);
}

void PageAlerts::show(int id, const Alert& alert) { page_.call<void>("show", id, alert); }

void PageLog::line(std::string_view text) { page_.call<void>("line", text); }

std::string nameOf(Element element) { return std::string(element.name); }

}  // namespace veyla
