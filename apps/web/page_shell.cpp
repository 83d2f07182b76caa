#include "apps/web/page_shell.h"

#include "platform/web/page_fields.h"
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

template <>
struct PageNames<AlertMotion> {
  static constexpr std::array<std::string_view, 3> names{"pop", "downward", "upward"};
};

template <>
struct PageNames<AlertBackground> {
  static constexpr std::array<std::string_view, 2> names{"shadow", "blur"};
};

/// By its title: the page answers with its place.
template <>
struct PageType<AlertButton> {
  using Carried = std::string;
  static Carried to(const AlertButton& button) { return button.title; }
};

EMSCRIPTEN_BINDINGS(page_shell) {
  VEYLA_VALUE(Appearance, tableCellTint, navigationBarTint, navigationBarTitle, navigationBarImage,
              pageIndicatorDot, pageIndicatorCurrentDot, pageIndicatorBackground,
              segmentedControlTint);
  VEYLA_VALUE(AlertTextField, placeholder, text, keyboard, autocapitalizes, autocorrects);
  VEYLA_VALUE(AlertStyle, show, hide, background);
  VEYLA_VALUE(Alert, kind, title, subtitle, textField, buttons, closeButton, duration, color,
              iconTint, style);
}

void PageScreens::performTransition(std::string_view name) {
  page_.call<void>("performTransition", name);
}

void PageScreens::showRemoteReleaseNotes() { Utils::showReleaseNotesPopup(); }

void PageScreens::setTitle(std::string_view title) { page_.call<void>("setTitle", title); }

void PageScreens::setAppearance(const Appearance& appearance) {
  page_.call<void>("setAppearance", appearance);
}

void PageScreens::setNavigationBarTint(std::optional<Color> tint) {
  page_.call<void>("setNavigationBarTint", tint);
}

void PageAlerts::show(int id, const Alert& alert) { page_.call<void>("show", id, alert); }

void PageLog::line(std::string_view text) { page_.call<void>("line", text); }

std::string nameOf(Element element) { return std::string(element.name); }

}  // namespace veyla
