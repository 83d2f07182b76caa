#include "apps/web/page_shell.h"

#include "platform/format.h"
#include "shell/release_notes.h"

namespace veyla {

using emscripten::val;

namespace {

const char* nameOf(AlertKind kind) {
  switch (kind) {
    case AlertKind::plain:
      return "plain";
    case AlertKind::warning:
      return "warning";
    case AlertKind::error:
      return "error";
    case AlertKind::waiting:
      return "waiting";
    case AlertKind::edit:
      return "edit";
    case AlertKind::notice:
      break;
  }
  return "notice";
}

val fieldOf(const std::optional<AlertTextField>& field) {
  if (!field) return val::null();
  val object = val::object();
  object.set("placeholder", field->placeholder);
  object.set("text", field->text);
  object.set("isEmail", field->keyboard == Keyboard::email);
  object.set("autocapitalizes", field->autocapitalizes);
  object.set("autocorrects", field->autocorrects);
  return object;
}

}  // namespace

void PageScreens::performTransition(std::string_view name) {
  page_.call<void>("performTransition", std::string(name));
}

void PageScreens::showRemoteReleaseNotes() { Utils::showReleaseNotesPopup(); }

void PageScreens::setTitle(std::string_view title) {
  page_.call<void>("setTitle", std::string(title));
}

void PageScreens::setBackSwipeEnabled(bool enabled) {
  page_.call<void>("setBackSwipeEnabled", enabled);
}

void PageScreens::setIdleTimerDisabled(bool disabled) {
  page_.call<void>("setIdleTimerDisabled", disabled);
}

void PageScreens::setAppearance(const Appearance& appearance) {
  val colors = val::object();
  colors.set("tableCellTint", cssColor(appearance.tableCellTint));
  colors.set("navigationBarTint", cssColor(appearance.navigationBarTint));
  colors.set("navigationBarTitle", cssColor(appearance.navigationBarTitle));
  colors.set("pageIndicatorDot", cssColor(appearance.pageIndicatorDot));
  colors.set("pageIndicatorCurrentDot", cssColor(appearance.pageIndicatorCurrentDot));
  colors.set("segmentedControlTint", cssColor(appearance.segmentedControlTint));
  page_.call<void>("setAppearance", colors);
}

void PageAlerts::show(int id, const Alert& alert) {
  val titles = val::array();
  for (const AlertButton& button : alert.buttons) titles.call<void>("push", button.title);
  val shown = val::object();
  shown.set("id", id);
  shown.set("kind", std::string(nameOf(alert.kind)));
  shown.set("title", alert.title);
  shown.set("subtitle", alert.subtitle);
  shown.set("buttons", titles);
  shown.set("closeButton", alert.closeButton ? val(*alert.closeButton) : val::null());
  shown.set("duration", alert.duration ? val(*alert.duration) : val::null());
  shown.set("textField", fieldOf(alert.textField));
  shown.set("color", cssColor(alert.color));
  shown.set("iconTint", cssColor(alert.iconTint));
  page_.call<void>("show", shown);
}

void PageAlerts::hide(int id) { page_.call<void>("hide", id); }

void PageAlerts::setFieldText(int id, const std::string& text) {
  page_.call<void>("setFieldText", id, text);
}

void PageAlerts::focusField(int id) { page_.call<void>("focusField", id); }

void PageLog::line(std::string_view text) { page_.call<void>("line", std::string(text)); }

std::string nameOf(Element element) { return std::string(element.name); }

std::string cssColor(const Color& color) {
  return formatText("rgb(%.4g %.4g %.4g / %.4g)", color.red * 255, color.green * 255,
                    color.blue * 255, color.alpha);
}

}  // namespace veyla
